#ifndef QUORVANE_TESTS_TUNER_DROP_H
#define QUORVANE_TESTS_TUNER_DROP_H

#include <string>
#include <vector>

namespace quorvane::test {

/// Drops files on a window of an X display at a place of the screen, as a file manager does: by XDND. False
/// where the window does not take them.
bool dropFiles(const std::string& display, unsigned long window, int x, int y,
               const std::vector<std::string>& paths);

}  // namespace quorvane::test

#endif
