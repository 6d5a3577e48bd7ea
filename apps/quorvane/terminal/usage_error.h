#ifndef QUORVANE_APPS_TERMINAL_USAGE_ERROR_H
#define QUORVANE_APPS_TERMINAL_USAGE_ERROR_H

#include <stdexcept>

namespace quorvane::app {

/// Invalid arguments; exit code 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace quorvane::app

#endif
