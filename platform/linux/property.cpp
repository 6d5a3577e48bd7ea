// Android's system properties for a machine without them: a table kept in this process.

#include <cutils/properties.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>

#include "property_line.h"

namespace {

constexpr size_t kLongestValue = PROPERTY_VALUE_MAX - 1;
constexpr size_t kLargestFile = 1 << 20;

class PropertyTable {
  public:
    /// The process's table, first filled from the file that QUORVANE_PROPERTIES names.
    static PropertyTable& instance() {
        static PropertyTable table;
        return table;
    }

    std::string get(const std::string& key) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto entry = m_values.find(key);
        return entry != m_values.end() ? entry->second : std::string();
    }

    bool set(const std::string& key, const std::string& value) {
        if (key.empty() || value.size() > kLongestValue) return false;
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (value.empty())
            m_values.erase(key);
        else
            m_values[key] = value;
        return true;
    }

  private:
    PropertyTable() {
        const char* path = std::getenv("QUORVANE_PROPERTIES");
        if (path != nullptr && path[0] != '\0') load(path);
    }

    // A bad line is reported and skipped, and the rest still counts: a device's properties are set one by one
    // too.
    void load(const char* path) {
        std::ifstream file(path, std::ios::binary);
        std::string text(kLargestFile + 1, '\0');
        file.read(&text[0], static_cast<std::streamsize>(text.size()));
        if (!file.is_open() || file.bad()) {
            std::fprintf(stderr, "%s: cannot read the property file: %s\n", path, std::strerror(errno));
            return;
        }
        text.resize(static_cast<size_t>(file.gcount()));
        if (text.size() > kLargestFile) {
            std::fprintf(stderr, "%s: not read: a property file has at most %zu bytes\n", path, kLargestFile);
            return;
        }
        std::istringstream lines(text);
        std::string line;
        for (int number = 1; std::getline(lines, line); ++number) {
            using Kind = quorvane::PropertyLine::Kind;
            const quorvane::PropertyLine read = quorvane::parsePropertyLine(line);
            if (read.kind == Kind::kNonsense) {
                std::fprintf(stderr, "%s:%d: expected key=value\n", path, number);
            } else if (read.kind == Kind::kSetting && !set(read.key, read.value)) {
                std::fprintf(stderr, "%s:%d: the value of %s is longer than %zu bytes\n", path, number,
                             read.key.c_str(), kLongestValue);
            }
        }
    }

    std::mutex m_mutex;
    std::map<std::string, std::string> m_values;
};

}  // namespace

/// Copies the value of `key`, or `default_value` (null for none) when unset or empty, into `value`
/// (PROPERTY_VALUE_MAX bytes, zero-ended). Returns its length in bytes, at most 91. Any thread.
int property_get(const char* key, char* value, const char* default_value) {
    std::string text = PropertyTable::instance().get(key);
    if (text.empty() && default_value != nullptr) text = default_value;
    const size_t length = text.copy(value, kLongestValue);
    value[length] = '\0';
    return static_cast<int>(length);
}

/// Sets `key` until the process ends; an empty or null value unsets it. Returns 0, or -1 for an empty key or
/// a value of more than 91 bytes, and then nothing has changed. Any thread.
int property_set(const char* key, const char* value) {
    return PropertyTable::instance().set(key, value != nullptr ? value : "") ? 0 : -1;
}
