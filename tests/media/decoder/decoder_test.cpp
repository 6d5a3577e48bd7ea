#include "media/decoder/decoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <string>

#include "media/decoder/packing.h"
#include "support/photo_writers/apple_heic.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/stereo.h"
#include "support/photo_writers/trailers.h"
#include "support/processes.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using test::jpegFile;
using test::pngFile;
using test::somePhoto;
using test::somePlane;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

/// Starts a worker of a kind; see worker.cpp.
void use(const char* worker) {
    setenv("QUORVANE_TEST_WORKER", worker, 1);
    decodeInWorker("");
    decodeInWorker(TEST_WORKER);
}

class Decoder : public testing::Test {
  protected:
    void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "a build for sanitizers has no decoding worker";
#endif
        use("honest");
    }
    void TearDown() override { decodeInWorker(""); }
};

/// What is said of a file that is refused.
template <typename Decode>
std::string refusal(Decode decode) {
    try {
        decode();
    } catch (const Error& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << "more than one line";
        return error.what();
    }
    return "not refused";
}

/// `runs` runs of 32,767 blocks to which a scan adds nothing: a code of one bit, 0, and 14 bits of 1, of
/// which 16,384 more blocks come. Zero bytes are stuffed behind bytes of 255.
std::string nothingForBlocks(int runs) {
    std::string bits;
    for (int i = 0; i < runs; ++i) bits += "0" + std::string(14, '1');
    bits.append((8 - bits.size() % 8) % 8, '1');
    std::string bytes;
    for (size_t i = 0; i < bits.size(); i += 8) {
        bytes += static_cast<char>(std::stoi(bits.substr(i, 8), nullptr, 2));
        if (bytes.back() == '\xff') bytes += '\0';
    }
    return bytes;
}

// A progressive JPEG of 524,176 blocks in 883 scans, as many as one channel can have: each bit of each
// coefficient comes in one of its own. In the first scan, where restarts are marked, stands a marker that
// means nothing; its length, were it a segment, would reach over all of the other scans.
std::string manyScans() {
    const auto scan = [](int coefficient, int high, int low, const std::string& data) {
        const std::string at(1, static_cast<char>(coefficient));
        return test::segment(0xda,
                             std::string("\x01\x01\x00", 3) + at + at + static_cast<char>(high << 4 | low)) +
               data;
    };
    std::string file = "\xff\xd8";
    file += test::segment(0xdb, std::string(1, '\0') + std::string(64, '\x01'));
    file += test::segment(
        0xc2, "\x08" + test::big(5792, 2) + test::big(5792, 2) + std::string("\x01\x01\x11\x00", 4));
    file += test::segment(0xc4, std::string("\x00\x01", 2) + std::string(15, '\0') + std::string(1, '\0'));
    file += test::segment(0xc4, std::string("\x10\x01", 2) + std::string(15, '\0') + "\xe0");
    file += scan(0, 0, 0, std::string(5792 * 5792 / 64 / 8, '\0'));
    const std::string nothing = nothingForBlocks(16), eighth = nothingForBlocks(2);
    for (int coefficient = 1; coefficient < 64; ++coefficient)
        for (int low = 13; low >= 0; --low) {
            const bool first = coefficient == 1 && low == 13;
            std::string data = nothing;
            if (first) {
                data = eighth + "\xff\x02\xff\xff";
                for (char restart = '\xd0'; restart < '\xd7'; ++restart)
                    data += std::string("\xff") + restart + eighth;
            }
            file += test::segment(0xdd, test::big(first ? 65534 : 0, 2));
            file += scan(coefficient, low == 13 ? 0 : low + 1, low, data);
        }
    return file + "\xff\xd9";
}

