#ifndef QUORVANE_MEDIA_PENDING_OUTPUT_H
#define QUORVANE_MEDIA_PENDING_OUTPUT_H

#include <string>

namespace quorvane::media {

/// A file or folder in the making: written beside its place under a temporary name, and moved there whole.
/// Until `commit`, the destructor removes it, so that a failure leaves nothing behind.
class PendingOutput {
  public:
    /// Throws Error when the folder that `path` lies in does not exist, or `path` is a folder.
    explicit PendingOutput(std::string path);
    ~PendingOutput();

    PendingOutput(const PendingOutput&) = delete;
    PendingOutput& operator=(const PendingOutput&) = delete;

    /// Where to write; ends in the same extension as `path`.
    const std::string& temporary() const { return m_temporary; }

    /// Moves the file to its place, replacing what is there. Throws Error.
    void commit();

  private:
    std::string m_path;
    std::string m_temporary;
};

/// A path beside `path`, hidden and of the same extension, that no other run uses.
std::string temporaryBeside(const std::string& path);

}  // namespace quorvane::media

#endif
