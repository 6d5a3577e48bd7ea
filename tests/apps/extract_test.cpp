// Each plane is known before it is put into a photo, so what comes out can be compared.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "media/picture/picture_file.h"
#include "phone_photos.h"
#include "process.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using media::DepthMap;
using media::GrayImage;
using media::RgbImage;
using testing::ElementsAre;
using testing::HasSubstr;
using Arguments = std::vector<std::string>;

class Extract : public testing::Test {
  protected:
    std::string write(const std::string& name, const std::string& bytes) const {
        writeBytes(folder / name, bytes);
        return folder / name;
    }

    /// Returns what was said.
    std::string extract(Arguments arguments) const {
        arguments.insert(arguments.begin(), "extract");
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        return outcome.err;
    }

    void expectRefused(Arguments arguments, int code, const std::string& said) const {
        arguments.insert(arguments.begin(), "extract");
        SCOPED_TRACE(testing::PrintToString(arguments));
        const std::vector<std::string> before = folder.names();
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, code);
        EXPECT_THAT(outcome.err, testing::StartsWith("quorvane: "));
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(folder.names(), before);
    }

    /// The picture's bits and its samples on the scale of 0 to 255.
    static void expectPlane(const std::string& path, const GrayImage& wanted) {
        const DepthMap got = media::readDepthMap(path);
        EXPECT_EQ(got.bits, 8);
        ASSERT_EQ(got.plane.width, wanted.width);
        ASSERT_EQ(got.plane.height, wanted.height);
        EXPECT_TRUE(std::equal(wanted.samples.begin(), wanted.samples.end(), got.plane.samples.begin()));
    }

    const TemporaryFolder folder;
    const RgbImage photo = somePhoto(192, 144);
    const GrayImage plane = somePlane(192, 144);
    const std::string out = folder / "depth.png";
};

TEST_F(Extract, PlaneComesBackExactly) {
    for (const PhonePhoto& phone : phonePhotos(photo, plane)) {
        if (phone.lossy) continue;
        SCOPED_TRACE(phone.container);
        EXPECT_EQ(extract({write("phone.bin", phone.bytes), "-o", out}), "");
        expectPlane(out, phone.zero_is_near ? inverted(plane) : plane);
    }
}

TEST_F(Extract, DepthComesOutUpright) {
    GDepthOptions options;
    options.orientation = 6;  // to be turned clockwise
    extract({write("a.jpg", gdepthFile(photo, plane, options)), "-o", out});
    const DepthMap got = media::readDepthMap(out);
    ASSERT_EQ(got.plane.width, plane.height);
    ASSERT_EQ(got.plane.height, plane.width);
    for (int y = 0; y < plane.height; ++y)
        for (int x = 0; x < plane.width; ++x) {
            // The stored first row comes to lie at the right.
            const size_t to = static_cast<size_t>(x * plane.height + plane.height - 1 - y);
            const size_t from = static_cast<size_t>(y * plane.width + x);
            ASSERT_EQ(got.plane.samples[to], static_cast<float>(255 - plane.samples[from])) << x << ", " << y;
        }
}

TEST_F(Extract, LinearRangeBecomesInverseOf16Bit) {
    GDepthOptions options;
    options.terms.format = "RangeLinear";
    options.terms.near = "2";
    options.terms.far = "10";
    GrayImage steps(128, 2);
    for (size_t i = 0; i < steps.samples.size(); ++i)
        steps.samples[i] = static_cast<uint8_t>(i < 2 ? 255 * i : 17 * (i % 16));
    extract({write("a.jpg", gdepthFile(photo, steps, options)), "-o", out});
    const DepthMap got = media::readDepthMap(out);
    EXPECT_EQ(got.bits, 16);
    for (size_t i = 0; i < steps.samples.size(); ++i) {
        const double distance = 2 + 8 * steps.samples[i] / 255.0;
        // From 1 / 2 to 1 / 10 on the scale of 255 to 0.
        EXPECT_NEAR(got.plane.samples[i], 255 * (1 / distance - 0.1) / 0.4, 255 / 65535.0) << i;
    }
}

TEST_F(Extract, MoreThan8BitStay) {
    media::Image<uint16_t, 1> deep(192, 144);
    for (size_t i = 0; i < deep.samples.size(); ++i) deep.samples[i] = static_cast<uint16_t>(i % 1024);
    extract({write("a.heic", appleHeicFile(photo, deep, 10)), "-o", out});
    const DepthMap got = media::readDepthMap(out);
    EXPECT_EQ(got.bits, 16);
    for (size_t i = 0; i < deep.samples.size(); ++i)
        ASSERT_NEAR(got.plane.samples[i], deep.samples[i] * 255 / 1023.0, 255 / 65535.0) << i;
}

