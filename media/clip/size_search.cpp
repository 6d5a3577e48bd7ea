#include "media/clip/size_search.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace quorvane::media {
namespace {

constexpr double kEnough = 0.9;  ///< of the limit
constexpr double kAim = 0.96;    ///< of the limit: between enough and too much

class Search {
  public:
    Search(const SizeChoices& choices, int64_t limit, const std::function<int64_t(SizeChoice)>& encode)
        : m_choices(choices), m_limit(static_cast<double>(limit)), m_encode(encode) {}

    SizeOutcome run() {
        if (tryAt({0, m_choices.best})) return m_outcome;
        fill(0, {}, m_last);
        if (m_outcome.choice) return m_outcome;
        // At the floor the first variant is too large by so much. Each later one that is tried says anew how
        // much is left to lose.
        const size_t end = m_choices.variant_costs.size();
        size_t too_large = 0;
        std::optional<Probe> fits;
        while (true) {
            const size_t next = fits ? fits->choice.variant - 1 : firstExpected(too_large + 1);
            if (next == end || next == too_large) break;
            if (fits && expected(*fits, {next, m_choices.floor}) > m_limit) break;
            if (tryAt({next, m_choices.floor}))
                fits = m_last;
            else
                too_large = next;
        }
        if (fits) fill(fits->choice.variant, fits, {});
        return m_outcome;
    }

  private:
    struct Probe {
        SizeChoice choice;
        int64_t bytes;
    };

    double costOf(SizeChoice choice) const {
        return m_choices.variant_costs[choice.variant] * m_choices.level_cost(choice.level);
    }

    /// Bytes, from those of another way to encode.
    double expected(const Probe& from, SizeChoice choice) const {
        return static_cast<double>(from.bytes) * costOf(choice) / costOf(from.choice);
    }

    /// The first variant from `start` on that is expected to fit; the last one where none is; past the last
    /// where `start` is.
    size_t firstExpected(size_t start) const {
        const size_t end = m_choices.variant_costs.size();
        for (size_t variant = start; variant < end; ++variant)
            if (variant + 1 == end || expected(m_last, {variant, m_choices.floor}) <= m_limit) return variant;
        return end;
    }

    /// Whether it fits.
    bool tryAt(SizeChoice choice) {
        m_last = {choice, m_encode(choice)};
        if (m_outcome.smallest_bytes == 0 || m_last.bytes < m_outcome.smallest_bytes) {
            m_outcome.smallest = choice;
            m_outcome.smallest_bytes = m_last.bytes;
        }
        if (static_cast<double>(m_last.bytes) > m_limit) return false;
        m_outcome.choice = choice;
        return true;
    }

    /// Finds the highest level of a variant that fits. `low` fits and `high` does not, where they are known.
    void fill(size_t variant, std::optional<Probe> low, std::optional<Probe> high) {
        int same_side = 0;  // of so many guesses one after the other; negative: they did not fit
        while (true) {
            const int least = low ? low->choice.level + 1 : m_choices.floor;
            const int most = high ? high->choice.level - 1 : m_choices.best;
            if (least > most || (low && static_cast<double>(low->bytes) >= kEnough * m_limit)) return;
            int guess = std::clamp(guessed(low, high), least, most);
            // The estimates mislead: from both sides known take the middle, else the end that is not.
            if (std::abs(same_side) >= 2) guess = !low ? least : !high ? most : least + (most - least) / 2;
            if (tryAt({variant, guess})) {
                low = m_last;
                same_side = std::max(same_side, 0) + 1;
            } else {
                high = m_last;
                same_side = std::min(same_side, 0) - 1;
            }
        }
    }

    /// The level that is expected to come near to the limit.
    int guessed(const std::optional<Probe>& low, const std::optional<Probe>& high) const {
        const Probe& known = low ? *low : *high;
        // The logarithm of the bytes goes as this power of the cost.
        double power = 1.0;
        if (low && high) {
            const double costs = std::log(costOf(high->choice) / costOf(low->choice));
            power = std::log(static_cast<double>(high->bytes) / static_cast<double>(low->bytes)) / costs;
        }
        const double wanted = std::log(kAim * m_limit / static_cast<double>(known.bytes));
        const double cost = costOf(known.choice) * std::exp(wanted / power);
        // Costs rise with the level.
        int level = m_choices.floor;
        const SizeChoice here = known.choice;
        while (level < m_choices.best && costOf({here.variant, level + 1}) <= cost) ++level;
        return level;
    }

    const SizeChoices& m_choices;
    const double m_limit;  ///< bytes
    const std::function<int64_t(SizeChoice)>& m_encode;
    Probe m_last = {};
    SizeOutcome m_outcome;
};

}  // namespace

SizeOutcome searchSize(const SizeChoices& choices, int64_t limit,
                       const std::function<int64_t(SizeChoice choice)>& encode) {
    assert(!choices.variant_costs.empty() && choices.floor <= choices.best && limit > 0);
    return Search(choices, limit, encode).run();
}

}  // namespace quorvane::media
