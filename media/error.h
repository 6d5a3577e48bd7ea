#ifndef QUORVANE_MEDIA_ERROR_H
#define QUORVANE_MEDIA_ERROR_H

#include <stdexcept>
#include <string>

namespace quorvane::media {

/// A failure that a user can read: one line that names the file and says what was wrong with it.
class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace quorvane::media

#endif
