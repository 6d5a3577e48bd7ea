#ifndef QUORVANE_BENCH_CONTENT_H
#define QUORVANE_BENCH_CONTENT_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane::bench {

using Bytes = std::vector<uint8_t>;

/// Bytes that look random, the same ones on every run.
void fillWithNoise(uint8_t* bytes, size_t count, uint64_t seed);
Bytes noise(size_t count, uint64_t seed);

/// A picture with soft shades, hard edges and a little grain: R, G, B.
Bytes scenePhoto(int width, int height);

/// Its depth map, larger = nearer; with the photo's edges, off by a pixel here and there.
Bytes sceneDepth(int width, int height);

}  // namespace quorvane::bench

#endif
