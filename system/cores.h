#ifndef QUORVANE_SYSTEM_CORES_H
#define QUORVANE_SYSTEM_CORES_H

#include <cstdint>

namespace quorvane {

/// Cores of this machine that this process may keep busy, at least 1: those that it may run on, no more than
/// its control group's share of their time, and no more than limitCores() allows.
int usableCores() noexcept;

/// From now on usableCores() is `cores` at most, here and in this process's children, and so are the threads
/// of Mesa's software driver and of libvips. Called before any thread is started.
void limitCores(int cores);

/// Whether limitCores() was called, here or in the process that started this one.
bool coresAreLimited() noexcept;

/// Bytes of memory that are free for this process: of the machine, and of its control group. 0: unknown.
uint64_t freeMemory();

}  // namespace quorvane

#endif
