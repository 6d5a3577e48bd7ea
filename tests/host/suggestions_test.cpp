// What ParallaxView suggests, judged by the pictures that the driver draws.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>

#include "host_test.h"

namespace quorvane::test {
namespace {

using testing::HasSubstr;

struct PictureSize {
    int width, height;
};

constexpr PictureSize kAspects[] = {{60, 180}, {96, 128}, {110, 110}, {160, 90}, {180, 60}};
constexpr uint32_t kFirstSet = 4, kSecondSet = 0;

class SuggestionsTest : public DriverTest {
  protected:
    template <typename Action>
    static auto quietly(Action action) {
        const OutputToTimeline output;
        return action();
    }

    void create(PictureSize size, uint32_t orientation) {
        ASSERT_EQ(
            sentence(quietly([&] {
                return ParallaxView::create(size.width, size.height, ViewOptions{orientation, 1}, &view);
            })),
            "succeeded");
    }

    /// `photo` has as many pixels as the depth map has cells, or twice as many on each axis.
    void setImages(const Bytes& photo, int photo_side, const Bytes& depth, int depth_side) {
        ASSERT_TRUE(quietly([&] { return view->setPhoto({photo, photo_side, photo_side}); }).ok());
        ASSERT_TRUE(quietly([&] { return view->setDepth({depth, depth_side, depth_side}); }).ok());
    }

    Bytes pictureFrom(double x, double y) {
        EXPECT_TRUE(quietly([&] { return view->lookAt(static_cast<float>(x), static_cast<float>(y)); }).ok());
        EXPECT_TRUE(quietly([&] { return view->render(); }).ok());
        Bytes pixels(4 * static_cast<size_t>(view->width()) * static_cast<size_t>(view->height()));
        EXPECT_TRUE(view->readPixels({pixels, view->width(), view->height()}).ok());
        return pixels;
    }

    /// Of a white photo.
    int borderPixelsFrom(double x, double y) {
        const Bytes pixels = pictureFrom(x, y);
        int count = 0;
        for (size_t i = 0; i < pixels.size(); i += 4) count += pixels[i] < 255 ? 1 : 0;
        return count;
    }

    SuggestedFrame suggested(const std::vector<LookPosition>& path) {
        SuggestedFrame frame;
        EXPECT_EQ(sentence(view->suggestFrame(path, &frame)), "succeeded");
        EXPECT_TRUE(view->setParameter("fov_scale", frame.fov_scale).ok());
        return frame;
    }

    SuggestedFrame suggestedForAll() {
        SuggestedFrame frame;
        EXPECT_EQ(sentence(view->suggestFrame(&frame)), "succeeded");
        EXPECT_TRUE(view->setParameter("fov_scale", frame.fov_scale).ok());
        return frame;
    }

    std::unique_ptr<ParallaxView> view;
};

// Frame

constexpr int kCells = 24;
constexpr int kDepth = 4 * kCells;
const Bytes kWhite(size_t{3} * kCells * kCells, 255);

std::vector<Bytes> depthMaps() {
    const Bytes random = noise(kDepth * kDepth, 3);
    const auto fromRim = [](int x, int y) { return std::min({x, y, kDepth - 1 - x, kDepth - 1 - y}); };
    const std::function<int(int, int)> kinds[] = {
        [](int, int) { return 0; }, [](int, int) { return 255; },
        [&](int x, int y) { return fromRim(x, y) < 12 ? 255 : 0; },
        [&](int x, int y) { return fromRim(x, y) < 12 ? 0 : 255; },
        [](int, int y) { return 255 * y / kDepth; }, [](int x, int) { return 255 - 255 * x / kDepth; },
        [&](int x, int y) { return random[static_cast<size_t>(y * kDepth + x)]; },
        // Whole cells, so that the reduction leaves the extremes.
        [&](int x, int y) { return random[static_cast<size_t>(y / 8 * kDepth + x / 8)] < 128 ? 0 : 255; }};
    std::vector<Bytes> maps;
    for (const auto& kind : kinds) {
        Bytes map;
        for (int y = 0; y < kDepth; ++y)
            for (int x = 0; x < kDepth; ++x) map.push_back(static_cast<uint8_t>(kind(x, y)));
        maps.push_back(map);
    }
    return maps;
}

TEST_F(SuggestionsTest, NoBorderShowsFromAnywhere) {
    const std::vector<Bytes> maps = depthMaps();
    for (const PictureSize size : kAspects)
        for (const uint32_t set : {kFirstSet, kSecondSet}) {
            create(size, set);
            for (size_t i = 0; i < maps.size(); ++i) {
                SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height) + ", set " +
                             std::to_string(set) + ", map " + std::to_string(i));
                setImages(kWhite, kCells, maps[i], kDepth);
                const SuggestedFrame frame = suggestedForAll();
                EXPECT_GE(frame.fov_scale, 0.5);
                EXPECT_LE(frame.fov_scale, 1.0);
                for (const double y : {-1.0, -0.4, 0.0, 1.0})
                    for (const double x : {-1.0, 0.0, 0.7, 1.0})
                        EXPECT_EQ(borderPixelsFrom(x * frame.swing, y * frame.swing), 0) << x << ", " << y;
            }
        }
}

