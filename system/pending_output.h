#ifndef QUORVANE_SYSTEM_PENDING_OUTPUT_H
#define QUORVANE_SYSTEM_PENDING_OUTPUT_H

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "system/descriptor.h"

namespace quorvane {

/// As a path: standard output.
inline constexpr std::string_view kStandardOutput = "-";

/// Writes all of `bytes` to a file or a pipe. Throws Error, under the name `name`, and Cancelled after a
/// signal.
void writeAll(int descriptor, std::string_view bytes, const std::string& name);

/// A file in the making, which appears at its place whole or not at all. Until `commit` it has no name where
/// the file system can do that, so that even a process that is killed leaves nothing behind; elsewhere it has
/// a temporary one beside its place, which the destructor removes. Where `path` is a symbolic link, its place
/// is where the link leads.
class PendingOutput {
  public:
    /// Makes the file, empty. Throws Error when the folder that `path` lies in does not exist or cannot be
    /// written, or `path` is a folder or anything else but a file.
    explicit PendingOutput(std::string path);
    /// The same, but "-" stands for `stream`: the file is in memory until `commit` writes it there.
    PendingOutput(std::string path, int stream);
    ~PendingOutput();

    PendingOutput(const PendingOutput&) = delete;
    PendingOutput& operator=(const PendingOutput&) = delete;

    /// The place's name for messages, as it was given.
    const std::string& path() const noexcept { return m_path; }

    /// Where to write: for this process, and for any that has `descriptor` open under the same number.
    const std::string& temporary() const noexcept { return m_temporary; }

    /// The file, open for reading and writing.
    int descriptor() const noexcept { return m_file.number(); }

    /// Writes the whole file. Throws Error.
    void fill(std::string_view bytes);

    /// Bytes that have been written.
    int64_t size() const;

    bool empty() const { return size() == 0; }

    /// Moves the file to its place, replacing what is there, once the disk has it. It gets the mode of the
    /// file that it replaces, and otherwise what the umask leaves of 0666. Throws Error.
    void commit();

  private:
    bool openUnnamed(mode_t mode);
    void openNamed(mode_t mode);
    bool moveToPlace();
    void copyToStream();

    std::string m_path;
    std::string m_place;
    Descriptor m_file;
    std::string m_temporary;
    bool m_named = false;  ///< and to be removed
    int m_stream = -1;     ///< instead of a place
    mode_t m_mode = 0;     ///< of a new file
};

/// Where `path` leads, there or not: `path` itself unless it is a symbolic link. Throws Error for links that
/// go round in circles.
std::string placeOf(std::string path);

/// Throws Error, under the name `path`, unless the folder that `place` lies in exists.
void requireFolderFor(const std::string& place, const std::string& path);

/// The file that a hidden one of this name was to become where a killed process has left it behind: "a.mp4"
/// for
/// ".a.123-1.mp4", as temporaryBeside makes them. Empty for all other names.
std::string nameOfLeftover(const std::string& name);

/// A path beside `path`, hidden and of the same extension, another one on every call. Something may stand
/// there already.
std::string temporaryBeside(const std::string& path);

/// Returns once the disk has all that was written to the file `descriptor`; false, and errno says why, where
/// some of it is lost.
bool reachesDisk(int descriptor) noexcept;

}  // namespace quorvane

#endif
