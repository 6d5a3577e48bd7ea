#ifndef QUORVANE_KERNELS_PATHS_H
#define QUORVANE_KERNELS_PATHS_H

#include <cstddef>

#include "kernels/denoise.h"
#include "kernels/downsize.h"
#include "kernels/guided_filter.h"
#include "kernels/look_up.h"
#include "kernels/vertex_grid.h"

// The kernels exist several times: as the reference (NAME_reference.cpp), scalar code that defines every
// result, and once a path as vector code for one instruction set (NAME_lanes.cpp, compiled with QUORVANE_PATH
// set to the path's namespace). All of them give the same bytes, but for what reference::guidedFilter says.
namespace quorvane {

/// One path: the kernels for one instruction set. What each does stands where the reference's is declared.
struct Path {
    const char* name;    ///< "reference", "plain", "sse2", "sse4.1", "avx2" or "neon"
    bool (*runsHere)();  ///< whether this processor has the instructions
    decltype(&reference::downsize) downsize;
    decltype(&reference::crossDenoise) crossDenoise;
    decltype(&reference::lookUp) lookUp;
    decltype(&reference::guidedFilter) guidedFilter;
    decltype(&reference::createVertices) createVertices;
    decltype(&reference::createIndices) createIndices;
};

/// Paths one after another in memory.
class PathList {
  public:
    constexpr PathList(const Path* first, size_t count) noexcept : m_first(first), m_count(count) {}
    const Path* begin() const noexcept { return m_first; }
    const Path* end() const noexcept { return m_first + m_count; }
    size_t size() const noexcept { return m_count; }
    const Path& operator[](size_t i) const noexcept { return m_first[i]; }

  private:
    const Path* m_first;
    size_t m_count;
};

/// All paths of this build, the reference first and the fastest last. They last as long as the process.
PathList paths() noexcept;

}  // namespace quorvane

#endif
