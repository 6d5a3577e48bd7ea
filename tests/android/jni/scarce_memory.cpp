// Preloaded into the Java machine: memory that runs out for libquorvane_jni.so alone, at a call that a test
// chooses.

#include <jni.h>
#include <link.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>

extern "C" void* __libc_malloc(size_t bytes);
extern "C" void* __libc_memalign(size_t alignment, size_t bytes);

namespace {

std::atomic<uintptr_t> s_begin{0}, s_end{0};  ///< of the library's code
std::atomic<int> s_left{-1};                  ///< calls that still get memory; below 0: all do
std::atomic<bool> s_failed{false};

bool fails(const void* caller) {
    const uintptr_t place = reinterpret_cast<uintptr_t>(caller);
    if (s_left < 0 || place < s_begin || place >= s_end) return false;
    if (s_left-- > 0) return false;
    s_failed = true;
    errno = ENOMEM;
    return true;
}

int findLibrary(dl_phdr_info* library, size_t, void*) {
    if (std::strstr(library->dlpi_name, "libquorvane_jni.so") == nullptr) return 0;
    for (int i = 0; i < library->dlpi_phnum; ++i) {
        const auto& part = library->dlpi_phdr[i];
        if (part.p_type != PT_LOAD || (part.p_flags & PF_X) == 0) continue;
        s_begin = library->dlpi_addr + part.p_vaddr;
        s_end = s_begin + part.p_memsz;
    }
    return 1;
}

}  // namespace

// What the library's operator new calls; it holds the C++ library inside.

extern "C" void* malloc(size_t bytes) {
    return fails(__builtin_return_address(0)) ? nullptr : __libc_malloc(bytes);
}

extern "C" void* aligned_alloc(size_t alignment, size_t bytes) {
    return fails(__builtin_return_address(0)) ? nullptr : __libc_memalign(alignment, bytes);
}

extern "C" JNIEXPORT void JNICALL Java_quorvane_parallax_ScarceMemory_failAfter(JNIEnv*, jclass, jint calls) {
    s_left = -1;
    dl_iterate_phdr(findLibrary, nullptr);
    s_failed = false;
    s_left = calls;
}

extern "C" JNIEXPORT jboolean JNICALL Java_quorvane_parallax_ScarceMemory_hasFailed(JNIEnv*, jclass) {
    s_left = -1;
    return s_failed;
}
