// Long runs on the real driver: whatever the order of calls, nothing is left, and nothing grows.

#include <unistd.h>

#include <cstdio>
#include <string>

#include "host_test.h"

namespace quorvane::test {
namespace {

using testing::IsEmpty;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kKeepsFreedMemory = true;
#elif defined(__has_feature)
constexpr bool kKeepsFreedMemory = __has_feature(address_sanitizer);
#else
constexpr bool kKeepsFreedMemory = false;
#endif

/// Resident memory of this process in bytes.
double residentBytes() {
    long pages = 0, resident = 0;
    FILE* file = std::fopen("/proc/self/statm", "r");
    const bool read = std::fscanf(file, "%ld %ld", &pages, &resident) == 2;
    std::fclose(file);
    return read ? static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) : 0.0;
}

class Soak : public DriverTest {
  protected:
    template <typename Action>
    auto quietly(Action action) {
        const OutputToTimeline output;
        auto result = action();
        // What is recorded grows with every call; only the driver's and our own memory shall count.
        forget();
        gl.texture_uploads.clear();
        gl.buffer_uploads.clear();
        gl.matrix_uploads.clear();
        return result;
    }

    void create(int width, int height) {
        const Status made = quietly([&] { return ParallaxView::create(width, height, 4, &view); });
        ASSERT_TRUE(made.ok()) << made.message();
    }

    bool setPhoto(int side, uint32_t seed) {
        const Bytes photo = noise(static_cast<size_t>(3 * side * side), seed);
        return quietly([&] { return view->setPhoto({photo, side, side}); }).ok();
    }
    bool setDepth(int side, uint32_t seed) {
        const Bytes depth = noise(static_cast<size_t>(side * side), seed);
        return quietly([&] { return view->setDepth({depth, side, side}); }).ok();
    }

    size_t objects() const {
        return gl.live_textures.size() + gl.live_buffers.size() + gl.live_framebuffers.size() +
               gl.live_renderbuffers.size() + gl.live_programs.size() + gl.live_shaders.size();
    }

    std::unique_ptr<ParallaxView> view;
};

/// Runs `once` `times` times and expects objects and memory as they were after the first tenth.
template <typename Once, typename Objects>
void expectFlat(const char* what, int times, Objects objects, Once once) {
    size_t objects_before = 0;
    double bytes_before = 0;
    for (int i = 0; i < times; ++i) {
        ASSERT_TRUE(once(i)) << what << ' ' << i;
        if (i == times / 10) {
            objects_before = objects();
            bytes_before = residentBytes();
        }
    }
    const double grown = residentBytes() - bytes_before;
    std::printf("%d %s: %zu GL objects before and %zu after, memory %+.2f MB\n", times, what, objects_before,
                objects(), grown / 1e6);
    EXPECT_EQ(objects(), objects_before);
    // A page or two of the allocator's bookkeeping, far below a byte a round of anything real. The address
    // sanitizer holds back what was freed, and looks for leaks itself.
    if (!kKeepsFreedMemory) {
        EXPECT_LT(grown, 2e6);
    }
}

TEST_F(Soak, TenThousandFramesStayFlat) {
    create(32, 24);
    ASSERT_TRUE(setPhoto(32, 1));
    ASSERT_TRUE(setDepth(32, 2));
    Bytes pixels(32 * 24 * 4);
    expectFlat(
        "frames", 10000, [&] { return objects(); },
        [&](int i) {
            const float x = static_cast<float>(i % 41) / 20 - 1;
            return quietly([&] { return view->lookAt(x, -x); }).ok() &&
                   quietly([&] { return view->render(); }).ok() &&
                   view->readPixels({pixels, view->width(), view->height()}).ok();
        });
}

TEST_F(Soak, FiveHundredPhotosStayFlat) {
    create(32, 24);
    expectFlat(
        "photo changes", 500, [&] { return objects(); },
        [&](int i) {
            const int side = 32 + 32 * (i % 3);
            return setPhoto(side, static_cast<uint32_t>(i)) && setDepth(side, static_cast<uint32_t>(i)) &&
                   quietly([&] { return view->render(); }).ok();
        });
}

TEST_F(Soak, AnyOrderOfCallsLeavesNothing) {
    uint32_t dice = 12345;
    const auto roll = [&dice](uint32_t sides) {
        dice = dice * 1664525u + 1013904223u;
        return static_cast<int>((dice >> 16) % sides);
    };
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        create(8 + roll(40), 8 + roll(40));
        for (int step = roll(14); step > 0; --step) {
            switch (roll(6)) {
                case 0: setPhoto(32 << roll(2), dice); break;
                case 1: setDepth(32 << roll(3), dice); break;
                case 2:
                    static_cast<void>(quietly([&] { return view->resize(4 + roll(60), 4 + roll(60)); }));
                    break;
                case 3: static_cast<void>(quietly([&] { return view->render(); })); break;
                case 4:
                    static_cast<void>(
                        quietly([&] { return view->applyProperties(static_cast<uint32_t>(roll(8))); }));
                    break;
                default:
                    static_cast<void>(
                        quietly([&] { return view->lookAt(static_cast<float>(roll(3)) - 1, 0); }));
                    break;
            }
        }
        quietly([&] {
            view.reset();
            return true;
        });
        EXPECT_THAT(gl.live_textures, IsEmpty());
        EXPECT_THAT(gl.live_buffers, IsEmpty());
        EXPECT_THAT(gl.live_framebuffers, IsEmpty());
        EXPECT_THAT(gl.live_renderbuffers, IsEmpty());
        EXPECT_THAT(gl.live_programs, IsEmpty());
        EXPECT_THAT(gl.live_shaders, IsEmpty());
    }
}