TEST_F(Decoder, GivesWhatDecodingHereGives) {
    const std::string photo = jpegFile(somePhoto(240, 180));
    EXPECT_EQ(decoder::decodePhoto(photo, "a").samples, decodePhoto(photo, "a").samples);
    const std::string map = pngFile(somePlane(64, 48));
    EXPECT_EQ(decoder::decodeDepthMap(map, "d").plane.samples, decodeDepthMap(map, "d").plane.samples);
    const PictureHeader header = decoder::readPictureHeader(photo, "a");
    EXPECT_EQ(header.width, 240);
    EXPECT_EQ(header.height, 180);
    const SplitPicture split = decoder::decodeSideBySide(map, DepthHalf::kLeft, "s");
    EXPECT_EQ(split.depth.plane.samples, decodeSideBySide(map, DepthHalf::kLeft, "s").depth.plane.samples);
}

TEST_F(Decoder, GivesTheViewsOfPairs) {
    const RgbImage left = somePhoto(128, 96), right = somePhoto(64, 48);
    const std::string mpo = test::mpoFile(jpegFile(left), jpegFile(right));
    const std::string heic = test::stereoHeicFile(somePhoto(128, 128), somePhoto(128, 128));
    for (const std::string& file : {mpo, heic, test::jpsFile(jpegFile(left), 4)}) {
        const Contents contents = decoder::lookInside(file, "p");
        ASSERT_TRUE(contents.pair);
        const StereoViews views = decoder::decodeViews(file, *contents.pair, "p");
        const StereoViews here = decodeViews(file, *lookInside(file).pair, "p");
        EXPECT_TRUE(views.left.samples == here.left.samples);
        EXPECT_TRUE(views.right.samples == here.right.samples);
        EXPECT_EQ(views.right.width, here.right.width);
    }
    StereoPair missing;
    missing.left.heif_item = missing.right.heif_item = 77;
    EXPECT_THAT(refusal([&] { decoder::decodeViews(heic, missing, "p"); }), HasSubstr("HEIF item 77"));
}

TEST_F(Decoder, GivesTheDepthInsidePhotosOfEveryCoding) {
    const std::string jpeg = jpegFile(somePhoto(160, 128));
    for (const std::string& file :
         {test::appleHeicFile(somePhoto(160, 128), somePlane(160, 128)),
          test::samsungFile(jpeg, somePlane(80, 64)), test::huaweiFile(jpeg, somePlane(80, 64))}) {
        const Contents here = lookInside(file), there = decoder::lookInside(file, "p");
        ASSERT_TRUE(here.depth);
        ASSERT_TRUE(there.depth);
        EXPECT_EQ(there.depth->where, here.depth->where);
        EXPECT_EQ(there.images.size(), here.images.size());
        EXPECT_EQ(decoder::decodeDepth(*there.depth, "p", nullptr).plane.samples,
                  decodeDepth(*here.depth, "p").plane.samples);
        EXPECT_EQ(decoder::decodePhoto(file, there, "p", nullptr).samples,
                  decodePhoto(file, here, "p").samples);
        EXPECT_EQ(decoder::previewPhoto(file, there, "p", 20, nullptr).shrunk.samples,
                  previewPhoto(file, here, "p", 20).shrunk.samples);
        const ShrunkPhoto half = decoder::decodePhotoAtLeast(file, there, "p", {80, 64}, nullptr);
        EXPECT_EQ(half.header.width, 160);
        EXPECT_EQ(half.shrunk.samples, decodePhotoAtLeast(file, here, "p", {80, 64}).shrunk.samples);
    }
}

TEST_F(Decoder, SaysOfADamagedFileWhatDecodingHereSays) {
    const std::string cut = jpegFile(somePhoto(240, 180)).substr(0, 3000);
    const std::string said = refusal([&] { decodePhoto(cut, "cut.jpg"); });
    EXPECT_THAT(said, StartsWith("cut.jpg: "));
    EXPECT_EQ(refusal([&] { decoder::decodePhoto(cut, "cut.jpg"); }), said);
    EXPECT_EQ(refusal([&] { decoder::decodePhoto("no picture", "text"); }),
              refusal([&] { decodePhoto("no picture", "text"); }));
}

