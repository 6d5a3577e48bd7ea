#ifndef QUORVANE_SYSTEM_CANCEL_H
#define QUORVANE_SYSTEM_CANCEL_H

namespace quorvane {

/// From now on SIGINT, SIGTERM and SIGHUP ask for an orderly end instead of killing the process, where they
/// were not ignored before. A broken pipe or a file that may not grow fails the write instead of killing.
void catchSignals();

bool cancelled() noexcept;

/// Throws Cancelled once a signal has asked for the end.
void throwIfCancelled();

/// While it lives, such a signal writes `last_words` to the file `descriptor` and ends the process with exit
/// code 1 at once: for work that nothing can stop halfway, that has nothing to tidy up, and that may take
/// long. One at a time; its constructor throws Cancelled once a signal has asked for the end.
class EndingAtOnce {
  public:
    EndingAtOnce(int descriptor, const char* last_words);
    ~EndingAtOnce();

    EndingAtOnce(const EndingAtOnce&) = delete;
    EndingAtOnce& operator=(const EndingAtOnce&) = delete;
};

}  // namespace quorvane

#endif
