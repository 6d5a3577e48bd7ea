// The renderer's shaping of a depth map, from its reference kernels, for WebAssembly: web/element/shaper.js
// holds it.

#include <cstdint>

#include "depth/shape_depth.h"
#include "kernels/guided_filter.h"

namespace {

using namespace quorvane;

constexpr Path kReference = {"reference",
                             nullptr,
                             reference::downsize,
                             reference::crossDenoise,
                             reference::lookUp,
                             reference::guidedFilter,
                             nullptr,
                             nullptr};

constexpr uintptr_t kPage = 65536;

uintptr_t end() { return static_cast<uintptr_t>(__builtin_wasm_memory_size(0)) * kPage; }

/// What the photo's reduction may read past the photo.
constexpr size_t kBehindPhoto = 27;

DepthShaping g_shaping;

}  // namespace

// Nothing here allocates or ends; a library's way of doing so would be most of the file, and ask the page for
// help.
extern "C" void _Exit(int) { __builtin_trap(); }
void* operator new(size_t) { __builtin_trap(); }
void operator delete(void*) noexcept {}

extern "C" unsigned char __heap_base;

extern "C" {

/// Makes room for a photo of `ratio` pixels a cell, R G B, and a depth map of 4. Returns where the photo
/// goes, or null where there is no memory. What lay there before is lost.
__attribute__((export_name("prepare"))) uint8_t* prepare(int columns, int rows, int ratio) {
    const size_t cells = static_cast<size_t>(columns) * static_cast<size_t>(rows);
    const size_t photo_bytes = 3 * cells * static_cast<size_t>(ratio * ratio);
    uint8_t* next = &__heap_base;
    const auto take = [&next](size_t bytes) {
        uint8_t* at = next;
        next += (bytes + 15) & ~size_t{15};
        return at;
    };
    DepthShaping& s = g_shaping;
    s.photo_width = columns * ratio;
    s.photo_height = rows * ratio;
    s.depth_width = columns * 4;
    s.depth_height = rows * 4;
    s.width = columns;
    s.height = rows;
    uint8_t* photo = take(photo_bytes + kBehindPhoto);
    s.photo = photo;
    s.depth = take(16 * cells);
    s.guide = take(cells);
    s.scratch = take(cells);
    s.shaped = take(cells);
    s.filter_buffer = take(static_cast<size_t>(guidedFilterBufferSize(columns, rows)));
    const uintptr_t needed = reinterpret_cast<uintptr_t>(next);
    if (needed > end() && __builtin_wasm_memory_grow(0, (needed - end() + kPage - 1) / kPage) == size_t(-1))
        return nullptr;
    for (size_t i = 0; i < kBehindPhoto; ++i) photo[photo_bytes + i] = 0;
    return photo;
}

/// Where the depth map goes, a byte a pixel, larger is nearer.
__attribute__((export_name("depth"))) const uint8_t* depth() { return g_shaping.depth; }

/// Returns the shaped plane, a byte a cell.
__attribute__((export_name("shape"))) const uint8_t* shape(int rx, int ry, float eps, float contrast) {
    g_shaping.rx = rx;
    g_shaping.ry = ry;
    g_shaping.eps = eps;
    g_shaping.contrast = contrast;
    shapeDepth(kReference, g_shaping, [](ShapingStep, bool) {});
    return g_shaping.shaped;
}
}
