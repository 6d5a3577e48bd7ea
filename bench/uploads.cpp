#include "uploads.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "allocations.h"
#include "depth/depth_curve.h"
#include "kernels/paths.h"
#include "machine_limits.h"
#include "peers.h"
#include "quorvane/esRenderer.h"

namespace quorvane::bench {
namespace {

struct Sizes {
    int photo_width, photo_height, depth_width, depth_height;

    size_t photoBytes() const {
        return size_t{3} * static_cast<size_t>(photo_width) * static_cast<size_t>(photo_height);
    }
    size_t depthBytes() const { return static_cast<size_t>(depth_width) * static_cast<size_t>(depth_height); }
    size_t gridBytes() const { return depthBytes() / 16; }
};

/// As tuned for orientation 4.
constexpr uint32_t kOrientation = 4;
constexpr Sizes kLarge = {4096, 3072, 1024, 768};

struct FreeBlock {
    size_t bytes = 0;
    void operator()(uint8_t* block) const { InLargePages<uint8_t>().deallocate(block, bytes); }
};

/// A renderer with its working block.
class Component {
  public:
    explicit Component(const Sizes& sizes) : m_sizes(sizes) {
        m_renderer.getProperties(kOrientation);
        const int bytes = m_renderer.getRequiredMemSize(sizes.photo_width, sizes.photo_height,
                                                        sizes.depth_width, sizes.depth_height);
        const size_t block_bytes = static_cast<size_t>(bytes);
        m_block = {InLargePages<uint8_t>().allocate(block_bytes), {block_bytes}};
        m_renderer.assignMem(m_block.get());
        m_renderer.setupGraphics(1920, 1080);
    }

    // The renderer takes what it only reads as if it might write.
    void setPhoto(const uint8_t* photo) {
        m_renderer.setTexture(m_sizes.photo_width, m_sizes.photo_height, const_cast<uint8_t*>(photo));
    }
    void setDepth(const uint8_t* depth) {
        m_renderer.setDepth(m_sizes.depth_width, m_sizes.depth_height, const_cast<uint8_t*>(depth));
    }
    ESRenderer& renderer() { return m_renderer; }
    size_t blockBytes() const { return m_block.get_deleter().bytes; }

