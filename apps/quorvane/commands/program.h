#ifndef QUORVANE_APPS_COMMANDS_PROGRAM_H
#define QUORVANE_APPS_COMMANDS_PROGRAM_H

#include <functional>
#include <string>
#include <vector>

#include "apps/quorvane/commands/command.h"

namespace quorvane::app {

/// All commands of `quorvane`, and what it takes.
class Program {
  public:
    Program();

    const CommandLines& lines() const { return m_lines; }

    /// As CommandLines::parse.
    bool parse(int argc, const char* const* argv, size_t* chosen) {
        return m_lines.parse(argc, argv, chosen);
    }

    /// What to type for help on a line that begins with that word: the command's own help, or the program's.
    std::string helpFor(const std::string& word) const;

    /// Does what the command line says. Throws Error, Cancelled or UsageError.
    void run(int argc, const char* const* argv);

  private:
    std::vector<Command> m_commands;
    CommandLines m_lines;
    std::vector<std::function<void()>> m_work;  ///< of each command
};

}  // namespace quorvane::app

#endif
