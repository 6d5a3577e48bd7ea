// What every stage makes of fixed inputs, for comparing processors: what this prints and draws on one should
// be what it prints and draws on another.
//   stage_digests stages          a line a stage: bytes, the reference's digest, the vector paths', name
//   stage_digests frames FILE     writes the pixels of a few frames, R, G, B, A; prints the renderer's timing
//   lines stage_digests compare A B     how far such files are apart; fails where it is more than drivers
//   differ by

#include <quorvane/host/OffscreenContext.h>
#include <quorvane/host/ParallaxView.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "depth/depth_curve.h"
#include "each_path.h"
#include "software/mesh_drawing.h"
#include "support/gl_recorder.h"
#include "support/guarded_bytes.h"
#include "support/timeline.h"
#include "view/view_matrix.h"

namespace quorvane::test {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr int kRatios[] = {1, 2, 4, 8, 16, 32};

/// FNV-1a of 64 bits.
uint64_t digestOf(const Bytes& bytes) {
    uint64_t digest = 0xcbf29ce484222325u;
    for (const uint8_t byte : bytes) digest = (digest ^ byte) * 0x100000001b3u;
    return digest;
}

template <typename Value>
void append(Bytes* all, const Value* values, size_t count) {
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(values);
    all->insert(all->end(), bytes, bytes + count * sizeof *values);
}

bool s_paths_agree = true;

void print(const std::string& stage, const Bytes& reference, const Bytes& vectors) {
    std::printf("%8zu %016" PRIx64 " %016" PRIx64 " %s\n", reference.size(), digestOf(reference),
                digestOf(vectors), stage.c_str());
}

/// A stage that has paths: `results(path)` are the bytes of that path.
template <typename Results>
void printPaths(const std::string& stage, Results results) {
    const std::vector<Path> vectors = vectorPaths();
    const Bytes first = results(vectors.front());
    for (const Path& path : vectors) {
        const std::string differs = difference(results(path).data(), first);
        if (differs.empty()) continue;
        std::fprintf(stderr, "%s on %s: %s, as on %s\n", stage.c_str(), path.name, differs.c_str(),
                     vectors.front().name);
        s_paths_agree = false;
    }
    print(stage, results(referencePath()), first);
}

/// Slopes, an edge and some noise, as a photo has them.
Bytes plane(int width, int height, uint32_t seed) {
    Bytes samples = noise(static_cast<size_t>(width) * static_cast<size_t>(height), seed);
    size_t i = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x, ++i)
            samples[i] =
                static_cast<uint8_t>((3 * x + 2 * y + (5 * x > 3 * width ? 90 : 0)) % 200 + samples[i] % 40);
    return samples;
}

void printReductions() {
    constexpr int kWidth = 37, kHeight = 11;
    for (const bool rgb : {false, true})
        for (const int across : kRatios)
            printPaths(
                (rgb ? "photo to luma, columns / " : "depth reduced, columns / ") + std::to_string(across),
                [&](const Path& path) {
                    Bytes all;
                    for (const int down : kRatios) {
                        const int w = kWidth * across, h = kHeight * down;
                        // The luma reduction reads a little past the photo.
                        const Bytes source = plane(rgb ? 3 * w : w, h + 1, 7);
                        Bytes out(kWidth * kHeight);
                        path.downsize({w, h, source.data(), kWidth, kHeight, out.data(), across, down, rgb});
                        append(&all, out.data(), out.size());
                    }
                    return all;
                });
}

void printDenoising() {
    constexpr int kWidth = 301, kHeight = 77;
    printPaths("denoising", [](const Path& path) {
        Bytes out(kWidth * kHeight);
        path.crossDenoise(plane(kWidth, kHeight, 8).data(), out.data(), kWidth, kHeight);
        return out;
    });
    printPaths("contrast curve", [](const Path& path) {
        Bytes samples = plane(kWidth, kHeight, 9);
        path.lookUp(samples.data(), samples.size(), u_depth_table);
        return samples;
    });
}

void printGuidedFilter() {
    constexpr int kWidth = 161, kHeight = 77;
    const Bytes guide = plane(kWidth, kHeight, 10), input = plane(kWidth, kHeight, 11);
    Bytes buffer(20 * kWidth * kHeight + 8 * (kWidth + 1) * (kHeight + 1));
    for (const int radius : {0, 1, 2, 5, 16, 64, 1024})
        printPaths("guided filter, radius " + std::to_string(radius), [&](const Path& path) {
            Bytes all;
            for (const float eps : {0.0f, 1e-6f, 1e-3f, 1.0f}) {
                Bytes out(input.size());
                path.guidedFilter({guide.data(), input.data(), out.data(), kWidth, kHeight,
                                   std::min(radius, kWidth), std::min(radius, kHeight), eps, buffer.data()});
                append(&all, out.data(), out.size());
            }
            return all;
        });
}

