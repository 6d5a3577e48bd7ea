#include "apps/quorvane/input/neighbour.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

namespace quorvane::app {

namespace fs = std::filesystem;

namespace {

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
    for (const auto& [place, stem] :
         {std::pair{folder, name + "_depth"}, {folder, name + "-depth"}, {folder / "depth", name}}) {
        const fs::path found = pictureCalled(stem, place, path);
        if (!found.empty()) return found.string();
    }
    return "";
}

std::string neighbourNames(const std::string& photo) {
    const std::string name = fs::path(photo).stem().string();
    return name + "_depth.*, " + name + "-depth.*, depth/" + name + ".*";
}

}  // namespace quorvane::app