TEST_F(SuggestionsTest, NoBorderShowsOnAPath) {
    const std::vector<Bytes> maps = depthMaps();
    const std::vector<LookPosition> path = {{-1, 0}, {-0.8f, 0.1f}, {0, 0.15f}, {0.8f, 0.1f}, {1, 0}};
    for (const PictureSize size : kAspects)
        for (const uint32_t set : {kFirstSet, kSecondSet}) {
            create(size, set);
            for (size_t i = 0; i < maps.size(); ++i) {
                SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height) + ", set " +
                             std::to_string(set) + ", map " + std::to_string(i));
                setImages(kWhite, kCells, maps[i], kDepth);
                const double everywhere = suggestedForAll().fov_scale;
                const SuggestedFrame frame = suggested(path);
                EXPECT_GE(frame.fov_scale, everywhere) << "a path needs no more than the square around it";
                for (const LookPosition& at : path)
                    EXPECT_EQ(borderPixelsFrom(static_cast<double>(at.x) * frame.swing,
                                               static_cast<double>(at.y) * frame.swing),
                              0)
                        << at.x << ", " << at.y;
            }
        }
}

TEST_F(SuggestionsTest, NoBorderShowsOnAPathThatZooms) {
    const std::vector<Bytes> maps = depthMaps();
    const std::vector<std::vector<LookPosition>> paths = {
        {{0, 0, 1.0}, {0, 0, 1.5}},                // closer on the spot
        {{0, 0, 1.0}, {0, 0, 0.6}},                // farther
        {{-1, 0, 0.8}, {0, 0, 1.2}, {1, 0, 0.8}},  // farther where it is seen from aside
        {{-1, 0.3f, 2.0}, {0, 0, 1.0}, {1, -1, 4.0}, {0, 1, 0.5}}};
    for (const PictureSize size : {kAspects[0], kAspects[3]}) {
        create(size, kFirstSet);
        for (size_t i = 0; i < maps.size(); ++i) {
            setImages(kWhite, kCells, maps[i], kDepth);
            for (size_t p = 0; p < paths.size(); ++p) {
                SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height) + ", map " +
                             std::to_string(i) + ", path " + std::to_string(p));
                const SuggestedFrame frame = suggested(paths[p]);
                for (const LookPosition& at : paths[p]) {
                    ASSERT_TRUE(view->setParameter("fov_scale", frame.fov_scale / at.zoom).ok());
                    EXPECT_EQ(borderPixelsFrom(static_cast<double>(at.x) * frame.swing,
                                               static_cast<double>(at.y) * frame.swing),
                              0)
                        << at.x << ", " << at.y << ", " << at.zoom;
                }
            }
        }
    }
}

TEST_F(SuggestionsTest, ZoomingOutShowsTheWholePhotoWhereItShowsMost) {
    create({160, 120}, kFirstSet);
    setImages(kWhite, kCells, Bytes(kDepth * kDepth, 200), kDepth);
    EXPECT_NEAR(suggested({{0, 0, 1.0}, {0, 0, 0.8}}).fov_scale, 0.8, 0.001);
    EXPECT_NEAR(suggested({{0, 0, 1.0}, {0, 0, 3.0}}).fov_scale, 1.0, 0.001) << "closer is shown closer";
    EXPECT_NEAR(suggested({{0, 0, 2.0}}).fov_scale, 1.0, 0.001) << "closer all the time is shown closer, too";
    EXPECT_NEAR(suggested({{0, 0, 0.8}, {1, 1, 1.6}}).fov_scale, 0.8, 0.001)
        << "what is closer needs no room";
    EXPECT_EQ(suggested({{0, 0, 0.5}}).swing, 1.0) << "what zooms out swings as far as it would";
}

TEST_F(SuggestionsTest, RefusesZoomsOutOfRange) {
    create({160, 120}, kFirstSet);
    setImages(kWhite, kCells, Bytes(kDepth * kDepth, 200), kDepth);
    SuggestedFrame frame;
    for (const double zoom : {0.49, 4.01, 0.0, -1.0, std::nan("")})
        EXPECT_THAT(sentence(view->suggestFrame({{0, 0, zoom}}, &frame)), HasSubstr("0.5 to 4 is wanted"));
}