TEST_F(Extract, PhotoIsTheUnblurredOneAsItIs) {
    GDepthOptions options;
    options.original = jpegFile(somePhoto(100, 50));
    extract({write("a.jpg", gdepthFile(photo, plane, options)), "-o", out, "--photo", folder / "p.jpg"});
    EXPECT_EQ(bytesOf(folder / "p.jpg"), options.original);
}

TEST_F(Extract, PhotoIsTheFilesOwnWhereThereIsNoOther) {
    const std::string jpeg = jpegFile(photo);
    extract({write("a.jpg", samsungFile(jpeg, plane)), "-o", out, "--photo", folder / "p.jpg"});
    EXPECT_EQ(bytesOf(folder / "p.jpg"), jpeg) << "nothing of what was appended";
    const std::string heic = appleHeicFile(photo, plane);
    extract({write("a.heic", heic), "-o", out, "--photo", folder / "p.heic"});
    EXPECT_EQ(bytesOf(folder / "p.heic"), heic);
}

TEST_F(Extract, RawIsWhatTheFileHolds) {
    for (const PhonePhoto& phone : phonePhotos(photo, plane)) {
        SCOPED_TRACE(phone.container);
        const std::string file = write("phone.bin", phone.bytes);
        if (phone.raw.empty()) {
            expectRefused({file, "--raw", "-o", folder / "x.bin"}, 1,
                          "phone.bin: its depth is no file of its own");
            continue;
        }
        EXPECT_EQ(extract({file, "--raw", "-o", folder / "raw.bin"}),
                  phone.bare ? "raw depth: 192 x 144 samples of 8 bit, rows from the top\n" : "");
        EXPECT_EQ(bytesOf(folder / "raw.bin"), phone.raw);
    }
}

TEST_F(Extract, NothingIsWrittenOfAPhotoWithoutDepth) {
    const std::string file = write("a.jpg", jpegFile(photo));
    // Only what is inside counts.
    write("a_depth.png", pngFile(plane));
    expectRefused({file, "-o", out, "--photo", folder / "p.jpg"}, 1, "a.jpg: no depth found inside");
    expectRefused({folder / "none.jpg", "-o", out}, 1, "none.jpg: No such file");
    expectRefused({write("text.jpg", "hello"), "-o", out}, 1, "text.jpg: not a JPEG");
}

TEST_F(Extract, DepthThatCannotBeDecodedIsTold) {
    GDepthOptions options;
    options.data = base64(pngFile(plane).substr(0, 150));
    expectRefused({write("a.jpg", gdepthFile(photo, plane, options)), "-o", out, "--photo", folder / "p.jpg"},
                  1, "a.jpg: ");
}

TEST_F(Extract, OutputsThatCannotBeAreNamed) {
    const std::string file = write("a.jpg", gdepthFile(photo, plane));
    const std::string before = bytesOf(file);
    expectRefused({file}, 2, "--out");
    expectRefused({file, "-o", folder / "d.jpg"}, 2, "d.jpg");
    expectRefused({file, "-o", folder / "d.mp4"}, 2, "written as .png");
    expectRefused({file, "-o", out, "--photo", folder / "./depth.png"}, 2, "two files");
    expectRefused({file, "-o", out, "--photo", file}, 1, "is an input");
    expectRefused({file, "--raw", "-o", file}, 1, "is an input");
    expectRefused({file, "-o", folder / "none/d.png"}, 1, "there is no folder");
    expectRefused({file, "-o", out, "--photo", folder / "none/p.jpg"}, 1, "there is no folder");
    EXPECT_EQ(bytesOf(file), before);
}

TEST_F(Extract, SignalLeavesNothing) {
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    Process process({"extract", pipe, "-o", out, "--photo", folder / "p.jpg"});
    // Returns once the program has opened its end.
    const int end = open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::write(end, "\xff\xd8\xff\xe0", 4), 4);
    process.signal(SIGTERM);
    const Outcome outcome = process.wait();
    close(end);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.err, "quorvane: interrupted\n");
    EXPECT_THAT(folder.names(), ElementsAre("pipe"));
}

}  // namespace
}  // namespace quorvane::test