// 120 KB that keep a decoder busy for long: the limit of scans does not see them.
TEST_F(Decoder, GivesUpWhatTakesFarTooLong) {
    const std::string bomb = manyScans();
    EXPECT_THAT(refusal([&] { decoder::decodePhoto(bomb, "bomb.jpg"); }),
                AllOf(StartsWith("bomb.jpg: "), HasSubstr("longer than a picture of its size should")));
    // And goes on with the next one.
    const std::string photo = jpegFile(somePhoto(24, 18));
    EXPECT_EQ(decoder::decodePhoto(photo, "a").samples, decodePhoto(photo, "a").samples);
}

TEST_F(Decoder, GivesUpWhatTakesTooMuchMemory) {
    RgbImage large(16000, 16000);
    const std::string file = jpegFile(large);
    EXPECT_THAT(refusal([&] { decoder::decodePhoto(file, "large.jpg"); }), StartsWith("large.jpg: "));
    const std::string photo = jpegFile(somePhoto(24, 18));
    EXPECT_EQ(decoder::decodePhoto(photo, "a").samples, decodePhoto(photo, "a").samples);
}

TEST_F(Decoder, SaysOneLineWhenADecoderCrashes) {
    for (const char* worker : {"crashes", "hangs up"}) {
        use(worker);
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(refusal([&] { decoder::decodePhoto("x", "evil.jpg"); }),
                      "evil.jpg: a decoder crashed over it; it is damaged, or made to do harm");
    }
}

TEST_F(Decoder, BelievesNothingThatATakenOverDecoderSays) {
    use("babbles");
    EXPECT_EQ(refusal([&] { decoder::decodePhoto("x", "evil.jpg"); }),
              "evil.jpg: a decoder gave no sense; the file is damaged, or made to do harm");
    use("cheats");
    EXPECT_THAT(refusal([&] { decoder::decodePhoto("x", "evil.jpg"); }), StartsWith("evil.jpg: a decoder "));
}

TEST_F(Decoder, DecodesHereWhereNoWorkerRuns) {
    use("absent");
    const std::string photo = jpegFile(somePhoto(24, 18));
    EXPECT_EQ(decoder::decodePhoto(photo, "a").samples, decodePhoto(photo, "a").samples);
}

TEST_F(Decoder, KeepsOneWorkerForAllFiles) {
    test::nameInProcesses("decoder-test-keeps-one");
    const std::string photo = jpegFile(somePhoto(24, 18));
    for (int i = 0; i < 3; ++i) decoder::decodePhoto(photo, "a");
    EXPECT_EQ(test::processesNaming("decoder-test-keeps-one"), 1);
    decodeInWorker("");
    EXPECT_TRUE(test::noProcessNames("decoder-test-keeps-one"));
}

SealedMemory packed(const DepthMap& map) {
    Packer packer;
    packer.pack(map);
    return packer.finish();
}

// Every cut and every changed byte is refused or read as something that fits its size: sanitized builds would
// tell.
TEST(Unpacker, ReadsNothingBeyondWhatArrived) {
    DepthMap map;
    map.plane = Image<float, 1>(3, 2);
    map.known = GrayImage(3, 2);
    map.colour_map = "turbo";
    const SealedMemory memory = packed(map);
    const std::string whole(memory.bytes());
    EXPECT_EQ(Unpacker(whole).take<DepthMap>().colour_map, "turbo");
    for (size_t length = 0; length < whole.size(); ++length)
        EXPECT_THROW(Unpacker(whole.substr(0, length)).take<DepthMap>(), Malformed);
    for (size_t at = 0; at < whole.size(); ++at)
        for (const char byte : {'\x00', '\x01', '\x7f', '\xff'}) {
            std::string changed = whole;
            changed[at] = byte;
            try {
                const DepthMap read = Unpacker(changed).take<DepthMap>();
                EXPECT_EQ(read.plane.samples.size(),
                          static_cast<size_t>(read.plane.width * read.plane.height));
            } catch (const Malformed&) {
            }
        }
}

}  // namespace
}  // namespace quorvane::media
