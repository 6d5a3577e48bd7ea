// Every path of the mesh against the reference, bit by bit, into memory that ends or starts at a no-access
// page.

#include <gtest/gtest.h>

#include <ostream>

#include "../each_path.h"
#include "support/guarded_bytes.h"

namespace quorvane::test {
namespace {

constexpr GuardedBytes::Against kBothEnds[] = {GuardedBytes::Against::end, GuardedBytes::Against::start};

std::vector<uint8_t> vertices(const Path& path, const VertexGrid& grid, GuardedBytes::Against against) {
    const int count = grid.height < 1 ? 2 : 2 * (grid.width + 1) * grid.height;
    GuardedBytes out(static_cast<size_t>(count) * 5 * sizeof(float), against);
    path.createVertices(grid, reinterpret_cast<float*>(out.data()));
    EXPECT_TRUE(out.surroundingsUntouched());
    return out.bytes();
}

std::vector<uint8_t> indices(const Path& path, int width, int height, GuardedBytes::Against against) {
    GuardedBytes out(static_cast<size_t>(width * height) * 6 * sizeof(uint32_t), against);
    path.createIndices(width, height, reinterpret_cast<uint32_t*>(out.data()));
    EXPECT_TRUE(out.surroundingsUntouched());
    return out.bytes();
}

void expectTheReferencesMesh(const VertexGrid& grid) {
    const auto wanted_vertices = vertices(referencePath(), grid, GuardedBytes::Against::end);
    const auto wanted_indices = indices(referencePath(), grid.width, grid.height, GuardedBytes::Against::end);
    for (const auto against : kBothEnds)
        for (const Path& path : vectorPaths()) {
            SCOPED_TRACE(testing::Message() << path.name << ", " << grid.width << " x " << grid.height
                                            << " cells, " << grid.x << ", " << grid.y);
            ASSERT_EQ(difference(vertices(path, grid, against).data(), wanted_vertices), "");
            ASSERT_EQ(difference(indices(path, grid.width, grid.height, against).data(), wanted_indices), "");
        }
}

TEST(VertexGridPaths, GiveTheReferencesBitsAtEverySmallSize) {
    for (int w = 0; w <= 70; ++w)
        for (int h = 0; h <= 5; ++h)
            ASSERT_NO_FATAL_FAILURE(expectTheReferencesMesh({w, h, 11.580738f, 18.5f}));
}

TEST(VertexGridPaths, GiveTheReferencesBitsForAnyExtent) {
    for (const float x : {0.0f, -0.0f, 1.0f, 0.1f, 7.3333335f, -3.25f, 1e-40f, 3e38f})
        for (const float y : {0.0f, 13.700001f, -0.30000001f, 1e-42f, 1e30f})
            for (const auto& [w, h] : {std::pair{3, 4}, {4, 3}, {37, 11}, {10, 1}})
                ASSERT_NO_FATAL_FAILURE(expectTheReferencesMesh({w, h, x, y}));
}

TEST(VertexGridPaths, GiveTheReferencesBitsAtLargeSizes) {
    for (const auto& [w, h] : {std::pair{256, 192}, {301, 97}, {1000, 2}, {5, 700}})
        ASSERT_NO_FATAL_FAILURE(expectTheReferencesMesh({w, h, 16.0f, 9.1f}));
}

}  // namespace
}  // namespace quorvane::test