TEST_F(Soak, FrameAfterAnyPropertyTextDoesNotCrash) {
    create(32, 24);
    ASSERT_TRUE(setPhoto(32, 1));
    const std::vector<std::string> texts = {"",
                                            "0",
                                            "-1",
                                            "1",
                                            "nan",
                                            "-nan",
                                            "inf",
                                            "-inf",
                                            "1e39",
                                            "-1e39",
                                            "1e300",
                                            "1e-300",
                                            "2147483647",
                                            "-2147483648",
                                            "99999999999999999999",
                                            "abc",
                                            "12abc",
                                            " 7",
                                            "0x10",
                                            "3.9",
                                            "--5",
                                            "%s%n%d",
                                            std::string(91, '9'),
                                            std::string(91, 'x'),
                                            "1,5",
                                            "\xff\xfe",
                                            "\n"};
    uint32_t dice = 99;
    for (int round = 0; round < 400; ++round) {
        std::string trace;
        for (int key = 1; key <= 14; ++key) {
            dice = dice * 1664525u + 1013904223u;
            const std::string& text = texts[(dice >> 16) % texts.size()];
            properties.set("quorvane.para" + std::to_string(key), text);
            trace += "[" + text + "] ";
        }
        SCOPED_TRACE(trace);
        ASSERT_TRUE(quietly([&] { return view->applyProperties(static_cast<uint32_t>(round % 8)); }).ok());
        ASSERT_TRUE(setDepth(32, 3));
        ASSERT_TRUE(quietly([&] { return view->lookAt(0.5f, -0.5f); }).ok());
        ASSERT_TRUE(quietly([&] { return view->render(); }).ok());
    }
    // And with the texts gone the picture is there again.
    properties.clear();
    ASSERT_TRUE(quietly([&] { return view->applyProperties(0); }).ok());
    ASSERT_TRUE(setDepth(32, 3));
    ASSERT_TRUE(quietly([&] { return view->lookAt(0, 0); }).ok());
    ASSERT_TRUE(quietly([&] { return view->render(); }).ok());
    Bytes pixels(32 * 24 * 4);
    ASSERT_TRUE(view->readPixels({pixels, view->width(), view->height()}).ok());
    EXPECT_GT(*std::max_element(pixels.begin(), pixels.end() - 1), 100);
}

}  // namespace
}  // namespace quorvane::test
