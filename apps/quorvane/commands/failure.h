#ifndef QUORVANE_APPS_COMMANDS_FAILURE_H
#define QUORVANE_APPS_COMMANDS_FAILURE_H

#include <exception>
#include <string>

#include "apps/quorvane/terminal/command_line.h"

namespace quorvane::app {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

// Of sysexits.h, which tells what will never succeed from what may.
constexpr int kSysexitUsage = 64;
constexpr int kSysexitNever = 65;     ///< the input is not what it should be
constexpr int kSysexitTryAgain = 75;  ///< the machine lacked something, or the work was interrupted

/// Why a command or the work on a photo has ended.
struct Failure {
    std::string text;  ///< one line
    int code = kFailed;
    int sysexit = kSysexitNever;
};

/// What was thrown, as a user is told of it.
Failure failureOf(const std::exception_ptr& thrown);

/// Adds --exit-codes, for the help: it is read by wantsSysexits, since a line that cannot be parsed has an
/// exit code too.
void addExitCodesOption(CommandLine* line);

/// Whether such an argument asks for the codes of sysexits.h.
bool wantsSysexits(int argc, const char* const* argv);

}  // namespace quorvane::app

#endif
