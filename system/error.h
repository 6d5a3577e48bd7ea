#ifndef QUORVANE_SYSTEM_ERROR_H
#define QUORVANE_SYSTEM_ERROR_H

#include <exception>
#include <stdexcept>
#include <string>

namespace quorvane {

/// A failure that a user can read: one line that names the file and says what was wrong with it.
class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One that says nothing of the files: the machine lacked something, such as room on a disk, and the same
/// work may succeed later or elsewhere.
class TemporaryError : public Error {
  public:
    using Error::Error;
};

/// A signal has asked for the end. No Error: what deals with a failure does not deal with this, so that it
/// reaches the program's main from wherever it is thrown.
class Cancelled : public std::exception {
  public:
    const char* what() const noexcept override { return "interrupted"; }
};

/// Whether one of errno's numbers is of a TemporaryError.
bool isTemporary(int reason) noexcept;

/// Throws "`what` (No space left on device)", where `reason` is one of errno's numbers: TemporaryError for
/// those of them, else Error.
[[noreturn]] void throwFor(const std::string& what, int reason);

}  // namespace quorvane

#endif
