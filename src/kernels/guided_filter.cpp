#include "kernels/guided_filter.h"

#include <algorithm>
#include <cassert>

#include "kernels/paths.h"

void quorvane::guidedFilter(const Path& path, GuidedFiltering filtering) {
    assert(filtering.height <= 66051);
    filtering.rx = std::clamp(filtering.rx, 0, filtering.width);
    filtering.ry = std::clamp(filtering.ry, 0, filtering.height);
    path.guidedFilter(filtering);
}