  private:
    Sizes m_sizes;
    std::unique_ptr<uint8_t, FreeBlock> m_block;
    ESRenderer m_renderer;
};

/// Memory that processes forked later share.
class SharedBytes {
  public:
    explicit SharedBytes(size_t size)
        : m_bytes(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
          m_size(size) {
        if (m_bytes == MAP_FAILED) throw std::bad_alloc();
    }
    ~SharedBytes() { munmap(m_bytes, m_size); }
    SharedBytes(const SharedBytes&) = delete;
    SharedBytes& operator=(const SharedBytes&) = delete;

    uint8_t* at(size_t offset) const { return static_cast<uint8_t*>(m_bytes) + offset; }

  private:
    void* m_bytes;
    size_t m_size;
};

struct Inputs {
    Bytes photo, depth;
};

Work uploadWork(const Sizes& sizes, const uint8_t* photo, const uint8_t* depth) {
    const auto component = std::make_shared<Component>(sizes);
    return [=] {
        component->setPhoto(photo);
        component->setDepth(depth);
    };
}

Work copyAndRead(const uint8_t* photo, size_t bytes) {
    const auto copy = std::make_shared<Bytes>(bytes);
    return [=] {
        std::memcpy(copy->data(), photo, bytes);
        use(readAll(copy->data(), bytes));
    };
}

Stage photoAndDepth() {
    const auto inputs = std::make_shared<Inputs>();
    inputs->photo = scenePhoto(kLarge.photo_width, kLarge.photo_height);
    inputs->depth = sceneDepth(kLarge.depth_width, kLarge.depth_height);

    Stage stage;
    stage.name = "setTexture + setDepth";
    stage.size = sizeText(kLarge.photo_width, kLarge.photo_height);
    stage.goals = {{"avx2", Goal::kTimesAsFastAs, 14, "reference"},
                   {"sse4.1", Goal::kTimesAsFastAs, 11, "reference"},
                   {"sse2", Goal::kTimesAsFastAs, 6.5, "reference"},
                   {"avx2", Goal::kTimesAsFastAs, 2, "OpenCV, resize"},
                   {"avx2", Goal::kTimesTheTimeOf, 1.7, "copy + read"}};

    stage.agreement = "within 2";
    const size_t grid = kLarge.gridBytes();
    const SharedBytes out(2 * grid);
    Bytes wanted_guide, wanted_depth, first_depth;
    const PathList path = paths();
    for (size_t i = 0; i < path.size(); ++i) {
        if (!path[i].runsHere()) continue;
        const std::string name = i == 0 ? "reference" : path[i].name;
        const auto prepare = [&]() -> Work {
            const auto component = std::make_shared<Component>(kLarge);
            component->setPhoto(inputs->photo.data());
            component->setDepth(inputs->depth.data());
            std::memcpy(out.at(0), component->renderer().m_pSmallTextureData, grid);
            std::memcpy(out.at(grid), component->renderer().m_pDepthData, grid);
            return [component, inputs] {
                component->setPhoto(inputs->photo.data());
                component->setDepth(inputs->depth.data());
            };
        };
        Timed timed_upload = timedApart(path[i].name, prepare);
        timed_upload(1);  // it has written its planes now

        const Bytes guide(out.at(0), out.at(grid)), depth(out.at(grid), out.at(2 * grid));
        if (i == 0) {
            wanted_guide = guide;
            wanted_depth = depth;
        }
        if (i == 1) first_depth = depth;
        std::string wrong = difference(wanted_guide, guide);
        if (wrong.empty() && i >= 1) wrong = difference(first_depth, depth);
        // One step off in the filter, spread over five cells by the denoising, is up to two after the
        // contrast.
        if (wrong.empty()) wrong = difference(wanted_depth, depth, 2, 10000 / 5);
        if (!wrong.empty()) stage.wrong += (stage.wrong.empty() ? "" : "; ") + name + ": " + wrong;
        stage.contenders.push_back({name, Kind::path, std::move(timed_upload), nullptr});
    }

    const auto limit = [&] { return copyAndRead(inputs->photo.data(), inputs->photo.size()); };
    stage.contenders.push_back({"copy + read", Kind::limit, timedApart(nullptr, limit), nullptr});
    const LibParam params;
    addUploadPeers({inputs->photo.data(), kLarge.photo_width, kLarge.photo_height, inputs->depth.data(),
                    kLarge.depth_width, kLarge.depth_height, params.guided_filter_rx,
                    params.guided_filter_eps, u_depth_table},
                   &stage.contenders);
    return stage;
}

Stage colourCopy() {
    const auto photo = std::make_shared<Bytes>(noise(kLarge.photoBytes(), 1));
    Stage stage;
    stage.name = "colour copy (setTexture)";
    stage.size = sizeText(kLarge.photo_width, kLarge.photo_height);
    stage.goals = {{"setTexture", Goal::kTimesTheTimeOf, 1.05, "memcpy"}};
    // Both in one process and onto the same memory; a negative count asks for the bare copy.
    const Timed either = apart(nullptr, [=]() -> Answer {
        const auto component = std::make_shared<Component>(kLarge);
        const Timed ours = timed([=] { component->setPhoto(photo->data()); });
        const Timed bare =
            timed([=] { std::memcpy(component->renderer().m_pTextureData, photo->data(), photo->size()); });
        return [=](int count) { return count > 0 ? ours(count) : bare(-count); };
    });
    stage.contenders = {{"setTexture", Kind::path, either, nullptr},
                        {"memcpy", Kind::limit, [=](int count) { return either(-count); }, nullptr}};
    return stage;
}

/// A "Name:   123 kB" line of a file of the process file system, in bytes.
double kernelFigure(const char* file, const std::string& name) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);)
        if (line.compare(0, name.size() + 1, name + ":") == 0)
            return 1024 * std::strtod(line.c_str() + name.size() + 1, nullptr);
    return 0;
}

