// In place of src/kernels/paths.cpp: WebAssembly without its vector instructions runs the reference fastest.

#include "kernels/paths.h"

namespace quorvane {

PathList paths() noexcept {
    static constexpr Path kReference = {
        "reference",       [] { return true; },     reference::downsize,       reference::crossDenoise,
        reference::lookUp, reference::guidedFilter, reference::createVertices, reference::createIndices};
    return {&kReference, 1};
}

}  // namespace quorvane
