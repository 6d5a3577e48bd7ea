#ifndef QUORVANE_MEDIA_CLIP_SIZE_SEARCH_H
#define QUORVANE_MEDIA_CLIP_SIZE_SEARCH_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace quorvane::media {

/// One way to encode a clip: a variant, such as a size and a rate, and a level within it, such as a quality.
struct SizeChoice {
    size_t variant = 0;
    int level = 0;
};

/// Ways to encode a clip, from those that are liked best. An earlier variant is liked better than a later one
/// at whatever level; in one variant a higher level is liked better.
struct SizeChoices {
    /// How many bytes each variant takes, in any unit: an estimate. Falls from one to the next.
    std::vector<double> variant_costs;
    int floor = 0;  ///< the lowest level that is still good enough
    int best = 0;   ///< the highest level that shows; floor..best are searched
    /// How many bytes a level takes, in any unit: an estimate. Positive, rises with the level.
    std::function<double(int level)> level_cost;
};

struct SizeOutcome {
    std::optional<SizeChoice> choice;  ///< none: nothing fits
    SizeChoice smallest;               ///< the smallest that was encoded, with its bytes
    int64_t smallest_bytes = 0;
};

/// Looks for the way to encode that is liked best of those that take at most `limit` bytes. `encode` is asked
/// for the bytes of one way and never twice for the same; each way it is asked for after one that fits is
/// liked better than that, so the last one that fits is the choice. The search ends once more than nine
/// tenths of the limit are used or the best level is reached, and otherwise at a level with a next one that
/// does not fit. It goes by false position on the logarithm of bytes, and by halves where that is slow, so
/// that a few encodings are enough; the estimates cost encodings where they are wrong, and a variant
/// that would just have fitted may be missed, but what is chosen always fits.
SizeOutcome searchSize(const SizeChoices& choices, int64_t limit,
                       const std::function<int64_t(SizeChoice choice)>& encode);

}  // namespace quorvane::media

#endif
