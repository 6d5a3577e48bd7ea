#include "apps/quorvane/batch/photo_list.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <system_error>

#include "apps/quorvane/drawing/stereo.h"
#include "apps/quorvane/input/neighbour.h"
#include "apps/quorvane/terminal/command_line.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/clip/output_format.h"
#include "media/profile/nesting.h"
#include "system/error.h"

namespace quorvane::app {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

constexpr char kNameMark[] = "{name}";
constexpr const char* kPhotoExtensions[] = {".jpg",  ".jpeg", ".png",  ".webp", ".heic", ".heif", ".hif",
                                            ".avif", ".tif",  ".tiff", ".mpo",  ".jps",  ".pns",  ".lif"};

/// Nothing that a command line could take for an option or for standard input.
std::string asPath(const std::string& path) { return path[0] == '-' ? "./" + path : path; }

bool isPhotoName(const fs::path& path) {
    std::string extension = path.extension().string();
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return path.filename().string()[0] != '.' &&
           std::find(std::begin(kPhotoExtensions), std::end(kPhotoExtensions), extension) !=
               std::end(kPhotoExtensions);
}

std::vector<std::string> photosIn(const std::string& folder) {
    std::vector<std::string> photos;
    std::error_code failed;
    fs::directory_iterator entry(folder, failed);
    for (; !failed && entry != fs::directory_iterator(); entry.increment(failed)) {
        std::error_code ignored;
        if (isPhotoName(entry->path()) && entry->is_regular_file(ignored))
            photos.push_back(entry->path().string());
    }
    if (failed) throw Error(folder + ": cannot be read (" + failed.message() + ")");
    photos = withoutNeighbours(photos);
    if (photos.empty()) throw Error(folder + ": no photo lies in this folder");
    std::sort(photos.begin(), photos.end());
    return photos;
}

/// The bytes of a file, or of standard input for "-".
std::string read(const std::string& path) {
    std::ifstream file;
    if (path != "-") file.open(path, std::ios::binary);
    std::istream& in = path == "-" ? std::cin : file;
    if (!in) throwFor(path + ": cannot be read", errno);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    if (in.bad()) throwFor(path + ": cannot be read", errno);
    return bytes;
}

std::vector<std::string> split(const std::string& text, char end) {
    std::vector<std::string> parts;
    for (size_t from = 0; from < text.size();) {
        const size_t to = std::min(text.find(end, from), text.size());
        if (to > from) parts.push_back(text.substr(from, to - from));
        from = to + 1;
    }
    return parts;
}

/// The words of `options` but for those of the option `name`.
void drop(const std::string& name, std::vector<std::string>* options) {
    for (size_t i = 0; i < options->size();) {
        const std::string& word = (*options)[i];
        if (word != name && word.rfind(name + "=", 0) != 0) {
            ++i;
            continue;
        }
        // An empty value is a word of its own.
        const std::ptrdiff_t words =
            word == name && i + 1 < options->size() && (*options)[i + 1].empty() ? 2 : 1;
        const auto first = options->begin() + static_cast<std::ptrdiff_t>(i);
        options->erase(first, first + words);
    }
}

std::string textOf(const Json& value) { return value.is_string() ? value.get<std::string>() : value.dump(); }

/// Adds an option of a manifest's line in place of the same one for all.
void add(const std::string& name, const Json& value, std::vector<std::string>* options) {
    const std::string option = "--" + name;
    drop(option, options);
    if (value.is_boolean()) {
        if (value.get<bool>()) options->push_back(option);
        return;
    }
    for (const Json& each : value.is_array() ? value : Json::array({value})) {
        if (each.is_object() || each.is_array() || each.is_null())
            throw UsageError(option + ": a text, a number, true, false or a list is wanted, not " +
                             each.dump());
        addOption(option, textOf(each), options);
    }
}

BatchPhoto photoOfLine(const std::string& line, const std::vector<std::string>& options) {
    if (const int nesting = media::nestingOf(line); nesting > media::kMostNesting)
        throw UsageError(std::to_string(nesting) + " brackets in each other; 3 are enough");
    const Json json = Json::parse(line, nullptr, false);
    if (!json.is_object() || !json.contains("photo"))
        throw UsageError("an object with a photo is wanted, such as {\"photo\": \"a.jpg\"}");
    BatchPhoto photo;
    photo.options = options;
    for (const auto& [name, value] : json.items()) {
        if (name == "options" && value.is_object()) {
            for (const auto& [option, given] : value.items()) add(option, given, &photo.options);
            continue;
        }
        if (name == "parameters" && value.is_object()) {
            for (const auto& [parameter, given] : value.items())
                addOption("--set", parameter + "=" + textOf(given), &photo.options);
            continue;
        }
        std::string* const place = name == "photo"    ? &photo.photo
                                   : name == "depth"  ? &photo.depth
                                   : name == "output" ? &photo.name
                                                      : nullptr;
        if (place == nullptr)
            throw UsageError("\"" + name +
                             "\": photo, depth and output are known, and the objects options and parameters");
        if (!value.is_string() || value.get<std::string>().empty())
            throw UsageError("\"" + name + "\": a path is wanted");
        *place = value.get<std::string>();
    }
    const fs::path name = fs::path(photo.name).lexically_normal();
    if (name.is_absolute() || *name.begin() == "..")
        throw UsageError("\"output\": " + photo.name + " leads out of the folder of outputs");
    return photo;
}

std::vector<BatchPhoto> photosOfManifest(const PhotoListOptions& list,
                                         const std::vector<std::string>& options) {
    std::vector<BatchPhoto> photos;
    int number = 0;
    std::string text = read(list.manifest);
    for (size_t from = 0; from < text.size();) {
        const size_t to = std::min(text.find('\n', from), text.size());
        const std::string line = text.substr(from, to - from);
        from = to + 1;
        ++number;
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        try {
            photos.push_back(photoOfLine(line, options));
        } catch (const UsageError& error) {
            throw UsageError(list.manifest + ", line " + std::to_string(number) + ": " + error.what());
        }
    }
    return photos;
}

fs::path placeOfPath(const std::string& path) {
    std::error_code ignored;
    fs::path place = fs::weakly_canonical(fs::absolute(path), ignored).lexically_normal();
    return place.has_filename() ? place : place.parent_path();
}

}  // namespace

