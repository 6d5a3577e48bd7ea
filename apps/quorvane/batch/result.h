#ifndef QUORVANE_APPS_BATCH_RESULT_H
#define QUORVANE_APPS_BATCH_RESULT_H

#include <string>
#include <vector>

#include "apps/quorvane/batch/photo_list.h"
#include "apps/quorvane/commands/failure.h"
#include "apps/quorvane/commands/render.h"

namespace quorvane::app {

/// What came of a photo's work in a worker.
struct PhotoOutcome {
    int exit = 0;       ///< 0, kSysexitNever or kSysexitTryAgain
    std::string error;  ///< one line; empty where it is done
    double seconds = 0.0;
    Rendered rendered;
    std::vector<std::string> warnings;  ///< what `render` prints besides
};

/// The outcome of work that threw.
PhotoOutcome outcomeOf(const Failure& failure);

/// As a worker sends it: a JSON object in ASCII.
std::string outcomeText(const PhotoOutcome& outcome);

/// A photo that has been dealt with.
struct PhotoResult {
    const BatchPhoto* photo = nullptr;
    std::string digest;    ///< SHA-256 of the photo's file; empty: it could not be read
    std::string outcome;   ///< as outcomeText gives it
    bool skipped = false;  ///< it was done before
};

/// Its line of the results, without a line's end: photo, sha256, output, bytes, and what the outcome says. In
/// ASCII; what of a name is no UTF-8 is replaced.
std::string resultLine(const PhotoResult& result);

/// `exit` and `error` of an outcome's text.
int exitOf(const std::string& outcome);
std::string errorOf(const std::string& outcome);

}  // namespace quorvane::app

#endif
