#ifndef QUORVANE_SYSTEM_SANDBOX_H
#define QUORVANE_SYSTEM_SANDBOX_H

#include <cstdint>

namespace quorvane {

/// Takes from this process, for good, what decoding does not need: it computes, uses memory, starts threads
/// and reads and writes the descriptors that it has, but opens no file, starts no program, reaches no network
/// and sees no other process. What it may not do fails with EPERM. False where the kernel does not filter
/// system calls; the process goes on as it was.
bool enterSandbox() noexcept;

/// This process's address space stays below `bytes`; what needs more fails as if memory were full.
void limitMemory(uint64_t bytes) noexcept;

/// From now on this process may use `seconds` of CPU time in all its threads together; then it is killed by
/// SIGXCPU, or SIGKILL where that is ignored.
void limitCpuTime(unsigned seconds) noexcept;

}  // namespace quorvane

#endif
