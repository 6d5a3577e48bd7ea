#ifndef QUORVANE_KERNELS_PATHS_H
#define QUORVANE_KERNELS_PATHS_H

#include <cstddef>

// The image kernels are compiled several times: as the reference, in scalar code, which defines every result,
// and once a path, as vector code for one instruction set. All paths give the same bytes.
//
// A kernel's file is compiled with QUORVANE_PATH set to the name of the path, and with that path's compiler
// options; without QUORVANE_PATH it is the reference, the choice and the class's members.

#define QUORVANE_IN_PATH(path, ...) \
    namespace path {                \
    __VA_ARGS__                     \
    }

// What the processor adds to the reference and to plain lanes.
#if defined(__x86_64__)
#define QUORVANE_PROCESSOR_PATHS(member) , sse2::member, sse41::member, avx2::member
#define QUORVANE_IN_PROCESSOR_PATHS(...) \
    QUORVANE_IN_PATH(sse2, __VA_ARGS__)  \
    QUORVANE_IN_PATH(sse41, __VA_ARGS__) \
    QUORVANE_IN_PATH(avx2, __VA_ARGS__)
#elif defined(__aarch64__)
#define QUORVANE_PROCESSOR_PATHS(member) , neon::member
#define QUORVANE_IN_PROCESSOR_PATHS(...) QUORVANE_IN_PATH(neon, __VA_ARGS__)
#else
#define QUORVANE_PROCESSOR_PATHS(member)
#define QUORVANE_IN_PROCESSOR_PATHS(...)
#endif

#define QUORVANE_EVERY_PATH(member) \
    { reference::member, plain::member QUORVANE_PROCESSOR_PATHS(member) }
#define QUORVANE_IN_EVERY_PATH(...)          \
    QUORVANE_IN_PATH(reference, __VA_ARGS__) \
    QUORVANE_IN_PATH(plain, __VA_ARGS__)     \
    QUORVANE_IN_PROCESSOR_PATHS(__VA_ARGS__)

namespace quorvane {

/// A path of the kernels, in the order of QUORVANE_EVERY_PATH.
struct Path {
    const char* name;    ///< "reference", "plain", "sse2", "sse4.1", "avx2" or "neon"
    bool (*runsHere)();  ///< whether this processor has the instructions
};

/// All paths of this build, the reference first and the fastest last; `count` of them.
const Path* paths(size_t* count);

/// The path that the renderer uses, as an index into paths(): the one that the environment variable
/// QUORVANE_LANES names, else the last that runs here. Chosen at the first call, once for the process. A name
/// that is no path, or one that does not run here, is told in one line of the log and changes nothing.
size_t chosenPath();

}  // namespace quorvane

#endif
