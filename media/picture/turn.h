#ifndef QUORVANE_MEDIA_PICTURE_TURN_H
#define QUORVANE_MEDIA_PICTURE_TURN_H

#include "media/embedded/orientation.h"
#include "media/picture/image.h"

namespace quorvane::media {

/// What a turn does, and its short name.
struct TurnWords {
    const char* done;
    const char* name;
};
constexpr TurnWords kTurnWords[kTurns] = {{"left", "0"},
                                          {"mirrored left to right", "mirror"},
                                          {"mirrored top to bottom", "flip"},
                                          {"turned by 180 degrees", "180"},
                                          {"transposed", "transpose"},
                                          {"turned clockwise by 270 degrees", "270"},
                                          {"turned clockwise by 90 degrees", "90"},
                                          {"transposed across the other diagonal", "transverse"}};

template <typename Sample>
Image<Sample, 1> turned(const Image<Sample, 1>& plane, Turn turn) {
    const bool transposed = (turn & kTransposed) != 0;
    Image<Sample, 1> out(transposed ? plane.height : plane.width, transposed ? plane.width : plane.height);
    Sample* next = out.samples.data();
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x) {
            int from_x = transposed ? y : x, from_y = transposed ? x : y;
            if ((turn & kMirrored) != 0) from_x = plane.width - 1 - from_x;
            if ((turn & kFlipped) != 0) from_y = plane.height - 1 - from_y;
            *next++ = plane.at(from_x, from_y);
        }
    return out;
}

}  // namespace quorvane::media

#endif
