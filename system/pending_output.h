#ifndef QUORVANE_SYSTEM_PENDING_OUTPUT_H
#define QUORVANE_SYSTEM_PENDING_OUTPUT_H

#include <string>

namespace quorvane {

/// A file in the making: written beside its place under a temporary name, and moved there whole. Until
/// `commit`, the destructor removes it, so that a failure leaves nothing behind. Where `path` is a symbolic
/// link, its place is where the link leads.
class PendingOutput {
  public:
    /// Makes the temporary file, empty. Throws Error when the folder that `path` lies in does not exist or
    /// cannot be written, or `path` is a folder or anything else but a file.
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
    std::string m_place;
    std::string m_temporary;
};

/// Where `path` leads, there or not: `path` itself unless it is a symbolic link. Throws Error for links that
/// go round in circles.
std::string placeOf(std::string path);

/// Throws Error, under the name `path`, unless the folder that `place` lies in exists.
void requireFolderFor(const std::string& place, const std::string& path);

/// A path beside `path`, hidden and of the same extension, another one on every call. Something may stand
/// there already.
std::string temporaryBeside(const std::string& path);

}  // namespace quorvane

#endif
