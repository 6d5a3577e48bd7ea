#include "support/dump_directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

namespace quorvane::test {

namespace {

const char* const kLevels[] = {"/storage", "/storage/sdcard0", "/storage/sdcard0/qrvn"};
constexpr char kDumps[] = "/storage/sdcard0/qrvn";

std::vector<std::string> filesIn(const std::string& directory) {
    std::vector<std::string> names;
    DIR* handle = opendir(directory.c_str());
    if (handle == nullptr) return names;
    while (const dirent* entry = readdir(handle)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(name);
    }
    closedir(handle);
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

bool fileExists(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

std::vector<uint8_t> fileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<uint8_t> netpbm(const std::string& magic, int width, int height,
                            const std::vector<uint8_t>& pixels) {
    const std::string header = magic + "\n" + std::to_string(width) + " " + std::to_string(height) + "\n255 ";
    std::vector<uint8_t> bytes(header.begin(), header.end());
    bytes.insert(bytes.end(), pixels.begin(), pixels.end());
    return bytes;
}

DumpDirectory::DumpDirectory(State wanted) {
    m_lock = open("/tmp/quorvane-test-dumps.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (m_lock < 0 || flock(m_lock, LOCK_EX) != 0) {
        m_obstacle = std::string("cannot lock the dump directory: ") + std::strerror(errno);
        return;
    }
    if (fileExists(kDumps)) {
        m_obstacle = std::string(kDumps) + " exists already and is not this test's to touch";
        return;
    }
    if (wanted == State::absent) return;
    for (const char* level : kLevels) {
        if (fileExists(level)) continue;
        if (mkdir(level, 0777) != 0) {
            m_obstacle = std::string("cannot create ") + level + ": " + std::strerror(errno);
            return;
        }
        m_created.push_back(level);
    }
}

DumpDirectory::~DumpDirectory() {
    for (auto level = m_created.rbegin(); level != m_created.rend(); ++level) {
        if (*level == kDumps)
            for (const std::string& file : files()) unlink(path(file).c_str());
        rmdir(level->c_str());
    }
    if (m_lock >= 0) close(m_lock);
}

std::string DumpDirectory::path(const std::string& file) { return std::string(kDumps) + "/" + file; }

std::vector<std::string> DumpDirectory::files() const { return filesIn(kDumps); }

TemporaryDirectory::TemporaryDirectory() {
    char name[] = "/tmp/quorvane-test-XXXXXX";
    if (mkdtemp(name) == nullptr) std::abort();
    m_path = name;
}

TemporaryDirectory::~TemporaryDirectory() {
    for (const std::string& file : filesIn(m_path)) unlink(path(file).c_str());
    rmdir(m_path.c_str());
}

}  // namespace quorvane::test
