#ifndef QUORVANE_SYSTEM_CANCEL_H
#define QUORVANE_SYSTEM_CANCEL_H

namespace quorvane {

/// From now on the signals that end a process (SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGXCPU and their
/// like) ask for an orderly end instead, where they would have killed this one. A broken pipe or a file that
/// may not grow fails the write instead of killing. `exit_code` is EndingAtOnce's.
void catchSignals(int exit_code = 1);

/// Asks for an orderly end as such a signal does, and never ends the process at once.
void cancel() noexcept;

bool cancelled() noexcept;

/// Throws Cancelled once a signal has asked for the end.
void throwIfCancelled();

/// While it lives, such a signal writes "quorvane: interrupted" to the file `descriptor` and ends the process
/// with the exit code of catchSignals at once: for work that nothing can stop halfway, that has nothing to
/// tidy up, and that may take long. One at a time; its constructor throws Cancelled once a signal has asked
/// for the end.
class EndingAtOnce {
  public:
    explicit EndingAtOnce(int descriptor);
    ~EndingAtOnce();

    EndingAtOnce(const EndingAtOnce&) = delete;
    EndingAtOnce& operator=(const EndingAtOnce&) = delete;
};

}  // namespace quorvane

#endif
