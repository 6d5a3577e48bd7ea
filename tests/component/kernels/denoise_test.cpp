#include <gtest/gtest.h>

#include <algorithm>

#include "../each_path.h"
#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

constexpr GuardedBytes::Against kBothEnds[] = {GuardedBytes::Against::end, GuardedBytes::Against::start};
constexpr uint32_t kSeed = 1905;

void expectAverages(const Bytes& plane, int w, int h) {
    const Bytes wanted = crossAverage(plane, w, h);
    for (const auto against : kBothEnds) {
        const GuardedBytes source(plane, against);
        for (const Path& path : everyPath()) {
            GuardedBytes averages(plane.size(), against);
            path.crossDenoise(source.data(), averages.data(), w, h);
            ASSERT_EQ(difference(averages.data(), wanted), "") << path.name << ", " << w << " x " << h;
            ASSERT_TRUE(averages.surroundingsUntouched()) << path.name << ", " << w << " x " << h;
        }
    }
}

TEST(CrossDenoise, AveragesOnEveryPathAtEverySmallSize) {
    for (int w = 1; w <= 100; ++w)
        for (int h = 1; h <= 5; ++h)
            ASSERT_NO_FATAL_FAILURE(expectAverages(noise(static_cast<size_t>(w * h), kSeed), w, h));
}

TEST(CrossDenoise, AveragesOnEveryPathAtLargeSizes) {
    for (const auto& [w, h] : {std::pair{256, 192}, {301, 77}, {1000, 3}, {33, 500}})
        ASSERT_NO_FATAL_FAILURE(expectAverages(noise(static_cast<size_t>(w * h), kSeed), w, h));
}

TEST(CrossDenoise, ExtremePicturesAverageOnEveryPath) {
    for (int w = 1; w <= 100; w += 3) {
        Bytes columns, rows, board;
        for (int i = 0; i < 4 * w; ++i) {
            const int x = i % w, y = i / w;
            columns.push_back(static_cast<uint8_t>(x % 2 == 0 ? 255 : 0));
            rows.push_back(static_cast<uint8_t>(y % 2 == 0 ? 255 : 0));
            board.push_back(static_cast<uint8_t>((x + y) % 2 == 0 ? 255 : 0));
        }
        for (const Bytes& plane :
             {Bytes(columns.size(), 255), Bytes(columns.size(), 0), columns, rows, board})
            ASSERT_NO_FATAL_FAILURE(expectAverages(plane, w, 4));
    }
}

TEST(CrossDenoise, EverySumIsTruncatedOnEveryPath) {
    // Crosses side by side whose sums are 0, 1, 2 .. 1275: five samples of which as many as can be are 255.
    const int w = 3 * 1276;
    Bytes plane(static_cast<size_t>(3 * w), 0);
    for (int sum = 0; sum <= 1275; ++sum) {
        const int centre = w + 3 * sum + 1;
        int rest = sum;
        for (const int at : {centre, centre - 1, centre + 1, centre - w, centre + w}) {
            plane[static_cast<size_t>(at)] = static_cast<uint8_t>(std::min(rest, 255));
            rest -= plane[static_cast<size_t>(at)];
        }
    }
    for (const Path& path : everyPath()) {
        Bytes averages(plane.size());
        path.crossDenoise(plane.data(), averages.data(), w, 3);
        for (int sum = 0; sum <= 1275; ++sum)
            ASSERT_EQ(averages[static_cast<size_t>(w + 3 * sum + 1)], sum / 5) << path.name;
    }
}

}  // namespace
}  // namespace quorvane::test
