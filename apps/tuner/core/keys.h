#ifndef QUORVANE_APPS_TUNER_CORE_KEYS_H
#define QUORVANE_APPS_TUNER_CORE_KEYS_H

#include <string>
#include <utility>
#include <vector>

namespace quorvane::tuner {

/// The window's keys and what they do, for its list of them, the help and the manual page.
const std::vector<std::pair<std::string, std::string>>& keys();

}  // namespace quorvane::tuner

#endif
