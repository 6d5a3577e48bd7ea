#ifndef QUORVANE_MEDIA_CANCEL_H
#define QUORVANE_MEDIA_CANCEL_H

namespace quorvane::media {

/// From now on SIGINT, SIGTERM and SIGHUP ask for an orderly end instead of killing the process.
void catchSignals();

bool cancelled();

/// Throws Error("interrupted") once a signal has asked for the end.
void throwIfCancelled();

}  // namespace quorvane::media

#endif
