#ifndef QUORVANE_APPS_TUNER_CORE_HISTORY_H
#define QUORVANE_APPS_TUNER_CORE_HISTORY_H

#include <cstddef>
#include <utility>
#include <vector>

namespace quorvane::tuner {

/// States to go back to. A state that equals the present one is no step.
template <typename State>
class History {
  public:
    explicit History(State first) : m_states{std::move(first)} {}

    const State& present() const { return m_states[m_present]; }

    /// Makes a step; what had been undone is gone. The oldest of very many steps is forgotten.
    void add(const State& state) {
        if (state == present()) return;
        m_states.resize(m_present + 1);
        m_states.push_back(state);
        if (m_states.size() > kMostStates) m_states.erase(m_states.begin());
        m_present = m_states.size() - 1;
    }

    bool canUndo() const { return m_present > 0; }
    bool canRedo() const { return m_present + 1 < m_states.size(); }

    const State& undo() {
        if (canUndo()) --m_present;
        return present();
    }
    const State& redo() {
        if (canRedo()) ++m_present;
        return present();
    }

    static constexpr size_t kMostStates = 500;

  private:
    std::vector<State> m_states;
    size_t m_present = 0;
};

}  // namespace quorvane::tuner

#endif
