#ifndef QUORVANE_APPS_INPUT_DEPTH_SOURCE_H
#define QUORVANE_APPS_INPUT_DEPTH_SOURCE_H

#include <string>
#include <vector>

#include "apps/quorvane/commands/commands.h"
#include "media/depth/depth_doctor.h"
#include "media/embedded/embedded.h"
#include "media/picture/image.h"
#include "media/picture/picture_file.h"

namespace quorvane::app {

enum class DepthOrigin {
    kInside,      ///< the photo's file
    kGiven,       ///< a file that the user named
    kNeighbour,   ///< a file that is called after the photo
    kCommand,     ///< the user's estimator
    kSideBySide,  ///< a half of the photo
    kNone,
};

/// A photo's file, and where the depth was found. Nothing of it is decoded yet.
struct DepthSource {
    std::string file;  ///< bytes
    media::Contents contents;
    DepthOrigin origin = DepthOrigin::kNone;
    std::string depth;  ///< path, of kGiven and kNeighbour
};

/// Both images, upright, as the user wants them.
struct Input {
    media::RgbImage photo;
    media::DepthMap depth;  ///< larger = nearer
    std::vector<media::Finding> findings;
    std::vector<std::string> remarks;  ///< on what was inside and could not be used as it should be
};

/// What the options name comes first, then what is inside the file, then a neighbour. Throws Error
/// where the photo's file cannot be read or is no picture; a signal meanwhile ends the process.
DepthSource findDepth(const InputOptions& options);

/// The doctor's line, with the option that puts right what the doctor has left alone.
std::string textOf(const media::Finding& finding);

/// One line for a photo without depth: what was looked for, what was damaged, and why there may be none.
std::string noDepthInside(const media::Contents& contents);

/// The same, with what was looked for beside the photo, and what to do.
std::string noDepthAnywhere(const media::Contents& contents, const std::string& photo);

/// Both images, the depth turned and inverted as the options say and then checked by the doctor. With depth
/// from inside goes the unblurred photo where the file has one, with any other the file's own picture. A
/// signal while it decodes ends the process. Throws Error, also where there is no depth.
Input readInput(const InputOptions& options, const DepthSource& source);

/// The same, and tells standard error what the user did not ask for by name and, when told to, what was read.
Input readInput(const ViewOptions& options, const DepthSource& source);

}  // namespace quorvane::app

#endif
