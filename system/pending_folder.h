#ifndef QUORVANE_SYSTEM_PENDING_FOLDER_H
#define QUORVANE_SYSTEM_PENDING_FOLDER_H

#include <functional>
#include <string>

#include "system/descriptor.h"
#include "system/error.h"

namespace quorvane {

/// A folder holds files, and was not to be written into.
class FolderNotEmpty : public Error {
  public:
    using Error::Error;
};

/// Files that appear in a folder together: all are written elsewhere first, so that a command that fails
/// leaves nothing behind. Where `path` is a symbolic link, the folder is where the link leads.
class PendingFolder {
  public:
    /// The files wait in a folder that is hidden in the one to be filled, with temporaryBeside's name of
    /// this.
    static constexpr const char* kStem = "files";

    /// Throws Error where the folder cannot be written or is a file, and, unless `into_others`,
    /// FolderNotEmpty where it holds something.
    PendingFolder(const std::string& path, bool into_others);
    ~PendingFolder();

    PendingFolder(const PendingFolder&) = delete;
    PendingFolder& operator=(const PendingFolder&) = delete;

    /// Makes a file of this name, has `write` fill it and returns once the disk has it. `write` throws Error
    /// with the second argument, the name for messages. From any thread.
    void add(const std::string& name, const std::function<void(int descriptor, const std::string&)>& write);

    /// Moves all files to the folder, which is made if it is not there, replacing files of their names. Other
    /// files there are removed if `is_old` says so. Throws Error.
    void commit(const std::function<bool(const std::string& name)>& is_old);

  private:
    std::string m_path;
    std::string m_place;    ///< where the path leads
    bool m_was_there;       ///< before this
    std::string m_pending;  ///< empty once all is moved
};

}  // namespace quorvane

#endif
