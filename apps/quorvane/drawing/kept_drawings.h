#ifndef QUORVANE_APPS_DRAWING_KEPT_DRAWINGS_H
#define QUORVANE_APPS_DRAWING_KEPT_DRAWINGS_H

#include <map>
#include <memory>
#include <vector>

#include "apps/quorvane/drawing/frame_queue.h"
#include "apps/quorvane/drawing/motion.h"

namespace quorvane::app {

/// Drawings of frames that are seen again from the same place, as half of those of a loop from side to side
/// and back are: they need not be drawn again.
class KeptDrawings {
  public:
    /// Of the frames that are seen from these positions, `most` drawings at a time.
    KeptDrawings(const std::vector<Position>& positions, int most);

    /// What an earlier frame looked like that is seen from the same place as frame `number`, if it was kept;
    /// else null. It is kept no longer.
    std::shared_ptr<Drawing> take(int number);

    /// Keeps what frame `number` looks like, if there will be another and no more urgent ones fill the room.
    void keep(int number, std::shared_ptr<Drawing> drawing);

  private:
    static constexpr int kNever = -1;

    const size_t m_most;
    std::vector<int> m_next;                         ///< after each frame, that looks like it
    std::map<int, std::shared_ptr<Drawing>> m_kept;  ///< by the frame that they are kept for
};

}  // namespace quorvane::app

#endif