TEST_F(SuggestionsTest, FrameIsNoSmallerThanItMustBe) {
    create({160, 120}, kFirstSet);
    setImages(kWhite, kCells, Bytes(kDepth * kDepth, 40), kDepth);
    const double part = suggested({{1, 1}}).fov_scale;
    ASSERT_LT(part, 0.97);
    EXPECT_EQ(borderPixelsFrom(1, 1), 0);
    // A pixel and a half on either side.
    ASSERT_TRUE(view->setParameter("fov_scale", part * (1 + 3.0 / 120)).ok());
    EXPECT_GT(borderPixelsFrom(1, 1), 0);
}

TEST_F(SuggestionsTest, RestAloneShowsTheWholePhoto) {
    create({160, 120}, kFirstSet);
    setImages(kWhite, kCells, Bytes(kDepth * kDepth, 200), kDepth);
    EXPECT_NEAR(suggested({{0, 0}}).fov_scale, 1.0, 0.001);
    EXPECT_NEAR(suggested({}).fov_scale, 1.0, 0.001);
}

TEST_F(SuggestionsTest, SwingIsReducedWhereTheFrameWouldBeTooSmall) {
    create({160, 120}, kFirstSet);
    for (const double deadzone : {64.0, 3.0}) {
        ASSERT_TRUE(view->setParameter("border_deadzone", deadzone).ok());
        ASSERT_TRUE(view->setParameter("rotate_x_boundary", 45).ok());
        ASSERT_TRUE(view->setParameter("rotate_y_boundary", 45).ok());
        ASSERT_TRUE(view->setParameter("trans_to_rotate_scale", 2).ok());
        setImages(kWhite, kCells, depthMaps()[4], kDepth);
        const std::vector<LookPosition> path = {{-1, 0.5f}, {1, 0.5f}, {0.5f, -1}};
        const SuggestedFrame on_path = suggested(path);
        EXPECT_LT(on_path.swing, 1.0);
        EXPECT_GE(on_path.fov_scale, 0.5);
        for (const LookPosition& at : path)
            EXPECT_EQ(borderPixelsFrom(static_cast<double>(at.x) * on_path.swing,
                                       static_cast<double>(at.y) * on_path.swing),
                      0);
        const SuggestedFrame everywhere = suggestedForAll();
        EXPECT_LT(everywhere.swing, 1.0);
        EXPECT_GT(everywhere.swing, 0.05);
        for (const double y : {-1.0, 0.0, 1.0})
            for (const double x : {-1.0, 1.0})
                EXPECT_EQ(borderPixelsFrom(x * everywhere.swing, y * everywhere.swing), 0);
    }
}

// The dead zone of so small a picture holds even the rest position aside.
TEST_F(SuggestionsTest, SmallestPicturesHaveAFrameToo) {
    for (const PictureSize size : {PictureSize{2, 2}, PictureSize{1, 1}, PictureSize{3, 1}}) {
        create(size, kFirstSet);
        setImages(kWhite, kCells, Bytes(kDepth * kDepth, 128), kDepth);
        EXPECT_GE(suggestedForAll().fov_scale, 0.5);
        EXPECT_GE(suggested({{1, -1}}).fov_scale, 0.5);
        // One row gives the mesh no size, and nothing is drawn.
        if (size.height > 1) {
            EXPECT_EQ(borderPixelsFrom(1, 1), 0);
        }
    }
}

// Pivot

constexpr int kPhotoSide = 160;
constexpr int kDepthSide = 2 * kPhotoSide;
constexpr int kPictureSide = 240;

class PivotTest : public SuggestionsTest {
  protected:
    void SetUp() override {
        SuggestionsTest::SetUp();
        if (IsSkipped()) return;
        // Blocks of random grey: a head and shoulders before a wall, and the wall.
        const Bytes greys = noise(40 * 40, 9);
        for (int y = 0; y < kPhotoSide; ++y)
            for (int x = 0; x < kPhotoSide; ++x)
                photo.insert(photo.end(), 3, greys[static_cast<size_t>(y / 4 * 40 + x / 4)]);
        for (int y = 0; y < kDepthSide; ++y)
            for (int x = 0; x < kDepthSide; ++x) depth.push_back(isSubject(x, y) ? 190 : 40);
        create({kPictureSide, kPictureSide}, kFirstSet);
        ASSERT_TRUE(view->setParameter("fov_scale", 0.8).ok());
        setImages(photo, kPhotoSide, depth, kDepthSide);
    }

    static bool isSubject(int x, int y) {
        return std::abs(x - kDepthSide / 2) < kDepthSide / 6 && std::abs(y - kDepthSide / 2) < kDepthSide / 5;
    }

