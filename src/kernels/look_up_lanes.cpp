#include "kernels/lanes.h"
#include "kernels/look_up.h"

namespace quorvane::QUORVANE_PATH {

void lookUp(uint8_t* samples, size_t count, const uint8_t* bytes) {
    const Table table(bytes);
    size_t i = 0;
    for (; i + 2 * kBytes <= count; i += 2 * kBytes) {
        const u8 first = load(samples + i), second = load(samples + i + kBytes);
        store(samples + i, table[first]);
        store(samples + i + kBytes, table[second]);
    }
    for (; i < count; ++i) samples[i] = bytes[samples[i]];
}

}  // namespace quorvane::QUORVANE_PATH
