// A plan, made without a context, against the view that draws by it.

#include <quorvane/host/CleanDepth.h>
#include <quorvane/host/PicturePlan.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "composition/stretch.h"
#include "host_test.h"

namespace quorvane::test {
namespace {

using testing::HasSubstr;

constexpr int kPhotoSide = 96;
constexpr int kCells = 48;
const Bytes kPhoto = noise(size_t{3} * kPhotoSide * kPhotoSide, 5);

/// A near thing in the middle of a slope, of any size.
Bytes depthOf(int width, int height) {
    Bytes depth;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const bool near = std::abs(2 * x - width) < width / 3 && std::abs(2 * y - height) < height / 2;
            depth.push_back(static_cast<uint8_t>(near ? 220 : 100 * y / height + 20 * x / width));
        }
    return depth;
}

const Bytes kLarge = depthOf(4 * kCells, 4 * kCells);
const Bytes kSmall = depthOf(40, 30);

PictureRequest soft() {
    PictureRequest request;
    request.sizes = {kPhotoSide, kPhotoSide, kCells, kCells};
    request.photo = {kPhoto, kPhotoSide, kPhotoSide};
    request.depth = {kLarge, 4 * kCells, 4 * kCells};
    request.clean_edges = false;
    request.width = 120;
    request.height = 90;
    return request;
}

PictureRequest clean() {
    PictureRequest request = soft();
    request.photo = {};
    request.depth = {kSmall, 40, 30};
    request.clean_edges = true;
    return request;
}

PicturePlan planOf(const PictureRequest& request) {
    PicturePlan plan;
    EXPECT_EQ(sentence(planPicture(request, &plan)), "succeeded");
    return plan;
}

class PicturePlanTest : public DriverTest {
  protected:
    /// The view of that request, drawn by its plan.
    std::unique_ptr<ParallaxView> viewOf(const PictureRequest& request, const PicturePlan& plan) {
        const OutputToTimeline output;
        std::unique_ptr<ParallaxView> view;
        EXPECT_TRUE(
            ParallaxView::create(request.width, request.height, ViewOptions{request.orientation, 1}, &view)
                .ok());
        for (const auto& [name, value] : plan.parameters) EXPECT_TRUE(view->setParameter(name, value).ok());
        EXPECT_TRUE(view->setPhoto({kPhoto, kPhotoSide, kPhotoSide}).ok());
        EXPECT_EQ(sentence(view->setDepth({plan.depth, plan.depth_width, plan.depth_height})), "succeeded");
        return view;
    }
};

TEST_F(PicturePlanTest, IsWhatTheViewHasAndSuggests) {
    const std::vector<LookPosition> path = {{-1, 0.2f}, {0, 0}, {0.7f, -1}};
    for (const PictureRequest& base : {soft(), clean()})
        for (const uint32_t orientation : {4U, 0U})
            for (const bool has_path : {false, true})
                for (const Pivot pivot : {Pivot::kAuto, Pivot::kPoint, Pivot::kTuned})
                    for (const double turn : {12.0, 45.0}) {
                        PictureRequest request = base;
                        request.orientation = orientation;
                        request.pivot = pivot;
                        request.pivot_x = 0.3;
                        request.pivot_y = 0.8;
                        request.parameters = {{"rotate_x_boundary", turn}, {"depth_contrast", 26}};
                        if (has_path) request.path = path;
                        const PicturePlan plan = planOf(request);
                        const std::unique_ptr<ParallaxView> view = viewOf(request, plan);

                        const auto* shaped = reinterpret_cast<const uint8_t*>(view->renderer().m_pDepthData);
                        EXPECT_TRUE(plan.shaped == Bytes(shaped, shaped + kCells * kCells));
                        double z = orientation == 4 ? 40.0 : 50.0;
                        if (pivot == Pivot::kAuto) {
                            EXPECT_TRUE(view->suggestPivot(&z).ok());
                        }
                        if (pivot == Pivot::kPoint) {
                            EXPECT_TRUE(view->suggestPivot(0.3, 0.8, &z).ok());
                        }
                        // The rim of clean edges is eased after the pivot is known.
                        EXPECT_NEAR(plan.rotate_z_trans, z, request.clean_edges ? 0.01 : 1e-5);
                        EXPECT_FLOAT_EQ(view->geometry().pivot_distance,
                                        static_cast<float>(plan.rotate_z_trans));
                        SuggestedFrame frame;
                        EXPECT_TRUE(
                            (has_path ? view->suggestFrame(path, &frame) : view->suggestFrame(&frame)).ok());
                        double fov_scale = 0.0;
                        EXPECT_TRUE(view->parameter("fov_scale", &fov_scale).ok());
                        EXPECT_FLOAT_EQ(static_cast<float>(fov_scale), static_cast<float>(frame.fov_scale));
                        EXPECT_EQ(plan.swing, frame.swing);
                        EXPECT_EQ(plan.fov_scale, fov_scale);
                    }
}

TEST_F(PicturePlanTest, CleanEdgesAreThoseOfCleanDepth) {
    CleanDepth expected;
    ASSERT_TRUE(cleanDepth({kSmall, 40, 30}, kPhotoSide, kPhotoSide, 2 * kCells * kCells, &expected).ok());
    ASSERT_EQ(expected.width, 4 * kCells);
    PictureRequest swaying = clean();
    swaying.path = {{-1, 0}, {1, 0}};
    const PicturePlan plan = planOf(swaying);
    EXPECT_FALSE(plan.depth == expected.samples) << "the rim is eased";
    for (int y = 0; y < expected.height; ++y)
        for (int x = 0; x < expected.width; ++x) {
            const bool in_rim = std::min({x, y, expected.width - 1 - x, expected.height - 1 - y}) < 16;
            const auto i =
                static_cast<size_t>(y) * static_cast<size_t>(expected.width) + static_cast<size_t>(x);
            if (in_rim) continue;
            ASSERT_EQ(plan.depth[i], expected.samples[i]) << x << ", " << y;
        }
}

TEST_F(PicturePlanTest, WhatIsChosenIsKept) {
    PictureRequest request = clean();
    request.parameters = {{"fov_scale", 0.7}, {"rotate_z_trans", 33}};
    PicturePlan plan = planOf(request);
    EXPECT_FLOAT_EQ(static_cast<float>(plan.fov_scale), 0.7f);
    EXPECT_EQ(plan.rotate_z_trans, 33.0);
    EXPECT_EQ(plan.swing, 1.0);
    // The filter's radius is still nought.
    EXPECT_EQ(plan.parameters.size(), 4u);

    request.parameters = {};
    request.frame = 0.6;
    EXPECT_FLOAT_EQ(static_cast<float>(planOf(request).fov_scale), 0.6f);

    properties.set("quorvane.para1", "35");
    properties.set("quorvane.para12", "0.65");
    plan = planOf(clean());
    EXPECT_FLOAT_EQ(static_cast<float>(plan.fov_scale), 0.65f);
    EXPECT_EQ(plan.rotate_z_trans, 35.0);
    // Left to the view, which reads the properties itself.
    EXPECT_EQ(plan.parameters.size(), 2u);
}

TEST_F(PicturePlanTest, ReadsThePhotoWhereTheFilterIsOn) {
    EXPECT_TRUE(planReadsPhoto(soft()));
    EXPECT_FALSE(planReadsPhoto(clean()));
    PictureRequest filtered = clean();
    filtered.parameters = {{"guided_filter_rx", 1}};
    EXPECT_TRUE(planReadsPhoto(filtered));
    PicturePlan plan;
    EXPECT_THAT(sentence(planPicture(filtered, &plan)), HasSubstr("96 x 96 pixels are needed"));
    PictureRequest unfiltered = soft();
    unfiltered.photo = {};
    unfiltered.parameters = {{"guided_filter_rx", 0}, {"guided_filter_ry", 0}};
    EXPECT_FALSE(planReadsPhoto(unfiltered));
    EXPECT_FALSE(planOf(unfiltered).shaped.empty());
}

TEST_F(PicturePlanTest, RefusesWhatNoViewTakes) {
    const auto refused = [](const PictureRequest& request, const char* said) {
        PicturePlan plan;
        plan.swing = 5.0;
        EXPECT_THAT(sentence(planPicture(request, &plan)), HasSubstr(said));
        EXPECT_EQ(plan.swing, 5.0);
    };
    PictureRequest request = clean();
    request.sizes.grid_width = 40;
    refused(request, "96 x 96 photo is not 1, 2, 4");
    request = clean();
    request.sizes.grid_height = 0;
    refused(request, "grid: 48 x 0");
    request = clean();
    request.width = 0;
    refused(request, "picture: 0 x 90");
    request = clean();
    request.depth.bytes = 100;
    refused(request, "depth map");
    request = soft();
    request.depth = {kSmall, 40, 30};
    refused(request, "a grid of 48 x 48 cells takes 192 x 192");
    request = clean();
    request.frame = 0.0;
    refused(request, "fov_scale: 0 is not a number from 0.05 to 1");
    request = clean();
    request.parameters = {{"zoom", 1}};
    refused(request, "unknown parameter 'zoom'");
    request = clean();
    request.pivot = Pivot::kPoint;
    request.pivot_y = 1.5;
    refused(request, "both go from 0 to 1");
    request = clean();
    request.path = {{NAN, 0.0f}};
    refused(request, "not a finite number");
}

/// What the view bends and draws, at the places that it stood at.
Stretch stretchOf(ParallaxView* view, double swing, const std::vector<LookPosition>& places) {
    const ESRenderer& renderer = view->renderer();
    const LibParam& params = renderer.params;
    std::vector<ViewPosition> positions;
    for (const LookPosition& place : places) {
        EXPECT_TRUE(view->lookAt(static_cast<float>(swing * static_cast<double>(place.x)),
                                 static_cast<float>(swing * static_cast<double>(place.y)))
                        .ok());
        positions.push_back({static_cast<double>(renderer.m_transX), static_cast<double>(renderer.m_transY)});
    }
    Camera camera;
    camera.pivot_distance = static_cast<double>(params.rotate_z_trans);
    camera.x_turn_deg = static_cast<double>(params.rotate_x_boundary * params.trans_to_rotate_scale);
    camera.y_turn_deg = static_cast<double>(params.rotate_y_boundary * params.trans_to_rotate_scale);
    return quorvane::stretchOf(
        {{renderer.m_vtxW, renderer.m_vtxH, reinterpret_cast<const uint8_t*>(renderer.m_pDepthData)},
         static_cast<double>(renderer.m_OBJ_CORD_X),
         static_cast<double>(renderer.m_OBJ_CORD_Y)},
        camera, static_cast<double>(params.fov_scale), positions);
}

TEST_F(PicturePlanTest, StretchIsThatOfTheOutermostPictures) {
    const std::vector<LookPosition> sway = {{-0.5f, 0}, {-1, 0}, {0, 0}, {0.2f, 0}, {0.9f, 0}};
    const std::vector<LookPosition> ends = {{-1, 0}, {0.9f, 0}};
    const std::vector<LookPosition> square = {{-1, -1}, {-1, 0}, {-1, 1}, {0, -1},
                                              {0, 1},   {1, -1}, {1, 0},  {1, 1}};
    for (const double gain : {0.6, 1.9})
        for (const bool free : {false, true}) {
            PictureRequest request = clean();
            request.parameters = {{"rotate_x_boundary", 30.0}, {"trans_to_rotate_scale", gain}};
            if (!free) request.path = sway;
            const PicturePlan plan = planOf(request);
            EXPECT_EQ(plan.swing<1.0, gain> 1.0);
            const std::unique_ptr<ParallaxView> view = viewOf(request, plan);
            const Stretch expected = stretchOf(view.get(), plan.swing, free ? square : ends);
            PictureStretch stretch;
            EXPECT_EQ(sentence(measureStretch(request, plan, &stretch)), "succeeded");
            ASSERT_EQ(stretch.times.size(), expected.times.size());
            for (size_t i = 0; i < stretch.times.size(); ++i)
                ASSERT_NEAR(stretch.times[i], expected.times[i], 1e-4) << "cell " << i;
            EXPECT_EQ(stretch.seen, expected.seen);
            EXPECT_NEAR(stretch.streaked_part, expected.streaked_part, 1e-5);
            EXPECT_NEAR(stretch.worst_times, expected.worst_times, 1e-4);
            EXPECT_GT(stretch.worst_times, 1.2);
        }
}

TEST_F(PicturePlanTest, StretchOfAnotherPlanIsRefused) {
    const PicturePlan plan = planOf(clean());
    PictureRequest other = clean();
    other.sizes.grid_width = other.sizes.grid_height = kCells / 2;
    PictureStretch stretch;
    EXPECT_THAT(sentence(measureStretch(other, plan, &stretch)), HasSubstr("not one of this request"));
    EXPECT_THAT(sentence(measureStretch(clean(), {}, &stretch)), HasSubstr("not one of this request"));
    EXPECT_TRUE(stretch.times.empty());
}

}  // namespace
}  // namespace quorvane::test