const software::DrawingPath& drawingPathOf(const Path& path) {
    for (const software::DrawingPath& drawing : software::drawingPaths())
        if (std::strcmp(drawing.name, path.name) == 0) return drawing;
    return software::chosenDrawingPath();
}

void printDrawing() {
    constexpr int kWidth = 203, kHeight = 131, kGridWidth = 75, kGridHeight = 50;
    const Bytes photo = noise(3 * 150 * 100, 12), depth = plane(kGridWidth, kGridHeight, 13);
    for (const int samples : {1, 4})
        printPaths("drawing, samples a pixel: " + std::to_string(samples), [&](const Path& path) {
            software::MeshDrawing drawing(drawingPathOf(path), 2);
            drawing.setPhoto(photo.data(), 150, 100);
            drawing.setShapedDepth(depth.data(), kGridWidth, kGridHeight);
            Bytes all;
            for (const float x : {-1.0f, 0.0f, 0.6f}) {
                const View view = {x, 0.4f, 12.0f, 12.0f, 0.6f, 0.9f, 100.0f, 40.0f, 29.0f, 18.5f};
                Bytes rgba(4 * kWidth * kHeight);
                drawing.draw({viewMatrix(view), 29.0f, 18.5f, 164.0f}, samples,
                             {rgba.data(), 4 * kWidth, kWidth, kHeight});
                append(&all, rgba.data(), rgba.size());
            }
            return all;
        });
}

void printMesh() {
    constexpr VertexGrid kGrids[] = {
        {1, 1, 18.0f, 32.0f}, {3, 2, 0.1f, 0.7f}, {70, 5, 34.052525f, 19.154545f}, {240, 160, 28.7f, 19.15f}};
    printPaths("vertices", [&](const Path& path) {
        Bytes all;
        for (const VertexGrid& grid : kGrids) {
            std::vector<float> out(static_cast<size_t>(10 * (grid.width + 1) * grid.height));
            path.createVertices(grid, out.data());
            append(&all, out.data(), out.size());
        }
        return all;
    });
    printPaths("indices", [&](const Path& path) {
        Bytes all;
        for (const VertexGrid& grid : kGrids) {
            std::vector<uint32_t> out(static_cast<size_t>(6 * grid.width * grid.height));
            path.createIndices(grid.width, grid.height, out.data());
            append(&all, out.data(), out.size());
        }
        return all;
    });
}

void printMatrices() {
    Bytes turned, moved, frustums;
    for (int i = 0; i < 2000; ++i) {
        const float a = 0.37f * static_cast<float>(i) - 370.0f, b = 0.01f * static_cast<float>(i % 173);
        RENDERMatrix matrix;
        renderMatrixLoadIdentity(&matrix);
        renderRotate(&matrix, a, b, 1.0f - b, 0.3f);
        append(&turned, &matrix, 1);
        renderTranslate(&matrix, a, b, -a * b);
        renderMatrixMultiply(&matrix, &matrix, &matrix);
        append(&moved, &matrix, 1);
        renderFrustum(&matrix, -1.0f - b, 2.0f, -b - 0.5f, 1.5f, 12.0f, 164.0f + b);
        append(&frustums, &matrix, 1);
    }
    print("rotations", turned, turned);
    print("translations, products", moved, moved);
    print("frustums", frustums, frustums);
}

/// The renderer's own members, with GL calls that go nowhere.
void printRenderer() {
    constexpr int kWidth = 128, kHeight = 96;
    Bytes parameters, positions, views, reduced, shaped;
    GlRecorder::instance().reset(GlRecorder::Mode::fake);
    for (const uint32_t orientation : {4u, 0u}) {
        const OutputToTimeline output;
        ESRenderer renderer;
        renderer.getProperties(orientation);
        append(&parameters, &renderer.params, 1);
        Bytes block(
            static_cast<size_t>(renderer.getRequiredMemSize(2 * kWidth, 2 * kHeight, kWidth, kHeight)));
        renderer.assignMem(block.data());
        renderer.setupGraphics(1920, 1080);
        renderer.setTexture(2 * kWidth, 2 * kHeight, plane(6 * kWidth, 2 * kHeight, 12).data());
        renderer.setDepth(kWidth, kHeight, plane(kWidth, kHeight, 13).data());
        append(&reduced, renderer.m_pSmallTextureData, kWidth * kHeight / 16);
        append(&shaped, renderer.m_pDepthData, kWidth * kHeight / 16);
        for (int i = 0; i <= 400; ++i) {
            const float t = static_cast<float>(i) / 400.0f;
            renderer.setRotation(1920.0f * t, 1080.0f * (1.0f - t * t), 0.0f);
            renderer.setAccelerometerData(3.7f * t, -1.3f, 0.1f);
            const float position[] = {renderer.m_transX, renderer.m_transY, renderer.m_transZ};
            append(&positions, position, 3);
            renderer.setupProjection();
            append(&views, &renderer.m_mvpL, 1);
        }
    }
    print("parameters", parameters, parameters);
    print("view positions", positions, positions);
    print("view matrices", views, views);
    print("setDepth: the photo's luma", reduced, reduced);
    print("setDepth: shaped depth", shaped, shaped);
}

