#include "media/depth/onnx_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include "support/temporary_folder.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

OnnxFile networkOf(const std::string& name) {
    return lookIntoOnnx(test::bytesOf(std::string(NETWORKS) + "/" + name + ".onnx"), name);
}

// Protocol buffers by hand.

std::string varint(uint64_t value) {
    std::string bytes;
    for (; value > 127; value >>= 7) bytes += static_cast<char>(value | 128);
    return bytes + static_cast<char>(value);
}
std::string number(int field, uint64_t value) {
    return varint(static_cast<uint64_t>(field) << 3) + varint(value);
}
std::string range(int field, const std::string& bytes) {
    return varint(static_cast<uint64_t>(field) << 3 | 2) + varint(bytes.size()) + bytes;
}
std::string model(const std::string& graph, const std::string& more = "") {
    return number(1, 8) + range(7, graph) + more;
}
std::string node(const std::string& operation, const std::vector<std::string>& inputs,
                 const std::string& output, const std::string& attribute = "") {
    std::string bytes;
    for (const std::string& input : inputs) bytes += range(1, input);
    return range(
        1, bytes + range(2, output) + range(4, operation) + (attribute.empty() ? "" : range(5, attribute)));
}
std::string weightsIn(const std::string& path) {
    return range(5, range(8, "w") + range(13, range(1, "location") + range(2, path)));
}
const std::string kInput = range(11, range(1, "x"));

TEST(OnnxFile, FindsTheFirstKernelInTheNodeOrInItsWeights) {
    EXPECT_EQ(networkOf("depth_anything_v2").kernel_width, 14);
    EXPECT_EQ(networkOf("depth_anything_v2").kernel_height, 14);
    EXPECT_EQ(networkOf("midas_v21_small").kernel_width, 8);
    // This one has no kernel_shape.
    EXPECT_EQ(networkOf("hub/onnx/model").kernel_width, 16);
    EXPECT_EQ(networkOf("no_classifier").kernel_width, 0);
}

TEST(OnnxFile, TellsNormalisationInFrontOfTheFirstConvolution) {
    for (const char* name :
         {"depth_anything_v2", "depth_anything_v2_fp16", "depth_anything_3", "mobile_uint8"})
        EXPECT_FALSE(networkOf(name).calculates_first) << name;
    for (const char* name : {"midas_normalised_inside", "metric3d"})
        EXPECT_TRUE(networkOf(name).calculates_first) << name;
}

TEST(OnnxFile, ReadsPackedNumbersAsItReadsOthers) {
    const std::string kernel = range(1, "kernel_shape");
    const std::string apart = kernel + number(8, 16) + number(8, 300);
    const std::string packed = kernel + range(8, varint(16) + varint(300));
    for (const std::string& attribute : {apart, packed}) {
        const OnnxFile file = lookIntoOnnx(model(kInput + node("Conv", {"x", "w"}, "y", attribute)), "a");
        EXPECT_EQ(file.kernel_height, 16);
        EXPECT_EQ(file.kernel_width, 300);
    }
}

// A network of large weights may have a file for each of them.
TEST(OnnxFile, NamesEveryFileOfWeights) {
    std::string graph = kInput + weightsIn("last") + weightsIn("last");
    for (int i = 0; i < 1000; ++i) graph += weightsIn("w" + std::to_string(i));
    const OnnxFile file = lookIntoOnnx(model(graph), "a");
    EXPECT_EQ(file.data_files.size(), 1001u);
    EXPECT_EQ(file.data_files.back(), "w999");
}

TEST(OnnxFile, RefusesWhatCouldHideAFileOfWeights) {
    const auto refused = [](const std::string& bytes) {
        EXPECT_THROW(lookIntoOnnx(bytes, "a"), Error) << bytes.substr(0, 60);
    };
    std::string far;
    for (int i = 0; i < 300; ++i) far += "./";
    refused(model(kInput + weightsIn(far + "../secret")));
    refused(model(kInput + weightsIn("../secret"), range(7, kInput)));
    std::string many = kInput;
    for (int i = 0; i < 5000; ++i) many += weightsIn(std::to_string(i));
    refused(model(many));
}

// Sizes are calculated from the input too, and weights from each other.
TEST(OnnxFile, OnlyWhatBecomesOfThePixelsCounts) {
    const std::string kernel = range(1, "kernel_shape") + number(8, 3) + number(8, 3);
    EXPECT_FALSE(lookIntoOnnx(model(node("Shape", {"x"}, "s") + node("Mul", {"s", "two"}, "t") +
                                    node("Resize", {"x", "t"}, "r") + node("Mul", {"v", "v"}, "w") +
                                    node("Conv", {"r", "w"}, "y", kernel) + kInput),
                              "a")
                     .calculates_first);
    EXPECT_TRUE(lookIntoOnnx(model(node("Sub", {"mean", "x"}, "s") + node("Cast", {"s"}, "t") +
                                   node("Conv", {"t", "w"}, "y", kernel) + kInput),
                             "a")
                    .calculates_first);
}

TEST(OnnxFile, ReadsNotesAndTheNamesOfWeightFiles) {
    EXPECT_THAT(networkOf("depth_pro").data_files, ElementsAre("depth_pro.onnx_data"));
    EXPECT_THAT(networkOf("depth_anything_v2").data_files, IsEmpty());
    EXPECT_THAT(lookIntoOnnx(model("", range(14, range(1, "kind") + range(2, "metric"))), "a").metadata,
                ElementsAre(Pair("kind", "metric")));
}

TEST(OnnxFile, EveryShortenedFileIsRefusedOrRead) {
    const std::string whole = test::bytesOf(NETWORKS "/midas_v21_small.onnx");
    for (size_t size = 0; size < whole.size(); ++size) try {
            lookIntoOnnx(whole.substr(0, size), "a");
        } catch (const Error& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("a: "));
        }
}

TEST(OnnxFile, LengthsBeyondTheFileAreRefused) {
    for (const std::string& bytes :
         {varint(7 << 3 | 2) + varint(uint64_t{1} << 62) + "graph",
          number(1, 8) + range(7, varint(1 << 3 | 2) + varint(1000)), number(1, 8) + std::string(1, '\x3b'),
          std::string(11, '\xff'), number(1, 8) + varint(2) + varint(0)})
        EXPECT_THROW(lookIntoOnnx(bytes, "a"), Error);
}

// A file of as many fields as there can be, each of a byte or two, is given up early.
TEST(OnnxFile, TakesASecondAtMost) {
    std::string fields;
    for (int i = 0; i < 3'000'000; ++i) fields += number(1, 1);
    const std::clock_t start = std::clock();
    EXPECT_THROW(lookIntoOnnx(model(fields), "a"), Error);
    EXPECT_THROW(lookIntoOnnx(fields, "a"), Error);
    EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);
}

TEST(OnnxFile, WhatCannotBeReadIsTold) {
    const RandomBytes broken = {100, [](uint64_t, size_t, char*) { return false; }};
    try {
        lookIntoOnnx(broken, "a");
        FAIL();
    } catch (const Error& error) {
        EXPECT_THAT(error.what(), HasSubstr("a: cannot be read"));
    }
}

}  // namespace
}  // namespace quorvane::media
