#ifndef QUORVANE_SYSTEM_STANDARD_STREAMS_H
#define QUORVANE_SYSTEM_STANDARD_STREAMS_H

#include <optional>
#include <string>

#include "system/pending_output.h"

namespace quorvane {

/// Takes the places of standard streams that are closed: the next file that is opened would get such a place,
/// and what is printed would end up in that file. Writing to them fails as before. Standard output, unless it
/// is a terminal, holds a whole text, so that it is known why that cannot be written.
void fillStandardStreams();

/// Throws Error when something printed to standard output has not arrived.
void requireStandardOutput();

/// While it lives, standard output goes to `path`, or nowhere when that is empty: the renderer prints its
/// timing lines there, and a program's output is its own. A file appears whole on `commit`, or not at all;
/// a pipe or a device gets the lines as they come. Throws Error when `path` cannot be written.
class StandardOutputTo {
  public:
    explicit StandardOutputTo(const std::string& path);
    ~StandardOutputTo();

    StandardOutputTo(const StandardOutputTo&) = delete;
    StandardOutputTo& operator=(const StandardOutputTo&) = delete;

    /// The real standard output meanwhile.
    int descriptor() const { return m_saved; }

    /// Throws Error when something printed so far has not arrived.
    void require();

    /// Moves a file to its place. Throws Error, also when something has not arrived.
    void commit();

  private:
    std::string m_path;
    std::optional<PendingOutput> m_pending;
    int m_saved;
};

/// While it lives, standard error goes nowhere: some decoders print there what they think of a file, and a
/// failure is one line of ours.
class StandardErrorNowhere {
  public:
    StandardErrorNowhere();
    ~StandardErrorNowhere();

    StandardErrorNowhere(const StandardErrorNowhere&) = delete;
    StandardErrorNowhere& operator=(const StandardErrorNowhere&) = delete;

    /// The real standard error meanwhile.
    int descriptor() const { return m_saved; }

  private:
    int m_saved;
};

}  // namespace quorvane

#endif
