#include "apps/quorvane/drawing/kept_drawings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <utility>

namespace quorvane::app {
namespace {

/// The same for places that differ by rounding alone, which on the way back is another than on the way there.
std::array<long long, 3> keyOf(const Position& position) {
    constexpr double kSteps = 4294967296.0;
    return {std::llround(position.x * kSteps), std::llround(position.y * kSteps),
            std::llround(position.zoom * kSteps)};
}

}  // namespace

KeptDrawings::KeptDrawings(const std::vector<Position>& positions, int most)
    : m_most(static_cast<size_t>(std::max(most, 0))), m_next(positions.size(), kNever) {
    std::map<std::array<long long, 3>, int> later;
    for (size_t i = positions.size(); i-- > 0;) {
        const auto [same, is_last] = later.emplace(keyOf(positions[i]), static_cast<int>(i));
        if (is_last) continue;
        m_next[i] = same->second;
        same->second = static_cast<int>(i);
    }
}

std::shared_ptr<Drawing> KeptDrawings::take(int number) {
    const auto found = m_kept.find(number);
    if (found == m_kept.end()) return nullptr;
    std::shared_ptr<Drawing> drawing = std::move(found->second);
    m_kept.erase(found);
    return drawing;
}

void KeptDrawings::keep(int number, std::shared_ptr<Drawing> drawing) {
    const int next = m_next[static_cast<size_t>(number)];
    if (next == kNever) return;
    m_kept.emplace(next, std::move(drawing));
    if (m_kept.size() > m_most) m_kept.erase(std::prev(m_kept.end()));
}

}  // namespace quorvane::app
