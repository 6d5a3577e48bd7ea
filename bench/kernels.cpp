#include "kernels.h"

#include <cstring>
#include <memory>
#include <utility>

#include "depth/depth_curve.h"
#include "kernels/paths.h"
#include "machine_limits.h"
#include "peers.h"
#include "quorvane/esRenderer.h"
#include "quorvane/guided_filter.h"

namespace quorvane::bench {
namespace {

constexpr int kGridWidth = 256;
constexpr int kGridHeight = 192;

size_t area(int width, int height) { return static_cast<size_t>(width) * static_cast<size_t>(height); }

template <typename T>
std::shared_ptr<T> shared(T value) {
    return std::make_shared<T>(std::move(value));
}

/// Adds every path that runs here, after comparing what it writes with what the reference does. run(path,
/// out) writes `bytes` bytes. compare(wanted, path, got) says what is wrong.
template <typename Run, typename Compare>
void addPaths(Stage* stage, size_t bytes, const Run& run, const Compare& compare) {
    const auto out = shared(Bytes(bytes));
    Bytes wanted(bytes);
    const PathList all = paths();
    run(all[0], wanted.data());
    for (size_t i = 0; i < all.size(); ++i) {
        const Path& path = all[i];
        if (!path.runsHere()) continue;
        const std::string name = i == 0 ? "reference" : path.name;
        out->assign(bytes, 0xa5);
        run(path, out->data());
        const std::string wrong = compare(wanted, i, *out);
        if (!wrong.empty()) stage->wrong += (stage->wrong.empty() ? "" : "; ") + name + ": " + wrong;
        stage->contenders.push_back(here(name, Kind::path, [run, out, &path] { run(path, out->data()); }));
    }
}

template <typename Run>
void addPaths(Stage* stage, size_t bytes, const Run& run) {
    addPaths(stage, bytes, run,
             [](const Bytes& wanted, size_t, const Bytes& got) { return difference(wanted, got); });
}

void addRead(Stage* stage, const std::shared_ptr<Bytes>& bytes, size_t count) {
    stage->contenders.push_back(here("read", Kind::limit, [=] { use(readAll(bytes->data(), count)); }));
}

void addCopy(Stage* stage, const std::shared_ptr<Bytes>& bytes) {
    stage->contenders.push_back(here("memcpy", Kind::limit, [=, copy = shared(Bytes(bytes->size()))] {
        std::memcpy(copy->data(), bytes->data(), bytes->size());
    }));
}

void addFill(Stage* stage, size_t count) {
    stage->contenders.push_back(here(
        "memset", Kind::limit, [=, bytes = shared(Bytes(count))] { std::memset(bytes->data(), 1, count); }));
}

Goal timesReference(double bound) { return {"avx2", Goal::kTimesAsFastAs, bound, "reference"}; }
Goal timesAsFastAs(double bound, const char* against) {
    return {"avx2", Goal::kTimesAsFastAs, bound, against};
}

Goal timesTheTimeOf(double bound, const char* limit) { return {"avx2", Goal::kTimesTheTimeOf, bound, limit}; }

Stage reduction(std::string name, int width, int height, int ratio, bool rgb, std::vector<Goal> goals) {
    // The luma reduction reads a little past its last row.
    constexpr size_t kReadable = 64;
    const size_t bytes = area(width, height) * (rgb ? 3 : 1);
    const auto source = shared(noise(bytes + kReadable, 1));
    const Reduction r = {width, height, source->data(), width / ratio, height / ratio, nullptr, ratio,
                         ratio, rgb};

    Stage stage;
    stage.name = std::move(name);
    stage.size = sizeText(width, height);
    stage.units = static_cast<double>(area(width, height));
    stage.unit = "source pixel";
    stage.goals = std::move(goals);
    addPaths(&stage, area(r.out_width, r.out_height), [r](const Path& path, uint8_t* out) {
        Reduction to = r;
        to.out = out;
        path.downsize(to);
    });
    addRead(&stage, source, bytes);
    addReductionPeers(r, &stage.contenders);
    return stage;
}

Stage photoToGuide(int width, int height, int ratio, double times_reference, double times_read) {
    std::vector<Goal> goals = {timesReference(times_reference)};
    if (ratio > 1) goals.push_back(timesAsFastAs(1, name(Kind::overlap)));
    if (ratio >= 16 || ratio == 1) goals.push_back(timesAsFastAs(0.9, "libyuv"));
    goals.push_back(timesTheTimeOf(times_read, "read"));
    return reduction("photo to guide, ratio " + std::to_string(ratio), width, height, ratio, true,
                     std::move(goals));
}

Stage depthToGrid() {
    return reduction("depth to grid, ratio 4", 4 * kGridWidth, 4 * kGridHeight, 4, false,
                     {timesReference(36), timesTheTimeOf(8, "read")});
}

/// A stage from plane to plane at grid size.
Stage gridStage(std::string name, std::vector<Goal> goals) {
    Stage stage;
    stage.name = std::move(name);
    stage.size = sizeText(kGridWidth, kGridHeight);
    stage.units = static_cast<double>(area(kGridWidth, kGridHeight));
    stage.unit = "cell";
    stage.goals = std::move(goals);
    return stage;
}

Stage crossDenoiseStage() {
    Stage stage = gridStage("cross denoise", {timesReference(18), timesAsFastAs(1, name(Kind::same)),
                                              timesTheTimeOf(4, "memcpy")});
    const auto plane = shared(noise(area(kGridWidth, kGridHeight), 2));
    addPaths(&stage, plane->size(), [=](const Path& path, uint8_t* out) {
        path.crossDenoise(plane->data(), out, kGridWidth, kGridHeight);
    });
    addCopy(&stage, plane);
    addCrossDenoisePeers(*plane, kGridWidth, kGridHeight, &stage.contenders);
    return stage;
}

Stage denoiseAndContrast() {
    Stage stage = gridStage("denoise and contrast", {timesReference(6), timesAsFastAs(1, name(Kind::same))});
    const auto plane = shared(noise(area(kGridWidth, kGridHeight), 2));
    addPaths(&stage, plane->size(), [=](const Path& path, uint8_t* out) {
        path.crossDenoise(plane->data(), out, kGridWidth, kGridHeight);
        path.lookUp(out, plane->size(), u_depth_table);
    });
    addCopy(&stage, plane);
    addDenoiseAndContrastPeers(*plane, kGridWidth, kGridHeight, u_depth_table, &stage.contenders);
    return stage;
}

Stage guidedFilterStage(int radius, double times_reference, double times_opencv) {
    struct Planes {
        Bytes guide, input, buffer;
    };
    const auto planes = std::make_shared<Planes>();
    const Bytes photo = scenePhoto(kGridWidth, kGridHeight);
    for (size_t i = 0; i < photo.size(); i += 3) planes->guide.push_back(photo[i + 1]);
    planes->input = sceneDepth(kGridWidth, kGridHeight);
    planes->buffer.resize(static_cast<size_t>(guided_filter_qrv().bufferSize(kGridWidth, kGridHeight)));
    const GuidedFiltering f = {
        planes->guide.data(),         planes->input.data(), nullptr, kGridWidth, kGridHeight, radius, radius,
        LibParam().guided_filter_eps, planes->buffer.data()};

    Stage stage = gridStage("guided filter, radius " + std::to_string(radius),
                            {timesReference(times_reference), timesAsFastAs(times_opencv, name(Kind::same))});
    stage.agreement = "within 1";
    // In single precision a result may be off by one now and then, but then it is on every vector path.
    Bytes first;
    addPaths(
        &stage, planes->input.size(),
        [f, planes](const Path& path, uint8_t* out) {
            GuidedFiltering to = f;
            to.output = out;
            path.guidedFilter(to);
        },
        [&first](const Bytes& wanted, size_t path, const Bytes& got) {
            if (path == 1) first = got;
            const std::string from_first = path >= 1 ? difference(first, got) : "";
            return from_first.empty() ? difference(wanted, got, 1, 10000) : "from plain " + from_first;
        });
    addCopy(&stage, shared(Bytes(planes->input)));
    addGuidedFilterPeers(f, &stage.contenders);
    return stage;
}

Stage vertices() {
    Stage stage = gridStage("vertex grid", {timesTheTimeOf(2, "memset")});
    const size_t bytes = 2 * area(kGridWidth + 1, kGridHeight) * sizeof(VTX_FMT);
    addPaths(&stage, bytes, [](const Path& path, uint8_t* out) {
        path.createVertices({kGridWidth, kGridHeight, 24.6f, 18.5f}, reinterpret_cast<float*>(out));
    });
    addFill(&stage, bytes);
    return stage;
}

Stage indices() {
    Stage stage = gridStage("indices", {timesTheTimeOf(1.4, "memset")});
    const size_t bytes = 6 * area(kGridWidth, kGridHeight) * sizeof(uint32_t);
    addPaths(&stage, bytes, [](const Path& path, uint8_t* out) {
        path.createIndices(kGridWidth, kGridHeight, reinterpret_cast<uint32_t*>(out));
    });
    addFill(&stage, bytes);
    return stage;
}

}  // namespace

std::vector<MakeStage> kernelStages() {
    return {
        [] { return photoToGuide(4096, 3072, 16, 24, 2); },
        [] { return photoToGuide(4000, 3000, 16, 24, 2); },
        [] { return photoToGuide(4096, 3072, 32, 22, 2); },
        [] { return photoToGuide(2048, 1536, 8, 20, 2); },
        [] { return photoToGuide(1024, 768, 4, 23, 3); },
        [] { return photoToGuide(1024, 768, 2, 21, 4); },
        [] { return photoToGuide(1024, 768, 1, 45, 3); },
        [] { return depthToGrid(); },
        [] { return crossDenoiseStage(); },
        [] { return guidedFilterStage(2, 8, 5); },
        [] { return guidedFilterStage(8, 4.5, 2); },
        [] { return guidedFilterStage(32, 3.8, 2); },
        [] { return denoiseAndContrast(); },
        [] { return vertices(); },
        [] { return indices(); },
    };
}

std::vector<MakeStage> smallKernelStages() {
    std::vector<MakeStage> stages;
    for (const int ratio : {16, 32, 8, 4, 2, 1})
        stages.emplace_back([=] { return photoToGuide(1024, 768, ratio, 1, 1); });
    const std::vector<MakeStage> all = kernelStages();
    stages.insert(stages.end(), all.begin() + 7, all.end());
    return stages;
}

}  // namespace quorvane::bench
