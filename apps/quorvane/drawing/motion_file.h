#ifndef QUORVANE_APPS_DRAWING_MOTION_FILE_H
#define QUORVANE_APPS_DRAWING_MOTION_FILE_H

#include <string>
#include <vector>

#include "apps/quorvane/drawing/motion.h"

// Motions in files: keyframes that somebody wrote, or a hand as a window or a phone recorded it. Each line is
// a JSON object, {"t":0.25,"x":0.5,"y":-0.2} with "zoom" where it is not 1.

namespace quorvane::app {

/// Where the view stands at a time.
struct Moment {
    double t = 0.0;  ///< seconds, from any beginning
    Position at;
};

/// The moments of a file's text, in which times rise and take no more than an hour; empty lines are nothing.
/// Of several at the same time the last counts. Throws Error, which names the line of file `name`.
std::vector<Moment> parseMoments(const std::string& text, const std::string& name);

/// The same of a file, at most 16 MB. Throws Error.
std::vector<Moment> readMoments(const std::string& path);

/// A line of such a file, with its end.
std::string lineOf(const Moment& moment);

/// Smoothly through all of them, at least one, and never beyond two that follow each other. Where the last
/// one is not where the first one is, a loop takes 0.8 seconds for each unit of the way back, at least 0.4.
Motion motionThrough(const std::vector<Moment>& moments, const std::string& text);

}  // namespace quorvane::app

#endif
