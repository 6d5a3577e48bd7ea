#ifndef QUORVANE_APPS_DRAWING_STEREO_H
#define QUORVANE_APPS_DRAWING_STEREO_H

#include <string>
#include <vector>

#include "apps/quorvane/drawing/motion.h"
#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::app {

/// How the views of one moment come to one picture.
enum class StereoKind {
    kSideBySide,
    kHalfSideBySide,
    kTopBottom,
    kCross,
    kAnaglyph,
    kWiggle,
    kQuilt,
    kDepthBrightNear,
    kDepthDarkNear,
};

struct StereoKindInfo {
    StereoKind kind;
    const char* word;     ///< as --stereo takes it; of a quilt what stands before its tiles
    const char* meaning;  ///< for the help
    const char* suffix;   ///< by which players know it, such as "_SBS"; of a quilt how that begins
};

/// All of them.
const std::vector<StereoKindInfo>& stereoKinds();

struct Stereo {
    StereoKind kind = StereoKind::kSideBySide;
    int columns = 1, rows = 1;  ///< of a quilt's tiles
    double eyes = 1.0;          ///< how far the outermost views stand from the middle, in view positions
};

/// Whether it shows the depth map next to the photo, and whether each of its pictures has the views of
/// several eyes.
bool showsDepth(const Stereo& stereo);
bool hasEyes(const Stereo& stereo);

/// "sbs", "quilt:8x6" and so on, of --stereo: 2 to 256 tiles of a quilt. Throws UsageError.
Stereo parseStereo(const std::string& text);

/// The size of the picture that views of `view` pixels make.
Size joinedSize(const Stereo& stereo, Size view);

/// A view's size of `view` or a little less whose picture has sides that the layout, and, with `even`, an
/// encoder of even sides can take.
Size joinableSize(const Stereo& stereo, Size view, bool even);

/// The longer side that a view has by default: as large as is usual, and a quilt 4096 pixels at most.
int usualLongestView(const Stereo& stereo, Size photo, int longest);

/// What players know such a picture by, for the end of its name: "_SBS", "_qs8x6a0.75". Empty where there is
/// no such custom.
std::string stereoSuffix(const Stereo& stereo, Size view);

/// `path` with the suffix before its extension; as it is where it has it already, in whatever case.
std::string withSuffix(const std::string& path, const std::string& suffix);

/// A place that a picture is drawn from.
struct StereoView {
    Position position;
    bool shows_depth = false;  ///< in place of the photo
};

/// The views around a position, in the order in which `join` takes them: the left eye's first.
std::vector<StereoView> viewsAround(const Stereo& stereo, Position middle);

/// `path` with its ways to the sides shortened as far as it takes for both eyes to stay within -1..1. The
/// distance between the eyes stays. Shortened as a whole, so that no motion halts at its ends.
double sideShare(const std::vector<Position>& path, double eyes);
std::vector<Position> withShare(std::vector<Position> path, double share);

/// Where the eyes are on that path, at least so many places that no other view shows more of the border.
std::vector<Position> eyesOn(const std::vector<Position>& path, const Stereo& stereo);

/// The frames of a wiggle: the left and the right eye's position in turn. `frames` is even.
std::vector<Position> wiggled(Position middle, double eyes, int frames);

/// Joins the views that viewsAround gives, all of one size. `out` may hold an earlier picture.
void join(const Stereo& stereo, const std::vector<const media::RgbaImage*>& views, media::RgbaImage* out);

}  // namespace quorvane::app

#endif
