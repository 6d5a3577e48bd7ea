// From files to planes, as the window has it done.

#include "apps/tuner/core/preparing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "apps/tuner/core/workbench.h"
#include "media/scene/sample_scene.h"
#include "support/temporary_folder.h"
#include "system/error.h"

namespace quorvane::tuner {
namespace {

class Preparation : public testing::Test {
  protected:
    Preparation() {
        const media::SampleScene scene = media::makeSampleScene(160, 120);
        media::writePng(scene.photo, folder / "photo.png");
        media::writePng(scene.depth, folder / "map.png");
        request.input.photo = folder / "photo.png";
        request.input.depth = folder / "map.png";
        request.room = {200, 100};
        request.path = Workbench().path({});
        request.largest_texture = 4096;
    }

    const test::TemporaryFolder folder;
    PrepareRequest request;
    Preparing preparing;
    std::vector<std::string> steps;
    const Preparing::Step step = [this](const char* what) { steps.emplace_back(what); };
};

TEST_F(Preparation, EndsAtPlanes) {
    const Prepared prepared = preparing.prepare(request, step);
    EXPECT_EQ(prepared.size, (Size{133, 100})) << "of the photo's aspect, in the room";
    EXPECT_EQ(prepared.photo_size, (Size{160, 120}));
    EXPECT_FALSE(prepared.planned.photo.samples.empty());
    EXPECT_FALSE(prepared.planned.plan.depth.empty());
    EXPECT_FALSE(prepared.stretch);
    request.wants_stretch = true;
    EXPECT_GE(preparing.prepare(request, step).stretch->worst_times, 1.0);
}

TEST_F(Preparation, DecodesOnceForManyPlans) {
    preparing.prepare(request, step);
    const auto decodings = [this] {
        return std::count(steps.begin(), steps.end(), "decoding photo and depth");
    };
    EXPECT_EQ(decodings(), 1);
    request.tuning.parameters["depth_contrast"] = 12.0;
    preparing.prepare(request, step);
    EXPECT_EQ(decodings(), 1);
    request.tuning.invert_depth = true;
    const Prepared inverted = preparing.prepare(request, step);
    EXPECT_EQ(decodings(), 2);
    EXPECT_TRUE(inverted.inverted);
    request.tuning.invert_depth.reset();
    preparing.prepare(request, step);
    EXPECT_EQ(decodings(), 2) << "both of two that are compared are kept";
}

TEST_F(Preparation, WhatIsDroppedFindsItsPlace) {
    const auto with = [this](const std::vector<std::string>& files) {
        return withDropped(request.input, files);
    };
    EXPECT_EQ(with({folder / "map.png"}).depth, folder / "map.png");
    EXPECT_EQ(with({folder / "map.png"}).photo, folder / "photo.png") << "a gray picture is a map";
    const media::SampleScene scene = media::makeSampleScene(80, 60);
    media::writePng(scene.photo, folder / "other.png");
    media::writePng(scene.photo, folder / "other_depth.png");
    EXPECT_EQ(with({folder / "other.png"}).photo, folder / "other.png");
    EXPECT_EQ(with({folder / "other.png"}).depth, "") << "of the new photo";
    for (const auto& files : {std::vector{folder / "other.png", folder / "map.png"},
                              std::vector{folder / "map.png", folder / "other.png"},
                              std::vector{folder / "other_depth.png", folder / "other.png"}}) {
        EXPECT_EQ(with(files).photo, folder / "other.png");
        EXPECT_NE(with(files).depth, "");
    }
    test::writeBytes(folder / "text.txt", "hello");
    EXPECT_THROW(with({folder / "text.txt"}), Error);
}

TEST_F(Preparation, RunsNextToTheOneThatDraws) {
    Latest<PrepareRequest, Prepared, 2> worker(
        [this](const PrepareRequest& asked, const Preparing::Step& at) {
            return preparing.prepare(asked, at);
        });
    double newest = 0.0;
    const auto take = [&] {
        for (size_t slot = 0; slot < 2; ++slot) {
            const auto outcome = worker.take(slot);
            if (!outcome) continue;
            EXPECT_EQ(outcome->failure, "");
            newest = std::max(newest, outcome->result.tuning.parameters.at("depth_contrast"));
        }
    };
    for (int i = 0; i < 12; ++i) {
        request.tuning.parameters["depth_contrast"] = 10.0 + i;
        worker.ask(static_cast<size_t>(i % 2), request, i % 5 == 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        take();
    }
    while (!worker.idle()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    take();
    EXPECT_EQ(newest, 21.0);
}

TEST_F(Preparation, AFailureNamesTheFile) {
    request.input.photo = folder / "none.jpg";
    EXPECT_THROW(
        {
            try {
                preparing.prepare(request, step);
            } catch (const Error& error) {
                EXPECT_THAT(error.what(), testing::HasSubstr("none.jpg"));
                throw;
            }
        },
        Error);
}

TEST(SizeFor, IsTheRoomsOrTheOneAskedFor) {
    Tuning tuning;
    EXPECT_EQ(sizeFor(tuning, {4000, 3000}, {800, 900}), (Size{800, 600}));
    EXPECT_EQ(sizeFor(tuning, {3000, 4000}, {800, 900}), (Size{675, 900}));
    EXPECT_EQ(sizeFor(tuning, {100, 100}, {0, 0}), (Size{1, 1}));
    tuning.longest = 320;
    EXPECT_EQ(sizeFor(tuning, {4000, 3000}, {800, 900}), (Size{320, 240}));
}

}  // namespace
}  // namespace quorvane::tuner
