#include "apps/quorvane/batch/finished.h"

#include <fcntl.h>
#include <glib.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <system_error>
#include <vector>

#include "apps/quorvane/input/neighbour.h"
#include "quorvane/version.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::app {

namespace fs = std::filesystem;

namespace {

constexpr char kIndexName[] = ".quorvane-index";
constexpr int kLockTries = 50;
constexpr int kLockWaitMs = 100;

class Sha256 {
  public:
    Sha256() : m_sum(g_checksum_new(G_CHECKSUM_SHA256), g_checksum_free) {}

    void add(const void* bytes, size_t size) {
        g_checksum_update(m_sum.get(), static_cast<const guchar*>(bytes), static_cast<gssize>(size));
    }
    /// A text and its end, so that texts do not run into each other.
    void add(const std::string& text) { add(text.c_str(), text.size() + 1); }

    void addFile(const std::string& path) {
        const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
        if (!file) throwFor(path + ": cannot be read", errno);
        std::vector<char> chunk(1 << 18);
        for (;;) {
            throwIfCancelled();
            const ssize_t got = ::read(file.number(), chunk.data(), chunk.size());
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) throwFor(path + ": cannot be read", errno);
            if (got == 0) return;
            add(chunk.data(), static_cast<size_t>(got));
        }
    }
    std::string text() { return g_checksum_get_string(m_sum.get()); }

  private:
    std::unique_ptr<GChecksum, void (*)(GChecksum*)> m_sum;
};

std::string digestOfFolder(const std::string& path) {
    std::vector<fs::path> files;
    std::error_code failed;
    for (fs::directory_iterator entry(path, failed); !failed && entry != fs::directory_iterator();
         entry.increment(failed)) {
        std::error_code ignored;
        if (entry->is_regular_file(ignored)) files.push_back(entry->path());
    }
    if (failed) throwFor(path + ": cannot be read", failed.value());
    std::sort(files.begin(), files.end());
    Sha256 sum;
    for (const fs::path& file : files) {
        sum.add(file.filename().string());
        sum.addFile(file.string());
    }
    return sum.text();
}

}  // namespace

const std::string& Digests::of(const std::string& path) {
    struct stat about = {};
    if (stat(path.c_str(), &about) != 0) throwFor(path + ": cannot be read", errno);
    if (S_ISDIR(about.st_mode)) {
        m_known[path] = {0, 0, digestOfFolder(path)};
        return m_known[path].digest;
    }
    // Another kind of file can be read once at most, and may never end.
    if (!S_ISREG(about.st_mode)) throw Error(path + ": is not a plain file");
    const long long changed = about.st_mtim.tv_sec * 1000000000LL + about.st_mtim.tv_nsec;
    Known& known = m_known[path];
    if (!known.digest.empty() && known.size == about.st_size && known.changed == changed) return known.digest;
    Sha256 sum;
    sum.addFile(path);
    known = {about.st_size, changed, sum.text()};
    return known.digest;
}

std::string keyOf(const BatchPhoto& photo, Digests* digests) {
    Sha256 key;
    key.add(QUORVANE_VERSION);
    key.add(photo.name);
    // Names say something too: NAME.jps is a pair of views.
    key.add(fs::path(photo.photo).filename().string());
    key.add(digests->of(photo.photo));
    const std::string depth = photo.depth.empty() ? findNeighbour(photo.photo) : photo.depth;
    key.add(fs::path(depth).filename().string());
    if (!depth.empty()) key.add(digests->of(depth));
    for (const std::string& word : photo.options) {
        key.add(word);
        const std::string value = word.substr(word.find('=') + 1);
        std::error_code ignored;
        if (value.size() < word.size() && fs::exists(value, ignored)) key.add(digests->of(value));
    }
    const char* const properties = std::getenv("QUORVANE_PROPERTIES");
    std::error_code ignored;
    if (properties != nullptr && fs::is_regular_file(properties, ignored)) key.add(digests->of(properties));
    return key.text();
}

Finished::Finished(const std::string& folder, Shard shard, bool resumes) {
    const std::string path = (fs::path(folder) / (kIndexName + shard.suffix())).string();
    m_file = openLines(path);
    // What a batch that was killed has started is still ending.
    for (int tries = 0; flock(m_file.number(), LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (errno != EWOULDBLOCK && errno != EINTR) break;  // a file system without locks
        if (tries == kLockTries) throw TemporaryError(path + ": another batch is writing there");
        poll(nullptr, 0, kLockWaitMs);
        throwIfCancelled();
    }
    if (resumes) {
        std::error_code failed;
        for (const auto& entry : fs::directory_iterator(folder, failed)) {
            if (entry.path().filename().string().rfind(kIndexName, 0) != 0) continue;
            std::ifstream index(entry.path());
            for (std::string line; std::getline(index, line);) {
                const nlohmann::json json = nlohmann::json::parse(line, nullptr, false);
                if (!json.is_object()) continue;
                const auto text = [&json](const char* name) {
                    const auto found = json.find(name);
                    return found != json.end() && found->is_string() ? found->get<std::string>() : "";
                };
                if (json.contains("begun"))
                    m_begun.insert(text("begun"));
                else
                    m_made.emplace(text("key"), text("sha256"));
            }
        }
    }
    keepLines(m_file.number(), resumes, path);
}

bool Finished::has(const std::string& key, const std::string& path) const {
    const auto first = m_made.lower_bound({key, ""});
    if (first == m_made.end() || first->first != key) return false;
    std::error_code ignored;
    if (!fs::exists(path, ignored)) return false;
    return m_made.count({key, Digests().of(path)}) > 0;
}

void Finished::begin(const std::string& key) {
    appendLine(m_file.number(), nlohmann::ordered_json{{"begun", key}}.dump(), kIndexName);
}

void Finished::add(const std::string& key, const std::string& path) {
    const nlohmann::ordered_json line = {{"key", key}, {"sha256", Digests().of(path)}};
    appendLine(m_file.number(), line.dump(), kIndexName);
}

void appendLine(int descriptor, const std::string& line, const std::string& name) {
    writeAll(descriptor, line + '\n', name);
}

Descriptor openLines(const std::string& path) {
    Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
    if (!file) throwFor(path + ": cannot be written", errno);
    return file;
}

void keepLines(int descriptor, bool all, const std::string& name) {
    struct stat about = {};
    // What is no plain file has no end to cut off.
    if (fstat(descriptor, &about) != 0 || !S_ISREG(about.st_mode)) return;
    off_t end = all ? about.st_size : 0;
    for (char last = '\0'; end > 0 && pread(descriptor, &last, 1, end - 1) == 1 && last != '\n';) --end;
    if (ftruncate(descriptor, end) != 0) throwFor(name + ": cannot be written", errno);
}

}  // namespace quorvane::app
