#ifndef QUORVANE_APPS_TUNER_CORE_PREPARING_H
#define QUORVANE_APPS_TUNER_CORE_PREPARING_H

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/quorvane/drawing/planning.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/tuner/core/latest.h"
#include "apps/tuner/core/tuning.h"

namespace quorvane::tuner {

/// What a picture is to be prepared of.
struct PrepareRequest {
    app::InputOptions input;           ///< but for what the tuning says
    std::vector<std::string> dropped;  ///< files that take the place of its photo, its depth map or both
    Tuning tuning;
    Size room;                        ///< pixels that the window has for a picture
    std::vector<app::Position> path;  ///< all that it is seen from
    int supersample = 1;              ///< as the drawing view has them
    int largest_texture = 0;
    bool wants_stretch = false;
};

/// A picture up to the planes that are uploaded.
struct Prepared {
    app::PlannedInput planned;
    Size size;  ///< of the picture
    Tuning tuning;
    std::vector<app::Position> path;  ///< that it was planned for
    app::InputOptions input;          ///< with what was dropped
    Size photo_size;
    std::string depth_file;  ///< path; empty: the depth is none of a file's own
    media::GrayImage given;  ///< the depth map as it was read, larger = nearer
    bool inverted = false;   ///< the levels of the file were exchanged
    std::optional<PictureStretch> stretch;
    std::vector<std::string> notes;  ///< on the depth map: what was found and what was mended
};

/// The picture's size: the longer side as the tuning says, or the largest of the photo's aspect in the room.
Size sizeFor(const Tuning& tuning, Size photo, Size room);

/// The options with files that were dropped on the window: a gray picture, one that is called after the photo
/// as depth maps are, and the second of two are a depth map for the photo; every other one is a new photo,
/// whose depth is found as always. Throws Error for what is no picture.
app::InputOptions withDropped(app::InputOptions input, const std::vector<std::string>& files);

/// Reads, decodes and plans, and remembers what it decoded last. On one thread at a time.
class Preparing {
  public:
    using Step = std::function<void(const char* what)>;

    /// Throws Error and what `step` throws.
    Prepared prepare(const PrepareRequest& request, const Step& step);

  private:
    struct Decoded {
        std::string photo, depth;
        Tuning tuning;
        Size wanted;        ///< that it was decoded for
        double zoom = 1.0;  ///< that it was decoded for
        app::InputOptions options;
        app::DepthSource source;
        app::Input input;
    };
    const Decoded& decoded(const PrepareRequest& request, const Step& step);

    // One each for two tunings that are compared.
    static constexpr size_t kMostDecoded = 2;
    std::list<Decoded> m_decoded;  ///< the newest first
};

}  // namespace quorvane::tuner

#endif
