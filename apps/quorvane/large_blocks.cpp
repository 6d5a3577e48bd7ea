// Photos and frames lie in large pages. The system clears and hands over thousands of small ones one by one,
// which was a tenth of the time up to a clip's first frame.

#include <sys/mman.h>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr size_t kLargePage = size_t{2} << 20;

void* allocated(size_t bytes) {
    if (bytes < 2 * kLargePage) return std::malloc(bytes > 0 ? bytes : 1);
    const size_t whole_pages = bytes / kLargePage * kLargePage;
    void* memory = std::aligned_alloc(kLargePage, whole_pages + kLargePage);
    // What is behind the last whole page stays small: the rest of it would never be used.
    if (memory != nullptr) madvise(memory, whole_pages, MADV_HUGEPAGE);
    return memory;
}

}  // namespace

void* operator new(size_t bytes) {
    for (;;) {
        if (void* memory = allocated(bytes)) return memory;
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr) throw std::bad_alloc();
        handler();
    }
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
