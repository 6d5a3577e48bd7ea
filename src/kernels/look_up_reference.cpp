#include "kernels/look_up.h"

namespace quorvane::reference {

void lookUp(uint8_t* samples, size_t count, const uint8_t* table) {
    for (size_t i = 0; i < count; ++i) samples[i] = table[samples[i]];
}

}  // namespace quorvane::reference
