#ifndef QUORVANE_MEDIA_DEPTH_PREPROCESSOR_CONFIG_H
#define QUORVANE_MEDIA_DEPTH_PREPROCESSOR_CONFIG_H

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "sizes/sizes.h"

namespace quorvane::media {

/// What becomes of a photo's levels, 0 to 255, on their way into a network: (level * scale - mean) /
/// deviation, for red, green and blue.
struct Normalisation {
    double scale = 1.0 / 255.0;
    std::array<double, 3> mean = {0.0, 0.0, 0.0};
    std::array<double, 3> deviation = {1.0, 1.0, 1.0};
};

/// What model hubs' files say beside a network: preprocessor_config.json, and config.json.
struct PreprocessorConfig {
    std::optional<Normalisation> normalisation;
    std::optional<Size> size;     ///< pixels; width and height alike where only the shorter side is given
    bool keep_aspect = true;      ///< only the shorter side is held to `size`
    std::optional<int> multiple;  ///< that both sides are multiples of
    std::optional<bool> metric;   ///< it measures distances
};

/// Both texts are bytes of files that messages call `name`; an empty one says nothing. Throws Error for what
/// is no JSON, and for numbers that no network has.
PreprocessorConfig readPreprocessorConfig(std::string_view preprocessor, std::string_view config,
                                          const std::string& name);

}  // namespace quorvane::media

#endif
