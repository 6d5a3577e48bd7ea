#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>

#include "../each_path.h"
#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

constexpr GuardedBytes::Against kBothEnds[] = {GuardedBytes::Against::end, GuardedBytes::Against::start};
constexpr uint32_t kSeed = 1905;

using TableBytes = std::array<uint8_t, 256>;

void expectLookedUp(const Bytes& samples, const TableBytes& entries) {
    Bytes wanted;
    for (const uint8_t sample : samples) wanted.push_back(entries[sample]);
    for (const auto against : kBothEnds) {
        const GuardedBytes table(Bytes(entries.begin(), entries.end()), against);
        for (const Path& path : everyPath()) {
            GuardedBytes replaced(samples, against);
            path.lookUp(replaced.data(), samples.size(), table.data());
            ASSERT_EQ(difference(replaced.data(), wanted), "")
                << path.name << ", " << samples.size() << " samples";
            ASSERT_TRUE(replaced.surroundingsUntouched())
                << path.name << ", " << samples.size() << " samples";
        }
    }
}

/// Tables that have nothing in common: in order, in reverse, all alike, one entry alone, noise.
std::vector<TableBytes> tables() {
    TableBytes rising, falling, full, single = {}, random;
    std::iota(rising.begin(), rising.end(), uint8_t{0});
    std::copy(rising.begin(), rising.end(), falling.rbegin());
    full.fill(255);
    single[131] = 77;
    const Bytes bytes = noise(256, kSeed);
    std::copy(bytes.begin(), bytes.end(), random.begin());
    return {rising, falling, full, single, random, kContrastCurve};
}

TEST(LookUp, ReplacesAnyCountOnEveryPath) {
    for (const TableBytes& table : tables())
        for (size_t count = 0; count <= 200; ++count)
            ASSERT_NO_FATAL_FAILURE(expectLookedUp(noise(count, kSeed + 1), table));
}

TEST(LookUp, ReplacesEveryValueInEveryPlaceOnEveryPath) {
    for (const TableBytes& table : tables())
        for (int shift = 0; shift < 64; ++shift) {
            Bytes samples(256 + 64);
            for (size_t i = 0; i < samples.size(); ++i)
                samples[i] = static_cast<uint8_t>(static_cast<int>(i) + shift);
            ASSERT_NO_FATAL_FAILURE(expectLookedUp(samples, table));
        }
}

}  // namespace
}  // namespace quorvane::test
