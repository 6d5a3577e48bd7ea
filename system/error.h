#ifndef QUORVANE_SYSTEM_ERROR_H
#define QUORVANE_SYSTEM_ERROR_H

#include <exception>
#include <stdexcept>

namespace quorvane {

/// A failure that a user can read: one line that names the file and says what was wrong with it.
class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A signal has asked for the end. No Error: what deals with a failure does not deal with this, so that it
/// reaches the program's main from wherever it is thrown.
class Cancelled : public std::exception {
  public:
    const char* what() const noexcept override { return "interrupted"; }
};

}  // namespace quorvane

#endif
