// What the renderer computes on the CPU for seeded cases, as JSON on standard output: for the tests of the
// web element, which computes the same in JavaScript and WebAssembly. Floats are given by their bits, planes
// and meshes as hexadecimal bytes.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "depth/shape_depth.h"
#include "gl/program.h"
#include "host/look_at.h"
#include "kernels/guided_filter.h"
#include "kernels/paths.h"
#include "kernels/vertex_grid.h"
#include "quorvane/esRenderer.h"
#include "view/mesh_extents.h"
#include "view/motion.h"
#include "view/view_matrix.h"

namespace {

constexpr float kHalfHeight = 18.5F;
constexpr float kBaseline = 2.4F;

std::mt19937 g_random(20260215);  // NOLINT: the same cases on every run

double between(double low, double high) {
    // Thousandths, so that a decimal number says it exactly enough to become the same float everywhere.
    const double share = static_cast<double>(g_random()) / 4294967296.0;
    return static_cast<double>(static_cast<int>((low + share * (high - low)) * 1000.0)) / 1000.0;
}

int wholeBetween(int low, int high) {
    return low + static_cast<int>(g_random() % static_cast<unsigned>(high - low + 1));
}

std::string hex(const void* bytes, size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * size);
    for (size_t i = 0; i < size; ++i) {
        const auto byte = static_cast<const unsigned char*>(bytes)[i];
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

unsigned bits(float value) {
    unsigned out = 0;
    std::memcpy(&out, &value, sizeof out);
    return out;
}

void printView(bool last) {
    LibParam params;
    const struct {
        const char* name;
        float LibParam::*field;
        double low, high;
    } kFields[] = {{"rotate_z_trans", &LibParam::rotate_z_trans, 1, 100},
                   {"rotate_x_boundary", &LibParam::rotate_x_boundary, -45, 45},
                   {"rotate_y_boundary", &LibParam::rotate_y_boundary, -45, 45},
                   {"trans_to_rotate_scale", &LibParam::trans_to_rotate_scale, -2, 2},
                   {"far_offset_ext", &LibParam::far_offset_ext, 0, 1000},
                   {"fov_scale", &LibParam::fov_scale, 0.05, 1}};
    std::printf("{\"params\":{");
    for (const auto& field : kFields) {
        const double value = between(field.low, field.high);
        params.*field.field = static_cast<float>(value);
        std::printf("\"%s\":%.17g,", field.name, value);
    }
    params.border_deadzone = wholeBetween(3, 200);
    const int width = wholeBetween(1, 4000), height = wholeBetween(1, 4000);
    const double look[2] = {between(-1.2, 1.2), between(-1.2, 1.2)};

    const auto held = [&params](double position, int extent) {
        return quorvane::lookedFrom(static_cast<float>(position), static_cast<float>(extent), params);
    };
    quorvane::View view = {};
    view.x = held(look[0], width);
    view.y = held(look[1], height);
    view.x_boundary = params.rotate_x_boundary;
    view.y_boundary = params.rotate_y_boundary;
    view.gain = params.trans_to_rotate_scale;
    view.fov_scale = params.fov_scale;
    view.far_offset = params.far_offset_ext;
    view.pivot = params.rotate_z_trans;
    view.half_height = kHalfHeight;
    view.half_width =
        quorvane::meshExtents(static_cast<float>(width), static_cast<float>(height), kHalfHeight, kBaseline)
            .half_width;
    const RENDERMatrix matrix = quorvane::viewMatrix(view);
    std::printf(
        "\"border_deadzone\":%d},\"size\":[%d,%d],\"look\":[%.17g,%.17g],\"held\":[%u,%u],\"half_width\":%u,"
        "\"matrix\":\"%s\"}%s\n",
        params.border_deadzone, width, height, look[0], look[1], bits(view.x), bits(view.y),
        bits(view.half_width), hex(&matrix, sizeof matrix).c_str(), last ? "" : ",");
}

void printMesh(int columns, int rows, int width, int height, bool last) {
    const float half_width =
        quorvane::meshExtents(static_cast<float>(width), static_cast<float>(height), kHalfHeight, kBaseline)
            .half_width;
    std::vector<float> vertices(size_t{2} * quorvane::kVertexFloats * static_cast<size_t>(columns + 1) *
                                static_cast<size_t>(rows));
    std::vector<uint32_t> indices(size_t{6} * static_cast<size_t>(columns) * static_cast<size_t>(rows));
    quorvane::reference::createVertices({columns, rows, half_width, kHalfHeight}, vertices.data());
    quorvane::reference::createIndices(columns, rows, indices.data());
    std::printf("{\"columns\":%d,\"rows\":%d,\"half_width\":%u,\"vertices\":\"%s\",\"indices\":\"%s\"}%s\n",
                columns, rows, bits(half_width),
                hex(vertices.data(), vertices.size() * sizeof(float)).c_str(),
                hex(indices.data(), indices.size() * sizeof(uint32_t)).c_str(), last ? "" : ",");
}

/// A plane of soft shapes and noise.
std::vector<uint8_t> plane(int width, int height, int channels) {
    std::vector<uint8_t> out;
    const double fx = between(0.01, 0.2), fy = between(0.01, 0.2);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                const int shape = (static_cast<int>(x * fx) + static_cast<int>(y * fy) + c) % 5;
                out.push_back(static_cast<uint8_t>(shape * 50 + wholeBetween(0, 20)));
            }
    return out;
}

void printShaping(int columns, int rows, int ratio, bool last) {
    const int width = columns * ratio, height = rows * ratio;
    std::vector<uint8_t> photo = plane(width, height, 3);
    const std::vector<uint8_t> depth = plane(4 * columns, 4 * rows, 1);
    const std::string photo_hex = hex(photo.data(), photo.size());
    photo.resize(photo.size() + 27);
    const size_t cells = static_cast<size_t>(columns) * static_cast<size_t>(rows);
    std::vector<uint8_t> guide(cells), scratch(cells), shaped(cells);
    std::vector<unsigned char> buffer(static_cast<size_t>(quorvane::guidedFilterBufferSize(columns, rows)));

    quorvane::DepthShaping shaping = {};
    shaping.photo = photo.data();
    shaping.photo_width = width;
    shaping.photo_height = height;
    shaping.depth = depth.data();
    shaping.depth_width = 4 * columns;
    shaping.depth_height = 4 * rows;
    shaping.width = columns;
    shaping.height = rows;
    shaping.rx = wholeBetween(0, 4);
    shaping.ry = wholeBetween(0, 4);
    const double eps = between(0.001, 0.02), contrast = between(8, 40);
    shaping.eps = static_cast<float>(eps);
    shaping.contrast = static_cast<float>(contrast);
    shaping.guide = guide.data();
    shaping.scratch = scratch.data();
    shaping.filter_buffer = buffer.data();
    shaping.shaped = shaped.data();
    quorvane::shapeDepth(quorvane::paths()[0], shaping, [](quorvane::ShapingStep, bool) {});
    std::printf(
        "{\"columns\":%d,\"rows\":%d,\"ratio\":%d,\"params\":{\"guided_filter_rx\":%d,\"guided_filter_ry\":%"
        "d,"
        "\"guided_filter_eps\":%.17g,\"depth_contrast\":%.17g},\"photo\":\"%s\",\"depth\":\"%s\","
        "\"shaped\":\"%s\"}%s\n",
        columns, rows, ratio, shaping.rx, shaping.ry, eps, contrast, photo_hex.c_str(),
        hex(depth.data(), depth.size()).c_str(), hex(shaped.data(), cells).c_str(), last ? "" : ",");
}

}  // namespace

int main() {
    std::printf("{\"shaders\":[\"%s\",\"%s\"],\n", hex(gVertexShader, sizeof gVertexShader - 1).c_str(),
                hex(gFragmentShader, sizeof gFragmentShader - 1).c_str());
    std::printf("\"views\":[\n");
    constexpr int kViews = 2000;
    for (int i = 0; i < kViews; ++i) printView(i == kViews - 1);
    std::printf("],\"meshes\":[\n");
    printMesh(1, 1, 64, 64, false);
    printMesh(192, 256, 768, 1024, false);
    printMesh(252, 189, 2048, 1536, false);
    printMesh(300, 250, 801, 640, true);
    std::printf("],\"shapings\":[\n");
    for (const int ratio : {1, 2, 4, 8, 16})
        printShaping(wholeBetween(1, 40), wholeBetween(1, 40), ratio, false);
    printShaping(64, 48, 4, true);
    std::printf("]}\n");
}
