#ifndef QUORVANE_KERNELS_LOOK_UP_H
#define QUORVANE_KERNELS_LOOK_UP_H

#include <cstddef>
#include <cstdint>

namespace quorvane::reference {

/// Replaces each of `count` samples by the entry that it names in `table`, 256 bytes.
void lookUp(uint8_t* samples, size_t count, const uint8_t* table);

}  // namespace quorvane::reference

#endif
