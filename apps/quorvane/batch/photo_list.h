#ifndef QUORVANE_APPS_BATCH_PHOTO_LIST_H
#define QUORVANE_APPS_BATCH_PHOTO_LIST_H

#include <string>
#include <vector>

#include "apps/quorvane/commands/render.h"

namespace quorvane::app {

/// Where the photos of a batch come from: exactly one of `inputs`, `list` and `manifest`.
struct PhotoListOptions {
    std::vector<std::string> inputs;  ///< photos, and folders of photos
    std::string list;                 ///< a file with a path on each line, "-" for standard input
    bool ends_in_nul = false;         ///< paths of `list` end in a zero byte instead of a line's end
    std::string manifest;             ///< JSON lines, "-" for standard input
    std::string out;                  ///< a folder, or a path in which {name} stands for a photo's name
};

/// A photo and what is to be made of it.
struct BatchPhoto {
    std::string photo;
    std::string depth;  ///< empty: not given
    std::string output;
    std::string name;                  ///< of the output, below the folder that all outputs lie in
    std::vector<std::string> options;  ///< of `render`, as words of a command line

    /// The command line of `render` behind its name.
    std::vector<std::string> words() const;
};

/// The folder that all outputs of `out` lie in.
std::string outputFolder(const std::string& out);

/// Whether `out` is called as a file of a format that is written, and neither is a folder nor has {name} in
/// it.
bool namesOneFile(const std::string& out);

/// The photos in the order that they are given in; those of a folder by name, without depth maps called after
/// another photo there. `options` go for all, unless a line of a manifest says otherwise. Throws Error where
/// a list or a folder cannot be read, and UsageError where a manifest's line is none.
std::vector<BatchPhoto> listPhotos(const PhotoListOptions& list, const std::vector<std::string>& options);

/// Calls an output that has no name yet after its photo.
void nameOutput(const PhotoListOptions& list, const OutputEnding& ending, BatchPhoto* photo);

/// Throws UsageError where an output would replace another one or an input.
void refuseCollisions(const std::vector<BatchPhoto>& photos);

}  // namespace quorvane::app

#endif
