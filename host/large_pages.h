#ifndef QUORVANE_HOST_LARGE_PAGES_H
#define QUORVANE_HOST_LARGE_PAGES_H

#include <cstddef>
#include <new>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

namespace quorvane {

/// The large page of x86-64 and of Arm with pages of 4 KB; whole ones only where memory starts at a multiple.
constexpr std::align_val_t kLargePage{size_t{2} << 20};
constexpr std::align_val_t kCacheLine{64};

/// Where `bytes` of memory should start. Large pages are not worth it for little, and malloc may keep that
/// for others, who would then use whole pages.
constexpr std::align_val_t alignmentFor(size_t bytes) {
    return bytes < size_t{32} << 20 ? kCacheLine : kLargePage;
}

/// Asks the system for large pages in memory that nothing has touched yet and that starts as alignmentFor
/// says. A photo has thousands of small ones, which are slower to come by and to look up. Where the system
/// has none, nothing happens.
inline void preferLargePages([[maybe_unused]] void* memory, [[maybe_unused]] size_t bytes) {
#ifdef MADV_HUGEPAGE
    if (alignmentFor(bytes) != kLargePage) return;
    // The rest of a page would be taken from the system and never used.
    const size_t page = static_cast<size_t>(kLargePage);
    madvise(memory, bytes / page * page, MADV_HUGEPAGE);
#endif
}

}  // namespace quorvane

#endif
