#include "apps/quorvane/terminal/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvane::app {
namespace {

using testing::ElementsAre;

std::string utf8(char32_t code) {
    std::string text;
    const auto add = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0 | code >> 6);
        add(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        add(0xE0 | code >> 12);
        add(0x80 | (code >> 6 & 0x3F));
        add(0x80 | (code & 0x3F));
    } else {
        add(0xF0 | code >> 18);
        add(0x80 | (code >> 12 & 0x3F));
        add(0x80 | (code >> 6 & 0x3F));
        add(0x80 | (code & 0x3F));
    }
    return text;
}

TEST(Printable, KeepsWhatPeopleWrite) {
    for (const char* text : {"", "photo.jpg", "gr\xC3\xBC\xC3\x9F.png", "\xE5\x86\x99\xE7\x9C\x9F.jpg",
                             "\xD7\xAA\xD7\x9E\xD7\x95\xD7\xA0\xD7\x94", "\xF0\x9F\x8C\x84.heic", "\xC2\xA0"})
        EXPECT_EQ(printable(text), text);
}

TEST(Printable, HidesControlCharacters) {
    EXPECT_EQ(printable("two\nlines\x1b[2J\x7f"), "two?lines?[2J?");
    // The second 32, C1, begin sequences too: U+009B is what ESC [ is.
    for (char32_t code = 0x80; code <= 0x9F; ++code) EXPECT_EQ(printable("a" + utf8(code) + "2J"), "a?2J");
}

TEST(Printable, HidesWhatTurnsTheDirectionOfWriting) {
    for (const char32_t code :
         {0x061C, 0x200E, 0x200F, 0x202A, 0x202B, 0x202C, 0x202D, 0x202E, 0x2066, 0x2067, 0x2068, 0x2069})
        EXPECT_EQ(printable("photo" + utf8(code) + "gpj.exe"), "photo?gpj.exe") << std::hex << code;
}

TEST(Printable, StaysOneLine) {
    EXPECT_EQ(printable("a" + utf8(0x2028) + "b" + utf8(0x2029) + "c"), "a?b?c");
}

TEST(Printable, HidesBytesThatAreNotUtf8) {
    EXPECT_EQ(printable("a\xFF.jpg"), "a?.jpg");
    EXPECT_EQ(printable("\x9B[2J"), "?[2J") << "C1 as a byte of its own";
    EXPECT_EQ(printable("\xC3"), "?") << "cut short";
    EXPECT_EQ(printable("\xC3(x"), "?(x");
    EXPECT_EQ(printable("\xE2\x80"), "??");
    EXPECT_EQ(printable("\xC0\x8A"), "??") << "a line feed in two bytes";
    EXPECT_EQ(printable("\xE0\x82\x9B"), "???") << "C1 in three";
    EXPECT_EQ(printable("\xED\xA0\x80"), "???") << "half of a UTF-16 pair";
    EXPECT_EQ(printable("\xF4\x90\x80\x80"), "????") << "beyond the last character";
    EXPECT_EQ(printable("\xF8\x88\x80\x80\x80"), "?????");
}

TEST(Formatted, IsAsLongAsItMustBe) {
    EXPECT_EQ(formatted("%d of %s", 3, "4"), "3 of 4");
    EXPECT_EQ(formatted("%s", std::string(10000, 'x').c_str()), std::string(10000, 'x'));
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> list;
    for (size_t at = 0; at <= text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        list.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return list;
}

TEST(Wrapped, BreaksAtBlanks) {
    EXPECT_THAT(lines(wrapped("one two three four", 9, 2)), ElementsAre("one two", "  three", "  four"));
    EXPECT_EQ(wrapped("one two", 7, 2), "one two");
    EXPECT_EQ(wrapped("", 7, 2), "");
}

TEST(Wrapped, CountsWhatStandsBeforeIt) {
    EXPECT_THAT(lines(wrapped("one two", 12, 6, 6)), ElementsAre("one", "      two"));
    EXPECT_EQ(wrapped("one two", 13, 6, 6), "one two");
}

TEST(Wrapped, KeepsLongWordsAndLineBreaks) {
    EXPECT_THAT(lines(wrapped("a verylongword b", 6, 1)), ElementsAre("a", " verylongword", " b"));
    EXPECT_THAT(lines(wrapped("one\ntwo", 80, 2)), ElementsAre("one", "  two"));
}

TEST(NearestWord, IsTheOneThatWasMeant) {
    const std::vector<std::string> known = {"render", "stages", "inspect", "--frames", "--fps", "--force"};
    EXPECT_EQ(nearestWord("rendr", known), "render") << "one missing";
    EXPECT_EQ(nearestWord("rrender", known), "render") << "one too many";
    EXPECT_EQ(nearestWord("redner", known), "render") << "two exchanged";
    EXPECT_EQ(nearestWord("stagez", known), "stages") << "one wrong";
    EXPECT_EQ(nearestWord("--frmaes", known), "--frames");
    EXPECT_EQ(nearestWord("--frame", known), "--frames");
    EXPECT_EQ(nearestWord("--force-it-all", known), "--force") << "it goes on";
    EXPECT_EQ(nearestWord("--for", {"--quality", "--format-of-all"}), "--format-of-all") << "it stops short";
}

TEST(NearestWord, IsNoneWhereNothingIsNear) {
    const std::vector<std::string> known = {"render", "info", "--fps"};
    for (const char* word : {"paint", "", "x", "photo.jpg", "--quality"})
        EXPECT_EQ(nearestWord(word, known), "") << word;
    EXPECT_EQ(nearestWord("h265", {"h264", "hevc"}), "") << "another number is another thing";
}

}  // namespace
}  // namespace quorvane::app
