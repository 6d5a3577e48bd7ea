#ifndef QUORVANE_APPS_COMMANDS_OUTPUT_GUARD_H
#define QUORVANE_APPS_COMMANDS_OUTPUT_GUARD_H

#include <string>
#include <vector>

#include "media/clip/output_format.h"

namespace quorvane::app {

/// Throws UsageError where one of `outputs` is "-", the usual name of standard output, which nothing is
/// written to.
void refuseStandardOutput(const std::vector<std::string>& outputs);

/// Whether `path` names a still or a folder. Throws UsageError, which says `otherwise`, unless it is a .png
/// file or a folder; "-" is neither.
media::OutputKind pngOrFolder(const std::string& path, const std::string& otherwise);

/// Throws UsageError, which says `otherwise`, unless `path` names a .png file.
void requirePng(const std::string& path, const std::string& otherwise);

/// Throws Error where nothing can be written to `path`, a folder or a file; where `force` would help, that it
/// replaces `replaced`. To be asked before any work is done.
void requirePlace(const std::string& path, bool is_folder, bool force, const std::string& replaced);

// No output replaces an input, whatever links lead there. Empty paths name nothing.

/// Throws Error where one of `outputs` is one of `inputs`.
void refuseInputAsOutput(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs);

/// Throws Error where an input lies in `folder` under a frame's name, which would be replaced.
void refuseInputAsFrame(const std::vector<std::string>& inputs, const std::string& folder);

/// Throws UsageError where two outputs are one file, there or not; `what` names both, as in "photo and depth
/// map".
void refuseSameOutput(const std::string& one, const std::string& other, const std::string& what);

}  // namespace quorvane::app

#endif
