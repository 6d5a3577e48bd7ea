#include "media/depth/preprocessor_config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "system/error.h"

namespace quorvane::media {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(PreprocessorConfig, SaysNothingWhereThereIsNone) {
    const PreprocessorConfig config = readPreprocessorConfig("", "", "");
    EXPECT_FALSE(config.normalisation);
    EXPECT_FALSE(config.size);
    EXPECT_FALSE(config.multiple);
    EXPECT_FALSE(config.metric);
    EXPECT_TRUE(config.keep_aspect);
}

TEST(PreprocessorConfig, IsReadAsHubsWriteIt) {
    const PreprocessorConfig config = readPreprocessorConfig(
        R"({"do_normalize": true, "do_rescale": true, "ensure_multiple_of": 14, "image_mean": [0.5, 0.25, 0],
            "image_std": [1, 2, 3], "keep_aspect_ratio": true, "rescale_factor": 0.5,
            "size": {"height": 518, "width": 700}})",
        R"({"depth_estimation_type": "metric"})", "");
    EXPECT_EQ(config.normalisation->scale, 0.5);
    EXPECT_THAT(config.normalisation->mean, ElementsAre(0.5, 0.25, 0.0));
    EXPECT_THAT(config.normalisation->deviation, ElementsAre(1.0, 2.0, 3.0));
    EXPECT_EQ(*config.size, (Size{700, 518}));
    EXPECT_TRUE(config.keep_aspect);
    EXPECT_EQ(config.multiple, 14);
    EXPECT_EQ(config.metric, true);
}

TEST(PreprocessorConfig, WhatIsNotWantedIsLeftOut) {
    const PreprocessorConfig bare = readPreprocessorConfig(
        R"({"do_normalize": false, "do_rescale": false, "do_resize": false, "size": 100})", "", "");
    EXPECT_EQ(bare.normalisation->scale, 1.0);
    EXPECT_THAT(bare.normalisation->mean, ElementsAre(0.0, 0.0, 0.0));
    EXPECT_THAT(bare.normalisation->deviation, ElementsAre(1.0, 1.0, 1.0));
    EXPECT_FALSE(bare.size);
    // Without a word on it, the sizes are what the photo is stretched to.
    EXPECT_FALSE(readPreprocessorConfig(R"({"size": {"height": 9, "width": 8}})", "", "").keep_aspect);
    EXPECT_TRUE(readPreprocessorConfig(R"({"size": {"shortest_edge": 9}})", "", "").keep_aspect);
    EXPECT_EQ(readPreprocessorConfig("", R"({"model_type": "depth_pro"})", "").metric, true);
    EXPECT_EQ(readPreprocessorConfig("", R"({"depth_estimation_type": "relative"})", "").metric, false);
}

TEST(PreprocessorConfig, WhatCannotBeMeantIsOneLine) {
    for (const char* text : {"{", "[]", "4", R"({"image_std": [1, 0, 1]})", R"({"image_mean": [1, 2]})",
                             R"({"image_mean": "x"})", R"({"image_mean": [1, 2, 1e300]})",
                             R"({"rescale_factor": -1})", R"({"rescale_factor": "a"})",
                             R"({"size": {"height": 1e9, "width": 3}})", R"({"size": {"height": 4}})",
                             R"({"size": 0})", R"({"do_resize": 3})", R"({"ensure_multiple_of": []})"}) {
        try {
            readPreprocessorConfig(text, "", "folder/");
            FAIL() << text;
        } catch (const Error& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("folder/preprocessor_config.json: ")) << text;
        }
    }
    EXPECT_THROW(readPreprocessorConfig("", "x", ""), Error);
    EXPECT_THROW(readPreprocessorConfig(std::string(100000, '['), "", ""), Error);
}

}  // namespace
}  // namespace quorvane::media