int printStages() {
    printReductions();
    printDenoising();
    printGuidedFilter();
    printMesh();
    printDrawing();
    printMatrices();
    printRenderer();
    return s_paths_agree ? 0 : 1;
}

Status drawFrames(Bytes* all) {
    constexpr int kWidth = 96, kHeight = 72;
    GlRecorder::instance().reset(GlRecorder::Mode::driver);
    std::unique_ptr<OffscreenContext> context;
    Status status = OffscreenContext::create(&context);
    std::unique_ptr<ParallaxView> view;
    if (status) status = ParallaxView::create(kWidth, kHeight, 4, &view);
    if (status) status = view->setPhoto({plane(3 * kWidth, kHeight, 14), kWidth, kHeight});
    Bytes depth;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            depth.push_back(static_cast<uint8_t>(x > 30 && x < 60 && y > 20 && y < 50 ? 240 : 40 + y));
    if (status) status = view->setDepth({depth, kWidth, kHeight});
    for (const float x : {0.0f, 1.0f, -0.6f}) {
        if (status) status = view->lookAt(x, 0.5f * x);
        if (status) status = view->render();
        Bytes picture(4 * kWidth * kHeight);
        if (status) status = view->readPixels({picture, view->width(), view->height()});
        append(all, picture.data(), picture.size());
    }
    return status;
}

int writeFrames(const std::string& path) {
    Bytes frames;
    const Status drawn = drawFrames(&frames);
    if (!drawn) {
        std::fprintf(stderr, "stage_digests: %s\n", drawn.message().c_str());
        return 1;
    }
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(frames.data()), static_cast<std::streamsize>(frames.size()));
    file.close();
    if (!file) std::fprintf(stderr, "%s: cannot be written\n", path.c_str());
    return file ? 0 : 1;
}

// The driver's own code for another processor rounds otherwise, Arm's up to a level down, and may place a
// silhouette on the other side of a pixel's centre.
int compareFrames(const std::string& a_path, const std::string& b_path) {
    constexpr double kMostMean = 1.5, kMostBeyond = 0.005;
    const auto read = [](const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(file), {});
    };
    const Bytes a = read(a_path), b = read(b_path);
    if (a.empty() || a.size() != b.size()) {
        std::fprintf(stderr, "%s and %s: %zu and %zu bytes, no frames of one size\n", a_path.c_str(),
                     b_path.c_str(), a.size(), b.size());
        return 1;
    }
    double sum = 0;
    size_t beyond = 0;
    for (size_t i = 0; i < a.size(); i += 4) {
        int worst = 0;
        for (size_t c = i; c < i + 3; ++c) {
            sum += std::abs(a[c] - b[c]);
            worst = std::max(worst, std::abs(a[c] - b[c]));
        }
        // Alpha is 255 wherever something is drawn.
        if (a[i + 3] != b[i + 3]) worst = 255;
        beyond += worst > 8;
    }
    const double pixels = static_cast<double>(a.size()) / 4;
    const double mean = sum / (3 * pixels), share = static_cast<double>(beyond) / pixels;
    std::printf("mean difference %.2f levels of 255, %.2f %% of the pixels beyond 8\n", mean, 100 * share);
    return mean <= kMostMean && share <= kMostBeyond ? 0 : 1;
}

}  // namespace
}  // namespace quorvane::test

int main(int argc, char** argv) {
    using namespace quorvane::test;
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() == 1 && words[0] == "stages") return printStages();
    if (words.size() == 2 && words[0] == "frames") return writeFrames(words[1]);
    if (words.size() == 3 && words[0] == "compare") return compareFrames(words[1], words[2]);
    std::fprintf(stderr, "usage: stage_digests stages | frames FILE | compare FILE FILE\n");
    return 2;
}