std::vector<std::string> BatchPhoto::words() const {
    std::vector<std::string> words = options;
    words.insert(words.end(), {"--out", output, asPath(photo)});
    if (!depth.empty()) words.push_back(asPath(depth));
    return words;
}

std::string outputFolder(const std::string& out) {
    const size_t mark = out.find(kNameMark);
    if (mark == std::string::npos) return out;
    const size_t slash = out.rfind('/', mark);
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : out.substr(0, slash);
}

bool namesOneFile(const std::string& out) {
    if (out.find(kNameMark) != std::string::npos) return false;
    try {
        return media::outputFormat(out).kind != media::OutputKind::kFolder;
    } catch (const Error&) {  // for an extension that nothing is written in
        return false;
    }
}

std::vector<BatchPhoto> listPhotos(const PhotoListOptions& list, const std::vector<std::string>& options) {
    std::vector<BatchPhoto> photos;
    if (!list.manifest.empty()) {
        photos = photosOfManifest(list, options);
    } else {
        std::vector<std::string> paths;
        for (const std::string& input : list.inputs) {
            std::error_code ignored;
            if (!fs::is_directory(input, ignored)) {
                // What somebody has typed is refused before any work; a list may be older than its photos.
                if (!fs::exists(input, ignored)) throw Error(input + ": no such file or folder");
                paths.push_back(input);
                continue;
            }
            const std::vector<std::string> inside = photosIn(input);
            paths.insert(paths.end(), inside.begin(), inside.end());
        }
        if (!list.list.empty()) paths = split(read(list.list), list.ends_in_nul ? '\0' : '\n');
        for (const std::string& path : paths) photos.push_back({path, "", "", "", options});
    }
    if (photos.empty()) throw Error("there is no photo in the list");
    return photos;
}

void nameOutput(const PhotoListOptions& list, const OutputEnding& ending, BatchPhoto* photo) {
    const fs::path folder = outputFolder(list.out);
    if (photo->name.empty()) {
        const std::string name = fs::path(photo->photo).stem().string();
        std::string path = name + ending.extension;
        if (list.out.find(kNameMark) != std::string::npos) {
            path = fs::path(list.out).lexically_relative(folder).string();
            for (size_t at = 0; (at = path.find(kNameMark, at)) != std::string::npos; at += name.size())
                path.replace(at, sizeof kNameMark - 1, name);
        }
        photo->name = withSuffix(path, ending.suffix);
    }
    photo->output = asPath((folder / photo->name).string());
}

void refuseCollisions(const std::vector<BatchPhoto>& photos) {
    std::map<fs::path, const BatchPhoto*> inputs, outputs;
    for (const BatchPhoto& photo : photos) {
        inputs[placeOfPath(photo.photo)] = &photo;
        if (!photo.depth.empty()) inputs[placeOfPath(photo.depth)] = &photo;
    }
    for (const BatchPhoto& photo : photos) {
        const fs::path place = placeOfPath(photo.output);
        const auto [other, is_new] = outputs.emplace(place, &photo);
        if (!is_new)
            throw UsageError(photo.output + " would be made of " + other->second->photo + " and of " +
                             photo.photo + "; a manifest gives each an output of its own");
        if (inputs.count(place) > 0) throw UsageError(photo.output + ": is an input; write somewhere else");
    }
}

}  // namespace quorvane::app
