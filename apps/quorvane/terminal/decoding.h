#ifndef QUORVANE_APPS_TERMINAL_DECODING_H
#define QUORVANE_APPS_TERMINAL_DECODING_H

#include "system/cancel.h"
#include "system/standard_streams.h"

namespace quorvane::app {

/// Does work on a stranger's file that nothing can stop halfway and that has nothing to tidy up: a signal
/// meanwhile ends the process, and what decoders print goes nowhere. Returns what `work` returns.
template <typename Work>
auto decoding(Work work) {
    const StandardErrorNowhere silence;
    const EndingAtOnce ending(silence.descriptor(), "quorvane: interrupted\n");
    return work();
}

}  // namespace quorvane::app

#endif
