#include "aligned_memory.h"

#include <cstdlib>
#include <new>

namespace quorvane::test {

AlignedMemory& AlignedMemory::instance() {
    static AlignedMemory memory;
    return memory;
}

}  // namespace quorvane::test

using quorvane::test::AlignedMemory;

void* operator new(size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    AlignedMemory& memory = AlignedMemory::instance();
    memory.last_bytes = bytes;
    if (memory.exhausted) return nullptr;
    const size_t unit = static_cast<size_t>(alignment);
    void* block = std::aligned_alloc(unit, (bytes + unit - 1) / unit * unit);
    if (block == nullptr) return nullptr;
    ++memory.taken;
    ++memory.live;
    return block;
}

void* operator new(size_t bytes, std::align_val_t alignment) {
    if (void* block = operator new(bytes, alignment, std::nothrow)) return block;
    throw std::bad_alloc();
}

void operator delete(void* block, std::align_val_t) noexcept {
    if (block != nullptr) --AlignedMemory::instance().live;
    std::free(block);
}

void operator delete(void* block, size_t, std::align_val_t alignment) noexcept {
    operator delete(block, alignment);
}
