#include "diagnostics/ppm_dump.h"

#include <dirent.h>
#include <unistd.h>

#include "../memory.h"
#include "support/component_test.h"
#include "support/dump_directory.h"
#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PpmDump : public ComponentTest {
  protected:
    Bytes dumped(int width, int height, Bytes pixels, int format) {
        renderer._dump_ppm(width, height, path.c_str(), pixels.data(), format);
        return fileBytes(path);
    }

    TemporaryDirectory directory;
    const std::string path = directory.path("image.ppm");
    ESRenderer renderer;
};

TEST_F(PpmDump, GrayImageIsAPgm) {
    const Bytes file = dumped(3, 2, {1, 2, 3, 4, 5, 6}, 0);
    ASSERT_EQ(file.size(), 11u + 6u);
    EXPECT_EQ(std::string(file.begin(), file.begin() + 11), "P5\n3 2\n255 ");
    EXPECT_EQ(Bytes(file.begin() + 11, file.end()), Bytes({1, 2, 3, 4, 5, 6}));
}

TEST_F(PpmDump, FourthByteOfAPixelIsDropped) {
    EXPECT_EQ(dumped(1, 1, {10, 20, 30, 40}, 1), netpbm("P6", 1, 1, {10, 20, 30}));
}

TEST_F(PpmDump, ColourImageIsWrittenAsItIs) {
    EXPECT_EQ(dumped(2, 1, {1, 2, 3, 4, 5, 6}, 2), netpbm("P6", 2, 1, {1, 2, 3, 4, 5, 6}));
}

TEST_F(PpmDump, RowsOfFourBytePixelsFollowEachOther) {
    EXPECT_EQ(dumped(2, 2, {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 0}, 1),
              netpbm("P6", 2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
}

TEST_F(PpmDump, FirstRowComesFirst) {
    EXPECT_EQ(dumped(1, 3, {30, 20, 10}, 0), netpbm("P5", 1, 3, {30, 20, 10}));
}

TEST_F(PpmDump, EveryByteValueSurvives) {
    Bytes all(256);
    for (size_t i = 0; i < all.size(); ++i) all[i] = static_cast<uint8_t>(i);
    EXPECT_EQ(dumped(16, 16, all, 0), netpbm("P5", 16, 16, all));
}

TEST_F(PpmDump, LeavesNoMemoryBehind) {
    Bytes pixels(1 << 16);
    EXPECT_LT(bytesKept([&] { renderer._dump_ppm(1 << 16, 1, path.c_str(), pixels.data(), 0); }), 1 << 18)
        << "32 rows are 2 MB";
}

TEST_F(PpmDump, NoByteOutsideTheImageIsRead) {
    for (const int format : {0, 1, 2}) {
        const size_t channels = format == 0 ? 1 : format == 1 ? 4 : 3;
        for (const auto against : {GuardedBytes::Against::end, GuardedBytes::Against::start}) {
            GuardedBytes pixels(7 * 5 * channels, against);
            renderer._dump_ppm(7, 5, path.c_str(), pixels.data(), format);
            EXPECT_EQ(fileBytes(path).size(), 11u + 7 * 5 * (format == 0 ? 1 : 3));
        }
    }
}

TEST_F(PpmDump, OlderFileIsReplaced) {
    dumped(4, 4, Bytes(16, 1), 0);
    EXPECT_EQ(dumped(1, 1, {9}, 0), netpbm("P5", 1, 1, {9}));
}

TEST_F(PpmDump, NegativeHeightLeavesAHeaderWithoutRows) {
    EXPECT_EQ(dumped(3, -2, Bytes(6), 0), netpbm("P5", 3, -2, {}));
    EXPECT_EQ(dumped(3, -2, Bytes(18), 2), netpbm("P6", 3, -2, {}));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(PpmDump, WrittenFilesAreNotLogged) {
    dumped(1, 1, {1, 2, 3, 4}, 0);
    dumped(1, 1, {1, 2, 3, 4}, 1);
    dumped(1, 1, {1, 2, 3, 4}, 2);
    EXPECT_THAT(timeline.lines(), IsEmpty());
}

TEST_F(PpmDump, EmptyNameIsLoggedAndNothingIsWritten) {
    unsigned char pixel = 0;
    renderer._dump_ppm(1, 1, "", &pixel, 0);
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("[ERROR] Invalid file name\n")));
}

TEST_F(PpmDump, EmptyNameIsTestedBeforeTheImage) {
    renderer._dump_ppm(0, 0, "", nullptr, 9);
    EXPECT_THAT(log.texts(), ElementsAre("[ERROR] Invalid file name\n"));
}

TEST_F(PpmDump, MissingOrEmptyImageIsLoggedAndNothingIsWritten) {
    unsigned char pixel = 0;
    renderer._dump_ppm(1, 1, path.c_str(), nullptr, 0);
    renderer._dump_ppm(0, 1, path.c_str(), &pixel, 0);
    renderer._dump_ppm(1, 0, path.c_str(), &pixel, 1);
    EXPECT_THAT(log.lines(),
                ElementsAre(debugLine("[ERROR] Invalid image\n"), debugLine("[ERROR] Invalid image\n"),
                            debugLine("[ERROR] Invalid image\n")));
    EXPECT_FALSE(fileExists(path));
}

TEST_F(PpmDump, FileThatCannotBeOpenedIsLoggedByName) {
    unsigned char pixel = 0;
    const std::string nowhere = directory.path("missing/image.ppm");
    renderer._dump_ppm(1, 1, nowhere.c_str(), &pixel, 0);
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("[ERROR] Cannot open file " + nowhere + "\n")));
}

TEST_F(PpmDump, UnknownFormatLeavesAnEmptyFileAndSaysNothing) {
    for (const int format : {3, -1, 100}) {
        EXPECT_THAT(dumped(1, 1, {1, 2, 3, 4}, format), IsEmpty());
        EXPECT_TRUE(fileExists(path));
        unlink(path.c_str());
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

/// How many descriptors of this process are open on `path`.
int descriptorsOn(const std::string& path) {
    int count = 0;
    DIR* open_files = opendir("/proc/self/fd");
    if (open_files == nullptr) return -1;
    while (const dirent* entry = readdir(open_files)) {
        char target[512];
        const ssize_t length =
            readlink((std::string("/proc/self/fd/") + entry->d_name).c_str(), target, sizeof target);
        if (length > 0 && std::string(target, static_cast<size_t>(length)) == path) ++count;
    }
    closedir(open_files);
    return count;
}

TEST_F(PpmDump, UnknownFormatLeavesItsStreamOpen) {
    dumped(1, 1, {1, 2, 3, 4}, 3);
    EXPECT_EQ(descriptorsOn(path), 1);
}

TEST_F(PpmDump, KnownFormatsCloseTheirStream) {
    for (const int format : {0, 1, 2}) dumped(1, 1, {1, 2, 3, 4}, format);
    EXPECT_EQ(descriptorsOn(path), 0);
}

TEST_F(PpmDump, DumpsGoToTheDevicesDirectory) { EXPECT_STREQ(kDumpDirectory, "/storage/sdcard0/qrvn/"); }

}  // namespace
}  // namespace quorvane::test
