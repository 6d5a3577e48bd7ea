#include "apps/tuner/core/workbench.h"

#include <algorithm>
#include <cmath>

#include "apps/quorvane/drawing/motion_timing.h"

namespace quorvane::tuner {

void Workbench::undo() {
    commit();
    tunings = m_history.undo();
}

void Workbench::redo() {
    commit();
    tunings = m_history.redo();
}

void Workbench::begin(const Pair& pair) {
    tunings = pair;
    m_history = History<Pair>(pair);
}

void Workbench::copyToOther() { tunings[1 - active] = tunings[active]; }

app::Motion Workbench::motion(const Tuning& tuning) const {
    if (source == Source::kRecorded && !hand.empty()) return hand.motion();
    return app::parseMotion(tuning.motion);
}

int Workbench::frames(const Tuning& tuning) const {
    if (source != Source::kRecorded || hand.empty()) return tuning.frames;
    app::ClipTiming timing;
    timing.fps = tuning.fps;
    return app::countFrames(timing, hand.motion().seconds).frames;
}

double Workbench::loopSeconds() const { return static_cast<double>(frames()) / tuning().fps; }

app::Position Workbench::frameAt(int frame) const {
    const std::vector<app::Position> loop = app::loopAround({}, motion(), amount(tuning()), frames());
    return loop[static_cast<size_t>(std::clamp(frame, 0, frames() - 1))];
}

app::Position Workbench::placeNow() const {
    // A loop of a single frame at the phase.
    app::Motion now = motion();
    now.place = [place = now.place, at = phase](double) { return place(at); };
    return app::loopAround({}, now, amount(tuning()), 1).front();
}

void Workbench::advance(double seconds) {
    if (!playing) return;
    phase += seconds / loopSeconds();
    phase -= std::floor(phase);
}

int Workbench::frame() const { return static_cast<int>(std::lround(phase * frames())) % frames(); }

void Workbench::goToFrame(int frame) {
    const int count = frames();
    phase = static_cast<double>(((frame % count) + count) % count) / count;
}

double Workbench::amount(const Tuning& tuning) const {
    return source == Source::kRecorded ? 1.0 : tuning.amount;
}

Tuning Workbench::exported() const {
    Tuning result = tuning();
    result.amount = amount(result);
    result.frames = frames(result);
    return result;
}

std::vector<app::Position> Workbench::path(const Tuning& tuning) const {
    if (source == Source::kHand) return app::pathEverywhere(tuning.amount);
    return app::pathAround({}, motion(tuning), amount(tuning), frames(tuning));
}

}  // namespace quorvane::tuner
