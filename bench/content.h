#ifndef QUORVANE_BENCH_CONTENT_H
#define QUORVANE_BENCH_CONTENT_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/large_pages.h"

namespace quorvane::bench {

/// Uses large pages for large buffers, as ParallaxView does for its block.
template <typename T>
struct InLargePages {
    using value_type = T;
    T* allocate(size_t count) {
        const size_t bytes = count * sizeof(T);
        void* memory = ::operator new(bytes, alignmentFor(bytes));
        preferLargePages(memory, bytes);
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, size_t count) { ::operator delete(memory, alignmentFor(count * sizeof(T))); }
    bool operator==(const InLargePages&) const { return true; }
    bool operator!=(const InLargePages&) const { return false; }
};

using Bytes = std::vector<uint8_t, InLargePages<uint8_t>>;

/// Bytes that look random, the same ones on every run.
void fillWithNoise(uint8_t* bytes, size_t count, uint64_t seed);
Bytes noise(size_t count, uint64_t seed);

/// A picture with soft shades, hard edges and a little grain: R, G, B.
Bytes scenePhoto(int width, int height);

/// Its depth map, larger = nearer; with the photo's edges, off by a pixel here and there.
Bytes sceneDepth(int width, int height);

}  // namespace quorvane::bench

#endif
