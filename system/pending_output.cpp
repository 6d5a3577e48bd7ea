#include "system/pending_output.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "system/cancel.h"
#include "system/child_process.h"
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

std::string nameOfLeftover(const std::string& name) {
    const size_t extension = name.rfind('.');
    const size_t numbers =
        extension == std::string::npos || extension == 0 ? std::string::npos : name.rfind('.', extension - 1);
    // A path without extension has its numbers last.
    const auto parted = [&name](size_t at, size_t end) -> std::string {
        const std::string text = name.substr(at + 1, end - at - 1);
        const size_t dash = text.find('-');
        const bool numbered = dash != std::string::npos && dash > 0 && dash + 1 < text.size() &&
                              text.find_first_not_of("0123456789-") == std::string::npos &&
                              text.find('-', dash + 1) == std::string::npos;
        return numbered && at > 1 && name[0] == '.' ? name.substr(1, at - 1) + name.substr(end) : "";
    };
    if (extension == std::string::npos) return "";
    std::string found = parted(extension, name.size());
    if (found.empty() && numbers != std::string::npos) found = parted(numbers, extension);
    return found;
}

bool reachesDisk(int descriptor) noexcept {
    // EINVAL: a file system without a disk behind it.
    return fsync(descriptor) == 0 || errno == EINVAL;
}

void writeAll(int descriptor, std::string_view bytes, const std::string& name) {
    // More would block a full pipe's writer, to whom a signal that another thread gets is no end.
    constexpr size_t kMostAtOnce = PIPE_BUF;
    constexpr int kLongestWaitMs = 100;
    struct stat about = {};
    const bool may_wait = fstat(descriptor, &about) == 0 && !S_ISREG(about.st_mode);
    while (!bytes.empty()) {
        if (may_wait) {
            throwIfCancelled();
            pollfd room = {descriptor, POLLOUT, 0};
            if (poll(&room, 1, kLongestWaitMs) <= 0) continue;
        }
        const ssize_t written =
            write(descriptor, bytes.data(), may_wait ? std::min(bytes.size(), kMostAtOnce) : bytes.size());
        if (written < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (written < 0) throwFor(name + ": cannot be written", errno);
        bytes.remove_prefix(static_cast<size_t>(written));
    }
}

PendingOutput::PendingOutput(std::string path) : PendingOutput(std::move(path), -1) {}

PendingOutput::PendingOutput(std::string path, int stream) : m_path(std::move(path)) {
    if (stream >= 0 && m_path == kStandardOutput) {
        m_path = "standard output";
        m_stream = stream;
        m_file = memoryFile();
        m_temporary = "/proc/self/fd/" + std::to_string(m_file.number());
        return;
    }
    m_place = placeOf(m_path);
    std::error_code ignored;
    requireFolderFor(m_place, m_path);
    if (fs::is_directory(m_place, ignored)) throw Error(m_path + ": is a folder, not a file");
    if (fs::exists(m_place, ignored) && !fs::is_regular_file(m_place, ignored))
        throw Error(m_path + ": is not a plain file");
    // Nobody reads what replaces a private file before it is as private.
    const mode_t mode = fs::exists(m_place, ignored) ? 0600 : 0666;
    if (!openUnnamed(mode)) openNamed(mode);
    struct stat about = {};
    fstat(m_file.number(), &about);
    m_mode = about.st_mode & 0777;
}

PendingOutput::~PendingOutput() {
    if (m_named) unlink(m_temporary.c_str());
}

bool PendingOutput::openUnnamed(mode_t mode) {
    fs::path folder = fs::path(m_place).parent_path();
    if (folder.empty()) folder = ".";
    m_file = Descriptor(open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
    m_temporary = "/proc/self/fd/" + std::to_string(m_file.number());
    // Without /proc there would be no way to it.
    return m_file && access(m_temporary.c_str(), R_OK | W_OK) == 0;
}

void PendingOutput::openNamed(mode_t mode) {
    do {
        m_temporary = temporaryBeside(m_place);
        // Never through what somebody else has put there, nor into another run's file.
        m_file = Descriptor(open(m_temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    } while (!m_file && errno == EEXIST);
    if (!m_file) throwFor(m_path + ": cannot be written", errno);
    m_named = true;
}

void PendingOutput::fill(std::string_view bytes) { writeAll(m_file.number(), bytes, m_path); }

int64_t PendingOutput::size() const {
    struct stat about = {};
    return fstat(m_file.number(), &about) == 0 ? about.st_size : 0;
}

void PendingOutput::copyToStream() {
    std::vector<char> chunk(size_t{1} << 16);
    off_t at = 0;
    while (const ssize_t got = pread(m_file.number(), chunk.data(), chunk.size(), at)) {
        if (got < 0) throwFor(m_path + ": cannot be written", errno);
        writeAll(m_stream, {chunk.data(), static_cast<size_t>(got)}, m_path);
        at += got;
    }
}

void PendingOutput::commit() {
    if (m_stream >= 0) return copyToStream();
    struct stat old = {};
    const bool replaces = stat(m_place.c_str(), &old) == 0;
    // A file system that knows no modes refuses; there is nothing to keep then.
    fchmod(m_file.number(), replaces ? old.st_mode & 0777 : m_mode);
    if (!reachesDisk(m_file.number()) || !moveToPlace()) throwFor(m_path + ": cannot be written", errno);
    m_named = false;
}

bool PendingOutput::moveToPlace() {
    const auto name_it = [this](const std::string& name) {
        return linkat(AT_FDCWD, m_temporary.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    if (!m_named && name_it(m_place)) return true;
    // A new name replaces nothing: where a file stands, it gets a temporary one first.
    while (!m_named) {
        const std::string name = temporaryBeside(m_place);
        m_named = name_it(name);
        if (m_named)
            m_temporary = name;
        else if (errno != EEXIST)
            return false;
    }
    return rename(m_temporary.c_str(), m_place.c_str()) == 0;
}

}  // namespace quorvane
