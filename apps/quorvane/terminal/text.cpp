#include "apps/quorvane/terminal/text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <numeric>

namespace quorvane::app {
namespace {

/// The bytes of the UTF-8 character that `text` begins with, and the character; 0 bytes where it begins with
/// none.
struct Character {
    size_t bytes = 0;
    uint32_t code = 0;
};

Character firstCharacter(std::string_view text) {
    const auto byte = [text](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byte(0);
    if (lead < 0x80) return {1, lead};
    // The smallest code of each length: a longer form of a smaller one is not UTF-8.
    constexpr uint32_t kSmallest[] = {0x80, 0x800, 0x10000};
    const size_t more = lead >= 0xC2 && lead < 0xE0   ? 1
                        : lead >= 0xE0 && lead < 0xF0 ? 2
                        : lead >= 0xF0 && lead < 0xF5 ? 3
                                                      : 0;
    if (more == 0 || text.size() <= more) return {};
    uint32_t code = lead & (0x3FU >> more);
    for (size_t i = 1; i <= more; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return {};
        code = code << 6 | (byte(i) & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kSmallest[more - 1] || code > 0x10FFFF || surrogate) return {};
    return {more + 1, code};
}

std::string withoutDigits(std::string_view word) {
    std::string letters;
    for (const char c : word)
        if (c < '0' || c > '9') letters += c;
    return letters;
}

bool isPlain(uint32_t code) {
    struct Range {
        uint32_t first, last;
    };
    constexpr Range kOthers[] = {
        {0x0000, 0x001F}, {0x007F, 0x009F},                    // control characters
        {0x061C, 0x061C}, {0x200E, 0x200F}, {0x202A, 0x202E},  // direction of writing
        {0x2066, 0x2069}, {0x2028, 0x2029},                    // the last: line and paragraph separator
    };
    return std::none_of(std::begin(kOthers), std::end(kOthers),
                        [code](const Range& range) { return code >= range.first && code <= range.last; });
}

/// Letters to change, insert, remove or exchange with the next one to make `b` of `a`.
size_t distanceBetween(std::string_view a, std::string_view b) {
    // Row by row of the table of distances between the beginnings of both words.
    std::vector<size_t> before(b.size() + 1), above(b.size() + 1), row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 1; i <= a.size(); ++i) {
        before.swap(above);
        above.swap(row);
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            row[j] =
                std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (a[i - 1] != b[j - 1] ? 1U : 0U)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row.back();
}

}  // namespace

std::string printable(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        if (character.bytes > 0 && isPlain(character.code))
            plain += text.substr(0, character.bytes);
        else
            plain += '?';
        text.remove_prefix(std::max<size_t>(1, character.bytes));
    }
    return plain;
}

std::string formatted(const char* format, ...) {
    va_list values;
    va_start(values, format);
    va_list again;
    va_copy(again, values);
    std::string text(static_cast<size_t>(std::vsnprintf(nullptr, 0, format, values)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    va_end(values);
    return text;
}

std::string wrapped(std::string_view text, size_t width, size_t indent, size_t used) {
    std::string lines;
    size_t column = used;
    bool at_start = true;
    while (!text.empty()) {
        const size_t length = std::min(text.find_first_of(" \n"), text.size());
        const std::string_view word = text.substr(0, length);
        if (!at_start && column + 1 + word.size() > width) {
            lines += '\n' + std::string(indent, ' ');
            column = indent;
            at_start = true;
        }
        if (!at_start) {
            lines += ' ';
            ++column;
        }
        lines += word;
        column += word.size();
        at_start = false;
        if (length < text.size() && text[length] == '\n') {
            lines += '\n' + std::string(indent, ' ');
            column = indent;
            at_start = true;
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return lines;
}

std::string nearestWord(std::string_view word, const std::vector<std::string>& known) {
    std::string nearest;
    size_t least = word.size() / 3 + 1;
    for (const std::string& candidate : known) {
        const size_t distance = distanceBetween(word, candidate);
        // h265 is no mistyped h264.
        if (distance >= least || (distance > 0 && withoutDigits(word) == withoutDigits(candidate))) continue;
        least = distance;
        nearest = candidate;
    }
    if (!nearest.empty()) return nearest;
    // A word that goes on, or stops short: --output, --invert.
    constexpr size_t kLeast = 5;
    for (const std::string& candidate : known) {
        const size_t shared = std::min(word.size(), candidate.size());
        if (shared >= kLeast && word.substr(0, shared) == candidate.substr(0, shared)) return candidate;
    }
    return "";
}

}  // namespace quorvane::app
