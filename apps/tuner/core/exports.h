#ifndef QUORVANE_APPS_TUNER_CORE_EXPORTS_H
#define QUORVANE_APPS_TUNER_CORE_EXPORTS_H

#include <string>

#include "apps/tuner/core/tuning.h"

namespace quorvane::tuner {

/// A tuned picture, for texts that draw it elsewhere.
struct Exported {
    Tuning tuning;
    LibParam values;        ///< all parameters as they are drawn with
    std::string photo;      ///< path
    std::string depth;      ///< path; empty: it is found by the photo
    bool has_hand = false;  ///< whether a motion was recorded
    std::string folder;     ///< path of what is exported; empty: where the lines are run
};

constexpr char kProfileFile[] = "profile.json";
constexpr char kHandFile[] = "hand.jsonl";

/// `quorvane render` for the same clip, for a shell: one line.
std::string commandLine(const Exported& exported);

/// The same by way of the exported profile.
std::string profileCommandLine(const Exported& exported);

/// A shell script for the folder, which makes the clip there from wherever it is run.
std::string renderScript(const Exported& exported);

/// An `adb shell setprop` line for each parameter.
std::string setpropLines(const Exported& exported);

/// A file with a function that shows a photo in a ParallaxView.
std::string cppSnippet(const Exported& exported);

/// Statements for a ParallaxPhotoView `view`.
std::string javaSnippet(const Exported& exported);

/// A word for a POSIX shell, quoted where it has to be.
std::string shellWord(const std::string& word);

}  // namespace quorvane::tuner

#endif
