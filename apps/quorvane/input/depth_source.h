#ifndef QUORVANE_APPS_INPUT_DEPTH_SOURCE_H
#define QUORVANE_APPS_INPUT_DEPTH_SOURCE_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "apps/quorvane/input/input_options.h"
#include "apps/quorvane/terminal/talk.h"
#include "media/depth/depth_doctor.h"
#include "media/embedded/embedded.h"
#include "media/picture/image.h"
#include "media/picture/picture_file.h"
#include "sizes/sizes.h"
#include "system/error.h"

namespace quorvane::app {

enum class DepthOrigin {
    kInside,      ///< the photo's file
    kGiven,       ///< a file that the user named
    kNeighbour,   ///< a file that is called after the photo
    kCommand,     ///< the user's estimator
    kModel,       ///< a network that the user has
    kSideBySide,  ///< a half of the photo
    kPair,        ///< two views of the scene
    kNone,
};

/// A photo's file, and where the depth was found. Nothing of it is decoded yet.
struct DepthSource {
    std::string file;  ///< bytes
    media::Contents contents;
    DepthOrigin origin = DepthOrigin::kNone;
    std::string depth;                      ///< path, of kGiven, kNeighbour and kModel
    std::optional<media::StereoPair> pair;  ///< whether its depth is wanted or not
};

/// Both images, upright, as the user wants them.
struct Input {
    media::RgbImage photo;
    Size photo_size;           ///< what `photo` has, or had before it was shrunk
    media::DepthMap depth;     ///< larger = nearer
    media::Polarity polarity;  ///< which end was near in the map as it is stored
    std::vector<media::Finding> findings;
    std::string belief;                ///< of kModel: what was taken for granted of the network
    std::vector<std::string> remarks;  ///< on what was inside and could not be used as it should be
};

/// Reads the photo's file and looks for its depth: first what the options name, then inside the file, then a
/// neighbour, then two views inside the file, or in its halves by its name. Throws Error where the file
/// cannot be read or is no picture, and UsageError for a size without a network. A signal meanwhile ends the
/// process.
DepthSource findDepth(const InputOptions& options);

/// The doctor's line, with the option that puts right what the doctor has left alone.
std::string textOf(const media::Finding& finding);

/// For a photo without depth inside: that there is none, and what was damaged.
std::string noDepthInside(const media::Contents& contents);

/// For a photo without depth inside or next to it: the same, where it was looked for, and what would be
/// accepted.
std::string noDepthAnywhere(const media::Contents& contents, const std::string& photo);

/// How much of the photo is wanted.
enum class PhotoDetail {
    kFull,     ///< or as much as is enough
    kPreview,  ///< shrunk while it is decoded where its format can be: enough for the doctor
};

/// For a photo of that size: how many pixels of it are enough, where it can be shrunk while it is decoded.
using EnoughPhoto = std::function<Size(Size photo)>;

/// Decodes both images; turns and inverts the depth as the options say, then has the doctor check it. The
/// photo is the file's own picture; for depth from inside, the unblurred original where the file has one. A
/// signal while it decodes ends the process. Throws Error, also where there is no depth.
Input readInput(const InputOptions& options, const DepthSource& source,
                PhotoDetail detail = PhotoDetail::kFull, const EnoughPhoto& enough = {});

/// The same, and prints notes to standard error: for a depth map that was guessed by its name and for what
/// was found or mended, unless told to be quiet; with -v for everything that was read.
Input readInput(const InputOptions& options, const Talk& talk, const DepthSource& source,
                const EnoughPhoto& enough = {});

/// The photo alone, with all of its pixels.
media::RgbImage readPhoto(const InputOptions& options, const DepthSource& source);

}  // namespace quorvane::app

#endif
