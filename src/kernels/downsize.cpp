#include "kernels/downsize.h"

#include "kernels/downsize_weights.h"
#include "kernels/paths.h"

bool quorvane::downsize(const Path& path, int width, int height, const uint8_t* source, int out_width,
                        int out_height, uint8_t* out, bool rgb) {
    if (out_width < 1 || out_height < 1) return false;
    const int across = width / out_width, down = height / out_height;
    if (kernelsFor(across).taps == 0 || kernelsFor(down).taps == 0) return false;
    path.downsize({width, height, source, out_width, out_height, out, across, down, rgb});
    return true;
}
