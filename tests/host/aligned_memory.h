#ifndef QUORVANE_TESTS_HOST_ALIGNED_MEMORY_H
#define QUORVANE_TESTS_HOST_ALIGNED_MEMORY_H

#include <cstddef>

namespace quorvane::test {

/// What the program took through the aligned operator new; only the view's working block comes from there.
struct AlignedMemory {
    int taken = 0;  ///< blocks ever
    int live = 0;   ///< blocks not given back
    size_t last_bytes = 0;
    bool exhausted = false;  ///< gives nothing more

    static AlignedMemory& instance();
};

}  // namespace quorvane::test

#endif
