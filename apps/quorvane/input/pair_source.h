#ifndef QUORVANE_APPS_INPUT_PAIR_SOURCE_H
#define QUORVANE_APPS_INPUT_PAIR_SOURCE_H

#include <optional>
#include <string>
#include <vector>

#include "apps/quorvane/terminal/command_line.h"
#include "media/embedded/embedded.h"
#include "media/picture/image.h"
#include "media/picture/picture_file.h"

namespace quorvane::app {

/// What a user says of a stereo pair: at most one of them.
struct PairOptions {
    std::string right;                        ///< path of the right eye's view; empty: not given
    std::optional<media::PairLayout> layout;  ///< of both views in the photo's file

    bool given() const { return !right.empty() || layout; }
};

/// Adds --right and --pair, which exclude each other and `others`.
void addPairOptions(CommandLine* line, PairOptions* options, const std::vector<const Option*>& others);

/// How a picture says by its name that it holds two views: NAME.jps and NAME.pns have the right one first,
/// and others end in _sbs, _lr, _left_right, _rl, _right_left, _hsbs, _half_sbs, _tb, _ou, _htb, _half_tb,
/// _hou or _half_ou, in any case, with - or . for _.
std::optional<media::PairLayout> layoutInName(const std::string& path);

/// The pair of a photo: what the options say, else what its file was found to hold, else what its name says.
/// Reads the right view's file. Throws Error where that is no picture.
std::optional<media::StereoPair> findPair(const PairOptions& options, const std::string& photo,
                                          const media::Contents& contents);

/// A pair's left view and its depth.
struct PhotoOfPair {
    media::RgbImage photo;
    media::DepthMap depth;
    std::vector<std::string> remarks;
};

/// Decodes both views of the photo's file, and matches them. Throws Error with one line where they are no
/// pair.
PhotoOfPair readPair(const std::string& file, const media::StereoPair& pair, const std::string& name);

/// One line on an anaglyph, which no option reads.
std::string anaglyphLine();

}  // namespace quorvane::app

#endif
