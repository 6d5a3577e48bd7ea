#include "apps/quorvane/input/neighbour.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <set>
#include <system_error>
#include <utility>

namespace quorvane::app {

namespace fs = std::filesystem;

namespace {

constexpr const char* kEndings[] = {"_depth", "-depth", "_depth16", "-depth16"};
constexpr const char* kExtensions[] = {".png", ".tif", ".tiff", ".webp", ".heic", ".avif", ".jpg", ".jpeg"};

/// Where the extension stands in the order, std::size(kExtensions) for one of no picture.
size_t rankOf(std::string extension) {
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return static_cast<size_t>(std::find(std::begin(kExtensions), std::end(kExtensions), extension) -
                               std::begin(kExtensions));
}

/// The best picture called `stem` in `folder`, or an empty path.
fs::path pictureCalled(const fs::path& stem, const fs::path& folder, const fs::path& photo) {
    std::pair<size_t, fs::path> best = {std::size(kExtensions), {}};
    std::error_code failed;
    // Names are read, not guessed: extensions come in any case.
    fs::directory_iterator entry(folder.empty() ? fs::path(".") : folder, failed);
    for (; !failed && entry != fs::directory_iterator(); entry.increment(failed)) {
        const fs::path name = entry->path().filename();
        if (name.stem() != stem) continue;
        const std::pair<size_t, fs::path> candidate = {rankOf(name.extension().string()), folder / name};
        if (candidate.first == std::size(kExtensions) || (!best.second.empty() && best < candidate)) continue;
        std::error_code ignored;
        if (!fs::is_regular_file(candidate.second, ignored) ||
            fs::equivalent(candidate.second, photo, ignored))
            continue;
        best = candidate;
    }
    return best.second;
}

}  // namespace

std::string findNeighbour(const std::string& photo) {
    const fs::path path(photo);
    const fs::path folder = path.parent_path();
    const std::string name = path.stem().string();
    for (const char* const ending : kEndings) {
        const fs::path found = pictureCalled(name + ending, folder, path);
        if (!found.empty()) return found.string();
    }
    return pictureCalled(name, folder / "depth", path).string();
}

std::string neighbourNames(const std::string& photo) {
    const std::string name = fs::path(photo).stem().string();
    return name + kEndings[0] + ".* or depth/" + name + ".*";
}

std::vector<std::string> withoutNeighbours(std::vector<std::string> pictures) {
    std::set<std::string> names;
    for (const std::string& picture : pictures) names.insert(fs::path(picture).stem().string());
    const auto is_called_after_one = [&names](const std::string& picture) {
        const std::string name = fs::path(picture).stem().string();
        return rankOf(fs::path(picture).extension().string()) < std::size(kExtensions) &&
               std::any_of(std::begin(kEndings), std::end(kEndings), [&](const std::string& ending) {
                   return name.size() > ending.size() &&
                          name.compare(name.size() - ending.size(), ending.size(), ending) == 0 &&
                          names.count(name.substr(0, name.size() - ending.size())) > 0;
               });
    };
    pictures.erase(std::remove_if(pictures.begin(), pictures.end(), is_called_after_one), pictures.end());
    return pictures;
}

}  // namespace quorvane::app
