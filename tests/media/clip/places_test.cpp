#include "media/clip/places.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <set>

#include "media/clip/output_format.h"
#include "support/temporary_folder.h"

namespace quorvane::media {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// The row of kOutputFormats with that word that is a file; none: nullptr.
const OutputFormat* fileFormat(std::string_view word) {
    const auto* found =
        std::find_if(std::begin(kOutputFormats), std::end(kOutputFormats), [word](const OutputFormat& known) {
            return known.word == word && known.kind != OutputKind::kFolder;
        });
    return found == std::end(kOutputFormats) ? nullptr : found;
}

TEST(Places, AreThoseThatTheHelpNames) {
    EXPECT_THAT(placeNames(),
                ElementsAre("whatsapp", "telegram", "discord", "github", "slack", "web", "sticker"));
    EXPECT_THAT(rowsOf("nowhere"), IsEmpty());
}

TEST(Places, DataAreDated) {
    EXPECT_TRUE(std::regex_match(std::string(placesDate()), std::regex("20[2-9][0-9]-[01][0-9]-[0-3][0-9]")))
        << placesDate();
}

TEST(Places, EachTakesWhatCanBeWritten) {
    for (const std::string& name : placeNames()) {
        std::set<std::string_view> formats;
        for (const Place* row : rowsOf(name)) {
            SCOPED_TRACE(name + " " + std::string(row->format));
            EXPECT_TRUE(formats.insert(row->format).second) << "stands twice";
            const OutputFormat* format = fileFormat(row->format);
            ASSERT_NE(format, nullptr);
            EXPECT_NE(format->kind, OutputKind::kPage);
            if (!row->codec.empty()) {
                EXPECT_THAT(wordsOf(format->codecs), Contains(row->codec));
            }
            // A limit that was meant in kilobytes, or a side that is missing.
            EXPECT_GE(row->limit, 100'000);
            EXPECT_LE(row->limit, 1'000'000'000);
            EXPECT_TRUE((row->longest == 0) != (row->side == 0));
            EXPECT_GE(std::max(row->longest, row->side), 240);
        }
    }
}

TEST(Places, ChatsGetWhatTheyPlay) {
    // A video that is no H.264 is not taken, or is not played by everybody.
    for (const std::string& name : placeNames())
        for (const Place* row : rowsOf(name))
            if (row->format == "mp4") {
                EXPECT_EQ(row->codec, "h264") << name;
            }
    const Place& sticker = *rowsOf("sticker").front();
    EXPECT_EQ(sticker.format, "webp");
    EXPECT_EQ(sticker.side, 512);
    EXPECT_EQ(sticker.limit, 500'000);
    // The request around the file counts too.
    EXPECT_EQ(rowsOf("discord").front()->limit, 10 * 1024 * 1024 - 64 * 1024);
}

}  // namespace
}  // namespace quorvane::media
