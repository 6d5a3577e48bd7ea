#ifndef QUORVANE_APPS_BATCH_BATCH_WORKER_H
#define QUORVANE_APPS_BATCH_BATCH_WORKER_H

#include <string>
#include <vector>

#include "apps/quorvane/commands/render.h"
#include "system/descriptor.h"

namespace quorvane::app {

// A batch draws in processes of its own, since the renderer's stopwatch is one for a process. A worker is
// this program with kBatchWorker and a number of cores as its arguments, and its standard input leads to the
// batch. It renders one photo after the other, with a graphics driver and a decoder that stay ready.

constexpr const char* kBatchWorker = "--render-for-the-batch-that-started-this";

/// Does such work until the batch ends. Returns the exit code.
int serveBatch(const std::string& cores);

/// Throws UsageError where `render` refuses these words before it reads a file.
void checkRenderWords(const std::vector<std::string>& words);

/// What the name of an output ends in that these words of `render` ask for. Throws UsageError.
OutputEnding endingFor(const std::vector<std::string>& words);

/// Sends words or a text to the process at the other end. False where that has gone.
bool sendWords(const Descriptor& to, const std::vector<std::string>& words);

/// Receives words; false where the process at the other end has gone. Waits as long as it takes. Throws
/// Cancelled after a signal.
bool receiveWords(const Descriptor& from, std::vector<std::string>* words);

}  // namespace quorvane::app

#endif
