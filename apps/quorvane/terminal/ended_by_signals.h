#ifndef QUORVANE_APPS_TERMINAL_ENDED_BY_SIGNALS_H
#define QUORVANE_APPS_TERMINAL_ENDED_BY_SIGNALS_H

#include "system/cancel.h"
#include "system/standard_streams.h"

namespace quorvane::app {

/// Returns what `work` returns. Until then a signal ends the process at once, and what is printed to standard
/// error goes nowhere. For decoding a photo: it cannot be stopped halfway and has nothing to tidy up, and
/// decoders print their own warnings.
template <typename Work>
auto endedBySignals(Work work) {
    const StandardErrorNowhere silence;
    const EndingAtOnce ending(silence.descriptor());
    return work();
}

}  // namespace quorvane::app

#endif
