#ifndef QUORVANE_APPS_BATCH_FINISHED_H
#define QUORVANE_APPS_BATCH_FINISHED_H

#include <map>
#include <set>
#include <string>
#include <utility>

#include "apps/quorvane/batch/photo_list.h"
#include "apps/quorvane/batch/shard.h"
#include "system/descriptor.h"

namespace quorvane::app {

/// SHA-256 of files, each of which is read once as long as it stays as it is.
class Digests {
  public:
    /// Of a file, or of a folder's files and their names, in hexadecimal. Throws Error, and Cancelled after a
    /// signal.
    const std::string& of(const std::string& path);

  private:
    struct Known {
        long long size;
        long long changed;  ///< in nanoseconds
        std::string digest;
    };
    std::map<std::string, Known> m_known;
};

/// What a photo's output depends on, as one text: the contents of the photo, of its depth map and of every
/// file that an option names, the options, the output's name and the program's version. Throws Error, and
/// Cancelled after a signal.
std::string keyOf(const BatchPhoto& photo, Digests* digests);

/// Which outputs in a folder are finished: an index that outlives the process, one for each shard.
class Finished {
  public:
    /// Opens the shard's index, empty unless `resumes`; then those of all shards are read. Throws Error where
    /// it cannot be written, and where another batch still writes it after five seconds.
    Finished(const std::string& folder, Shard shard, bool resumes);

    /// Whether the output at `path` was made from what `key` says, and stands there unchanged.
    bool has(const std::string& key, const std::string& path) const;

    /// The output of `key` is about to be made where nothing stands. Throws Error.
    void begin(const std::string& key);

    /// Whether an earlier batch was about to make it: one that was killed may have left it whole and unnoted.
    bool begun(const std::string& key) const { return m_begun.count(key) > 0; }

    /// The output at `path` has been made. Throws Error.
    void add(const std::string& key, const std::string& path);

    /// The index is locked by whoever has this file open.
    int descriptor() const { return m_file.number(); }

  private:
    Descriptor m_file;
    std::set<std::pair<std::string, std::string>> m_made;  ///< keys, and digests of what was made
    std::set<std::string> m_begun;                         ///< keys
};

/// Appends a line to a file, in one piece. Throws Error.
void appendLine(int descriptor, const std::string& line, const std::string& name);

/// Opens a file for appendLine, as it is. Throws Error.
Descriptor openLines(const std::string& path);

/// Keeps `all` whole lines of such a file, or none. Throws Error.
void keepLines(int descriptor, bool all, const std::string& name);

}  // namespace quorvane::app

#endif
