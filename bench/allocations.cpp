#include "allocations.h"

#include <cerrno>
#include <cstdlib>

namespace {

thread_local size_t allocations = 0;

}  // namespace

// In front of the C library's own, through which operator new goes too.
extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* old, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

void* malloc(size_t size) noexcept {
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) noexcept {
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* old, size_t size) noexcept {
    ++allocations;
    return __libc_realloc(old, size);
}

void* aligned_alloc(size_t alignment, size_t size) noexcept {
    ++allocations;
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, size_t alignment, size_t size) noexcept {
    ++allocations;
    *memory = __libc_memalign(alignment, size);
    return *memory != nullptr ? 0 : ENOMEM;
}

}  // extern "C"

size_t quorvane::bench::allocationsDuring(const Work& work) {
    const size_t before = allocations;
    work();
    return allocations - before;
}
