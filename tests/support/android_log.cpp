#include "support/android_log.h"

#include <android/log.h>

#include <cstdarg>
#include <cstdio>
#include <ostream>

#include "support/timeline.h"

namespace quorvane::test {

namespace {

constexpr char kTag[] = "AppQRVN";

}  // namespace

bool operator==(const LogLine& a, const LogLine& b) {
    return a.priority == b.priority && a.tag == b.tag && a.text == b.text;
}

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
    return out << "{" << line.priority << ", " << line.tag << ", \"" << line.text << "\"}";
}

LogLine debugLine(std::string text) { return {3, kTag, std::move(text)}; }
LogLine errorLine(std::string text) { return {6, kTag, std::move(text)}; }

AndroidLog& AndroidLog::instance() {
    static AndroidLog* log = new AndroidLog;
    return *log;
}

std::vector<std::string> AndroidLog::texts() const { return textsStartingWith(""); }

std::vector<std::string> AndroidLog::textsStartingWith(const std::string& start) const {
    std::vector<std::string> found;
    for (const LogLine& line : m_lines)
        if (line.text.compare(0, start.size(), start) == 0) found.push_back(line.text);
    return found;
}

}  // namespace quorvane::test

extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    using namespace quorvane::test;
    va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, again);
    text.pop_back();
    va_end(again);
    va_end(arguments);

    std::string entry = "other ";
    if (tag != nullptr && std::string(tag) == kTag) {
        if (priority == ANDROID_LOG_DEBUG) entry = "D ";
        if (priority == ANDROID_LOG_ERROR) entry = "E ";
    }
    Timeline::instance().addLog(entry + text);
    AndroidLog::instance().add({priority, tag != nullptr ? tag : "", std::move(text)});
    return length;
}
