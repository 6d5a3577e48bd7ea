#ifndef QUORVANE_APPS_TUNER_CORE_WORKBENCH_H
#define QUORVANE_APPS_TUNER_CORE_WORKBENCH_H

#include <array>
#include <vector>

#include "apps/tuner/core/history.h"
#include "apps/tuner/core/recording.h"
#include "apps/tuner/core/tuning.h"

namespace quorvane::tuner {

/// What is shown of the two tunings.
enum class Show { kOne, kSplit, kDifference };

/// What moves the view.
enum class Source { kHand, kMotion, kRecorded };

/// The two tunings that are compared.
using Pair = std::array<Tuning, 2>;

/// Everything that a session is about, without the window.
class Workbench {
  public:
    app::InputOptions input;
    Pair tunings;
    size_t active = 0;  ///< which of them is changed, and shown where only one is
    Show show = Show::kOne;
    double split = 0.5;  ///< how much of the picture's left is A

    Source source = Source::kHand;
    bool idles = true;    ///< whether the motion goes on by itself while the hand rests
    bool playing = true;  ///< of a motion or what was recorded
    double phase = 0.0;   ///< of its loop, 0 to 1
    Recording hand;       ///< what was recorded, or drawn as a path
    std::vector<app::Position> path_points;

    Tuning& tuning() { return tunings[active]; }
    const Tuning& tuning() const { return tunings[active]; }

    /// What has been changed since the last call becomes one step to go back.
    void commit() { m_history.add(tunings); }
    bool canUndo() const { return m_history.canUndo() || !(tunings == m_history.present()); }
    bool canRedo() const { return m_history.canRedo(); }
    void undo();
    void redo();

    /// Begins again with these, as a program that has just been started.
    void begin(const Pair& pair);

    /// The active tuning goes to the other one.
    void copyToOther();

    /// Shows the other one.
    void flip() { active = 1 - active; }

    /// Of the motion, or of what was recorded where that moves the view.
    app::Motion motion() const { return motion(tuning()); }
    app::Motion motion(const Tuning& tuning) const;

    /// How far that swings: what was recorded goes as far as the hand went.
    double amount(const Tuning& tuning) const;

    /// The frames of a loop of it.
    int frames() const { return frames(tuning()); }
    int frames(const Tuning& tuning) const;
    double loopSeconds() const;

    /// The position of a frame of the loop, as the command line draws it.
    app::Position frameAt(int frame) const;

    /// The position at the phase, between frames too.
    app::Position placeNow() const;

    /// Goes on by `seconds` where something plays.
    void advance(double seconds);

    /// The frame that is nearest to the phase.
    int frame() const;
    void goToFrame(int frame);

    /// The active tuning for a command line that is given what was recorded: it goes as far and takes as
    /// long.
    Tuning exported() const;

    /// All that the view of a tuning can be at.
    std::vector<app::Position> path(const Tuning& tuning) const;

  private:
    History<Pair> m_history{Pair()};
};

}  // namespace quorvane::tuner

#endif
