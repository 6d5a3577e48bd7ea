#include "host/rows.h"

#include <cstring>
#include <limits>
#include <new>

#include "host/text.h"

namespace quorvane {
namespace {

size_t rowBytes(int width, int bytes_per_pixel) {
    return static_cast<size_t>(width) * static_cast<size_t>(bytes_per_pixel);
}

Status allocate(const char* what, size_t row, int height, std::unique_ptr<uint8_t[]>* memory) {
    const size_t bytes = row * static_cast<size_t>(height);
    memory->reset(new (std::nothrow) uint8_t[bytes]);
    if (*memory == nullptr) return Status::failure(text("%s: cannot allocate %zu bytes", what, bytes));
    return Status::success();
}

}  // namespace

Status checkPixels(const char* what, const Pixels& pixels, int bytes_per_pixel) {
    if (pixels.data == nullptr) return Status::failure(text("%s: no pixels given", what));
    const size_t row = rowBytes(pixels.width, bytes_per_pixel);
    const size_t stride = pixels.stride != 0 ? pixels.stride : row;
    if (stride < row)
        return Status::failure(
            text("%s: a stride of %zu bytes; a row of %d pixels takes %zu", what, stride, pixels.width, row));
    // The last row needs no padding.
    const size_t padded_rows = static_cast<size_t>(pixels.height) - 1;
    if (padded_rows > 0 && stride > (std::numeric_limits<size_t>::max() - row) / padded_rows)
        return Status::failure(text("%s: a stride of %zu bytes is more than memory can have", what, stride));
    const size_t needed = padded_rows * stride + row;
    if (pixels.bytes >= needed) return Status::success();
    const std::string padded = stride != row ? text(" with a stride of %zu bytes", stride) : "";
    return Status::failure(text("%s: %d x %d pixels%s take %zu bytes; %zu are given", what, pixels.width,
                                pixels.height, padded.c_str(), needed, pixels.bytes));
}

Status checkPixels(const char* what, const WritablePixels& pixels, int bytes_per_pixel) {
    return checkPixels(what, Pixels{pixels.data, pixels.bytes, pixels.width, pixels.height, pixels.stride},
                       bytes_per_pixel);
}

Status TightRows::of(const char* what, const Pixels& pixels, int bytes_per_pixel, int kept, TightRows* rows) {
    const size_t row = rowBytes(pixels.width, bytes_per_pixel);
    const size_t stride = pixels.stride != 0 ? pixels.stride : row;
    rows->m_data = pixels.data;
    if (stride == row && kept == bytes_per_pixel) return Status::success();

    const size_t kept_row = rowBytes(pixels.width, kept);
    Status status = allocate(what, kept_row, pixels.height, &rows->m_copy);
    if (!status) return status;
    rows->m_data = rows->m_copy.get();
    uint8_t* to = rows->m_copy.get();
    const size_t pixel = static_cast<size_t>(bytes_per_pixel), kept_pixel = static_cast<size_t>(kept);
    for (size_t y = 0; y < static_cast<size_t>(pixels.height); ++y) {
        const uint8_t* from = pixels.data + y * stride;
        if (kept == bytes_per_pixel) {
            std::memcpy(to, from, row);
            to += row;
            continue;
        }
        for (int x = 0; x < pixels.width; ++x, from += pixel, to += kept_pixel)
            std::memcpy(to, from, kept_pixel);
    }
    return status;
}

Status RowsToFill::of(const char* what, const WritablePixels& pixels, int bytes_per_pixel, RowsToFill* rows) {
    rows->m_pixels = pixels;
    rows->m_row = rowBytes(pixels.width, bytes_per_pixel);
    if (pixels.stride == 0 || pixels.stride == rows->m_row) return Status::success();
    return allocate(what, rows->m_row, pixels.height, &rows->m_copy);
}

void RowsToFill::deliver() const noexcept {
    if (m_copy == nullptr) return;
    for (size_t y = 0; y < static_cast<size_t>(m_pixels.height); ++y)
        std::memcpy(m_pixels.data + y * m_pixels.stride, m_copy.get() + y * m_row, m_row);
}

}  // namespace quorvane
