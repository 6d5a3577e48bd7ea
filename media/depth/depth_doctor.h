#ifndef QUORVANE_MEDIA_DEPTH_DEPTH_DOCTOR_H
#define QUORVANE_MEDIA_DEPTH_DEPTH_DOCTOR_H

#include <optional>
#include <string>
#include <vector>

#include "media/picture/image.h"
#include "media/picture/picture_file.h"
#include "media/picture/turn.h"

namespace quorvane::media {

/// What becomes of pixels that hold no depth.
enum class Holes {
    kAuto,  ///< filled where it is certain that they are some
    kFill,  ///< filled, also where the lowest or highest level only may stand for "unknown"
    kKeep,  ///< left as they are
};

/// What is already known of a depth map, from its container or its user, and is not examined.
struct DepthKnowledge {
    bool orientation = false;                   ///< it lies as the photo does
    std::optional<bool> larger_is_nearer = {};  ///< false: the levels are exchanged without a word
    Holes holes = Holes::kAuto;
    std::string name = {};  ///< its file's name or path, or empty: words such as "disparity" count
};

/// Which end of a depth map is near, as it was given.
struct Polarity {
    bool larger_is_nearer = true;
    double confidence = 1.0;  ///< about 0.5 to 1; 1 where it is known
    bool inverted = false;    ///< the levels were exchanged, or 1 / distance taken: larger is nearer now
    bool doubtful = false;    ///< the likelier way was taken; a finding says so
};

enum class FindingKind {
    kTurned,       ///< by 90, 180 or 270 degrees, mirrored or transposed
    kOtherAspect,  ///< cropped or stretched against the photo
    kPolarity,     ///< larger is farther
    kColourMapped,
    kAlpha,  ///< a channel, or colours off the colour map, that say where there is no depth
    kHoles,  ///< the lowest or highest level stands for "unknown"
    kLittleRange,
};

struct Finding {
    FindingKind kind;
    double confidence;  ///< 0 to 1, that the text is right
    bool corrected;     ///< the depth map was changed
    /// One line, such as "turned clockwise by 90 degrees to lie as the photo does" or, where it is left
    /// alone, "may lie otherwise than the photo".
    std::string text;
    // What would put it right where it is doubtful.
    std::vector<Turn> turns = {};        ///< one of these
    std::optional<bool> inverting = {};  ///< to have near and far exchanged, or not
    bool filling = false;                ///< Holes::kFill

    bool doubtful() const;
};

/// Findings of at least this confidence are corrected.
constexpr double kCertain = 0.9;

/// Checks a depth map against its photo and corrects what is certain: turns it, cuts it, exchanges near and
/// far, so that larger is nearer, and fills holes from the far side. Which end is near is always judged, on
/// samples that cannot be holes, and the likelier way is taken. Afterwards `depth->known` is empty. A map
/// that suits its photo has no finding. Both have at least one pixel, levels are 0 to 255, and `depth->known`
/// has the plane's size or is empty. `polarity`, unless it is null, tells what was found of near and far.
///
/// Cost: a pass over both, then work on grids of 160 cells; 65 ms for a photo of 12 megapixels.
std::vector<Finding> examine(const RgbImage& photo, const DepthKnowledge& known, DepthMap* depth,
                             Polarity* polarity = nullptr);

/// Spreads the levels of a depth map over 0 to 255, so that it moves as much as it can, and returns whether
/// it did. A handful of stray samples at either end, one in 10,000 and at most 100, is clamped where it lies
/// apart. Maps of 8 bit that use less than 2 % of the levels are left as they are: what they hold is mostly
/// noise.
bool spreadLevels(DepthMap* depth);

}  // namespace quorvane::media

#endif