/// How much a process grows during the calls, after it holds the inputs and an untouched block.
double peakGrowth(const Sizes& sizes, const uint8_t* photo, const uint8_t* depth) {
    return apart(nullptr, [&]() -> Answer {
        return [&](int) {
            const auto upload = [=](Component* component) {
                component->setPhoto(photo);
                component->setDepth(depth);
                component->renderer().setupVertices();
            };
            // A small upload first: it loads code and allocates standard output's buffer.
            const Sizes small = {1024, 64, 256, 16};  // goes through the vector code
            Component warm(small);
            upload(&warm);

            malloc_trim(0);  // what earlier sizes have left would not count as growth
            Component component(sizes);
            std::ofstream("/proc/self/clear_refs") << 5;  // the peak starts anew
            // Newer kernels know the peak less exactly than what is held now, and may start a megabyte off.
            // So each is compared with itself.
            const auto held = [] { return kernelFigure("/proc/self/status", "VmRSS"); };
            const auto peak = [] { return kernelFigure("/proc/self/status", "VmHWM"); };
            const double held_before = held(), peak_before = peak();
            upload(&component);
            return std::max(held() - held_before, peak() - peak_before);
        };
    })(1);
}

}  // namespace

std::vector<MakeStage> uploadStages() { return {colourCopy, photoAndDepth}; }

std::vector<PixelCost> pixelCosts(double megapixels, int rounds) {
    constexpr int kGrids[][2] = {{24, 18},   {40, 30},   {72, 54},   {128, 96},
                                 {256, 192}, {504, 378}, {720, 540}, {1020, 765}};
    std::vector<PixelCost> costs;
    for (const auto& grid : kGrids) {
        const Sizes sizes = {16 * grid[0], 16 * grid[1], 4 * grid[0], 4 * grid[1]};
        PixelCost cost = {};
        cost.width = sizes.photo_width;
        cost.height = sizes.photo_height;
        // Two renderers, the limit's copy and the photo, with room to spare.
        const double needed = 6.0 * static_cast<double>(sizes.photoBytes());
        if (cost.pixels() > 1.1e6 * megapixels || kernelFigure("/proc/meminfo", "MemAvailable") < needed)
            break;
        std::fprintf(stderr, "bench: cost per pixel, %s\n", sizeText(cost.width, cost.height).c_str());

        const Bytes photo = noise(sizes.photoBytes(), 1), depth = noise(sizes.depthBytes(), 2);
        const auto upload = [&] { return uploadWork(sizes, photo.data(), depth.data()); };
        const std::vector<Figure> figures =
            interleaved({timedApart(nullptr, upload), timedApart("reference", upload),
                         timedApart(nullptr, [&] { return copyAndRead(photo.data(), photo.size()); })},
                        rounds);
        cost.seconds = figures[0].seconds;
        cost.reference_seconds = figures[1].seconds;
        cost.limit_seconds = figures[2].seconds;
        ESRenderer planner;
        cost.block_bytes = planner.getRequiredMemSize(sizes.photo_width, sizes.photo_height,
                                                      sizes.depth_width, sizes.depth_height);
        cost.peak_bytes = peakGrowth(sizes, photo.data(), depth.data());
        costs.push_back(cost);
    }
    return costs;
}

Work countedFrame() {
    constexpr Sizes kSizes = {1024, 768, 1024, 768};
    const auto component = std::make_shared<Component>(kSizes);
    component->renderer().setupVertices();
    component->setPhoto(noise(kSizes.photoBytes(), 1).data());
    component->setDepth(noise(kSizes.depthBytes(), 2).data());
    return [component] { component->renderer().renderFrame(); };
}

FrameShare frameShare(int rounds) {
    const std::vector<Figure> figures = interleaved({timedApart(nullptr, countedFrame)}, rounds);
    const double allocations = apart(nullptr, []() -> Answer {
        const Work frame = countedFrame();
        return [=](int frames) {
            frame();
            return static_cast<double>(allocationsDuring([&] {
                for (int i = 0; i < frames; ++i) frame();
            }));
        };
    })(1000);
    return {figures[0].seconds, allocations / 1000};
}

}  // namespace quorvane::bench