    /// By how many pixels what is around (x, y) from the left has moved in the view from the right.
    int moved(int x, int y) {
        const Bytes left = pictureFrom(-1, 0), right = pictureFrom(1, 0);
        constexpr int kReach = 12, kFarthest = 16;
        int best = 0;
        int64_t least = std::numeric_limits<int64_t>::max();
        for (int shift = -kFarthest; shift <= kFarthest; ++shift) {
            int64_t sum = 0;
            for (int j = y - kReach; j <= y + kReach; ++j)
                for (int i = x - kReach; i <= x + kReach; ++i) {
                    const auto at = [j](int column) {
                        return 4 * (static_cast<size_t>(j) * kPictureSide + static_cast<size_t>(column));
                    };
                    const int off = left[at(i)] - right[at(i + shift)];
                    sum += off * off;
                }
            if (sum >= least) continue;
            least = sum;
            best = shift;
        }
        return best;
    }
    int subjectMoved() { return std::abs(moved(kPictureSide / 2, kPictureSide / 2)); }
    int wallMoved() { return std::abs(moved(kPictureSide / 2, kPictureSide / 8)); }

    Bytes photo, depth;
};

TEST_F(PivotTest, SubjectStaysWhileTheWallMoves) {
    double pivot = 0.0;
    ASSERT_EQ(sentence(view->suggestPivot(&pivot)), "succeeded");
    ASSERT_TRUE(view->setParameter("rotate_z_trans", pivot).ok());
    EXPECT_LE(subjectMoved(), 1);
    EXPECT_GE(wallMoved(), 4);
}

TEST_F(PivotTest, PointOfThePhotoStays) {
    double wall = 0.0, subject = 0.0;
    ASSERT_TRUE(view->suggestPivot(0.5, 0.1, &wall).ok());
    ASSERT_TRUE(view->suggestPivot(0.5, 0.5, &subject).ok());
    ASSERT_TRUE(view->setParameter("rotate_z_trans", wall).ok());
    EXPECT_LE(wallMoved(), 1);
    EXPECT_GE(subjectMoved(), 4);
    ASSERT_TRUE(view->setParameter("rotate_z_trans", subject).ok());
    EXPECT_LE(subjectMoved(), 1);
    EXPECT_GE(wallMoved(), 4);
}

TEST_F(PivotTest, ShowsInTheNextFrame) {
    const Bytes before = pictureFrom(0.8, 0.3);
    ASSERT_TRUE(view->setParameter("rotate_z_trans", 33).ok());
    EXPECT_FLOAT_EQ(view->geometry().pivot_distance, 33.0f);
    const Bytes now = pictureFrom(0.8, 0.3);
    EXPECT_FALSE(now == before);
    // As it does when it is set before the depth map.
    setImages(photo, kPhotoSide, depth, kDepthSide);
    EXPECT_TRUE(pictureFrom(0.8, 0.3) == now);
    create({kPictureSide, kPictureSide}, kFirstSet);
    ASSERT_TRUE(view->setParameter("rotate_z_trans", 33).ok());
    ASSERT_TRUE(view->setParameter("fov_scale", 0.8).ok());
    setImages(photo, kPhotoSide, depth, kDepthSide);
    EXPECT_TRUE(pictureFrom(0.8, 0.3) == now);
}

TEST_F(PivotTest, ThatOfTheTunedSetShowsInTheNextFrameToo) {
    ASSERT_TRUE(view->applyProperties(kSecondSet).ok());
    EXPECT_FLOAT_EQ(view->geometry().pivot_distance, 50.0f);
}

TEST_F(PivotTest, RefusesWhatCannotBeAnswered) {
    double pivot = -1.0;
    SuggestedFrame frame;
    for (const auto& [x, y] : {std::pair(-0.1, 0.5), std::pair(0.5, 1.1)})
        EXPECT_THAT(sentence(view->suggestPivot(x, y, &pivot)), HasSubstr("both go from 0 to 1"));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THAT(sentence(view->suggestPivot(nan, 0.5, &pivot)), HasSubstr("both go from 0 to 1"));
    EXPECT_EQ(sentence(view->suggestFrame({{0, 0}, {std::numeric_limits<float>::infinity(), 0}}, &frame)),
              "view position: not a finite number");
    create({64, 64}, kFirstSet);
    for (const Status& status : {view->suggestPivot(&pivot), view->suggestPivot(0.5, 0.5, &pivot),
                                 view->suggestFrame(&frame), view->suggestFrame({{0, 0}}, &frame)})
        EXPECT_EQ(sentence(status), "nothing to suggest: no depth map is set for this photo");
    EXPECT_EQ(pivot, -1.0);
}

}  // namespace
}  // namespace quorvane::test
