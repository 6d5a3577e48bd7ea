#ifndef QUORVANE_TESTS_SUPPORT_SHARE_PAGE_H
#define QUORVANE_TESTS_SUPPORT_SHARE_PAGE_H

#include <string>

namespace quorvane::test {

inline std::string fromBase64(const std::string& text) {
    static const std::string kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    for (const char digit : text) {
        if (digit == '=') break;
        bits = bits << 6 | static_cast<unsigned>(kDigits.find(digit));
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count & 255U);
    }
    return bytes;
}

/// The file that a page holds, such as "image/png"; empty where there is none.
inline std::string fileInPage(const std::string& page, const std::string& type) {
    const std::string start = "data:" + type + ";base64,";
    const size_t at = page.find(start);
    if (at == std::string::npos) return {};
    const size_t from = at + start.size();
    return fromBase64(page.substr(from, page.find('"', from) - from));
}

/// A page without the files in it.
inline std::string wordsOfPage(const std::string& page) {
    std::string words;
    size_t from = 0;
    for (size_t at; (at = page.find("base64,", from)) != std::string::npos; from = page.find('"', at))
        words += page.substr(from, at - from);
    return words + page.substr(from);
}

}  // namespace quorvane::test

#endif
