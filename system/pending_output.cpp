#include "system/pending_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "system/error.h"

namespace quorvane {

namespace fs = std::filesystem;

std::string placeOf(std::string path) {
    constexpr int kMostLinks = 40;
    for (int links = 0; links < kMostLinks; ++links) {
        std::error_code failed;
        const fs::path target = fs::read_symlink(path, failed);
        if (failed) return path;
        path = (fs::path(path).parent_path() / target).string();
    }
    throw Error(path + ": too many symbolic links");
}

void requireFolderFor(const std::string& place, const std::string& path) {
    std::error_code ignored;
    const fs::path folder = fs::path(place).parent_path();
    if (!folder.empty() && !fs::is_directory(folder, ignored))
        throw Error(path + ": there is no folder " + folder.string());
}

std::string temporaryBeside(const std::string& path) {
    static std::atomic<int> made{0};
    // Leaves room for what is added: a name has 255 bytes at most.
    constexpr size_t kLongestStem = 200;
    const fs::path place(path);
    return (place.parent_path() /
            ("." + place.stem().string().substr(0, kLongestStem) + "." + std::to_string(getpid()) + "-" +
             std::to_string(++made) + place.extension().string()))
        .string();
}

PendingOutput::PendingOutput(std::string path) : m_path(std::move(path)), m_place(placeOf(m_path)) {
    std::error_code ignored;
    requireFolderFor(m_place, m_path);
    if (fs::is_directory(m_place, ignored)) throw Error(m_path + ": is a folder, not a file");
    if (fs::exists(m_place, ignored) && !fs::is_regular_file(m_place, ignored))
        throw Error(m_path + ": is not a plain file");
    int file = -1;
    do {
        m_temporary = temporaryBeside(m_place);
        // Never through what somebody else has put there, nor into another run's file.
        file = open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (file < 0 && errno == EEXIST);
    if (file < 0) throw Error(m_path + ": cannot be written (" + std::strerror(errno) + ")");
    close(file);
}

PendingOutput::~PendingOutput() {
    std::error_code ignored;
    if (!m_temporary.empty()) fs::remove(m_temporary, ignored);
}

void PendingOutput::commit() {
    std::error_code failed;
    fs::rename(m_temporary, m_place, failed);
    if (failed) throw Error(m_path + ": cannot be written (" + failed.message() + ")");
    m_temporary.clear();
}

}  // namespace quorvane
