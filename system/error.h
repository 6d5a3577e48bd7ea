#ifndef QUORVANE_SYSTEM_ERROR_H
#define QUORVANE_SYSTEM_ERROR_H

#include <stdexcept>
#include <string>

namespace quorvane {

/// A failure that a user can read: one line that names the file and says what was wrong with it.
class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace quorvane

#endif
