#ifndef QUORVANE_APPS_INPUT_DEPTH_COMMAND_H
#define QUORVANE_APPS_INPUT_DEPTH_COMMAND_H

#include <string>
#include <vector>

#include "media/picture/picture_file.h"

namespace quorvane::app {

/// The words of a command line. Blanks part them; quotes and backslashes keep them together as a shell has
/// it, and nothing else is special. No shell is asked: the paths are put into whole words, so that whatever
/// they and the command's own quotes hold, a word stays one. Throws UsageError where a quote stays open, or
/// {in} or {out} occurs in no word.
std::vector<std::string> parseDepthCommand(const std::string& text);

/// Runs a user's depth estimator on a photo and reads the depth map that it writes. In its words, {in}
/// becomes a PNG file of the photo and {out} a .png file to write, both in a folder of their own that is gone
/// afterwards. Standard input is empty; what it prints goes to standard error. Throws Error when it
/// cannot be started, fails or writes no picture, and Cancelled after a signal, when it is killed.
media::DepthMap estimateDepth(const std::vector<std::string>& command, const media::RgbImage& photo);

}  // namespace quorvane::app

#endif
