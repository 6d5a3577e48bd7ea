#ifndef QUORVANE_APPS_DRAWING_MOTION_H
#define QUORVANE_APPS_DRAWING_MOTION_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorvane::app {

/// Where the picture is seen from, and how closely.
struct Position {
    double x = 0.0;     ///< -1 from the left .. 1 from the right
    double y = 0.0;     ///< -1 from below .. 1 from above
    double zoom = 1.0;  ///< everything is drawn so many times as large: kLeastZoom to kMostZoom of the host
};

/// "X,Y" of --at: both -1 to 1. Throws UsageError.
Position parsePosition(const std::string& text);

/// A way for the view to go.
struct Motion {
    std::string text;                       ///< as it was asked for
    std::function<Position(double)> place;  ///< from 0, where it begins, to 1, where it begins again
    std::vector<std::string> names;         ///< of motions() where it joins these alone, else empty
    int legs = 1;          ///< of equal length; between them, and only there, it stands still
    double seconds = 0.0;  ///< that it takes by itself; 0 where any time will do
    /// The same from its beginning to its end, where that is another place; without one `place` goes there.
    std::shared_ptr<const Motion> one_way;
    bool once = false;  ///< `place` ends at 1 and is no loop
};

/// A motion that has a name.
struct NamedMotion {
    const char* name;
    const char* meaning;
    const char* expression;  ///< as parseMotion takes it
};

/// All of them; the first is the usual one.
const std::vector<NamedMotion>& motions();

/// What --motion takes: names, expressions, or both, joined by blanks or '+' where each moves something else.
///
///   sway+zoom                        names
///   x=sin(1) y=0.5cos(2)             an axis - x, y or zoom - and what it does: numbers and waves, added
///   x=0.8sin(-1)-0.1sin(3,0.25)      a wave: height, whole cycles a loop, below 0 backwards, and by how much
///                                    of a cycle it is ahead
///   -1,0 1,0 0,0.5,1.2               points, X,Y or X,Y,ZOOM: it stands still at each
///
/// x and y stay within -1 and 1, zoom within kLeastZoom and kMostZoom of the host. Every such motion is a
/// loop without a seam. Throws UsageError, which names the place in `text`.
Motion parseMotion(const std::string& text);

/// From 0 to 1 as `part` goes there, at rest at both ends: faster and faster in the first `ramp` of the time,
/// above 0 to 0.5, then at the same speed, and slower and slower in the last.
double softly(double part, double ramp);

/// The positions of the motion's `frames` frames around `centre`, with `amount` of its swing and zoom.
std::vector<Position> loopAround(Position centre, const Motion& motion, double amount, int frames);

/// Places so close together on such a loop that what holds from all of them holds in between, and those of
/// its frames.
std::vector<Position> pathAround(Position centre, const Motion& motion, double amount, int frames);

/// Places all over the square that a view stays in which a hand moves `amount` times as far as it could.
std::vector<Position> pathEverywhere(double amount);

/// The most that any of these is drawn larger by; 1 of none.
double closestZoom(const std::vector<Position>& path);

}  // namespace quorvane::app

#endif
