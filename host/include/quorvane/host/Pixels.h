#ifndef QUORVANE_HOST_PIXELS_H
#define QUORVANE_HOST_PIXELS_H

#include <cstddef>
#include <cstdint>
#include <utility>

namespace quorvane {

/// Pixels in memory of the caller's, 8 bit a channel, rows from the top; how many bytes a pixel has is said
/// where they are taken. A call that takes them is done with the memory when it returns.
template <typename Byte>
struct PixelView {
    Byte* data = nullptr;  ///< the first row's first pixel
    size_t bytes = 0;      ///< from `data` on, padding included; the last row needs none
    int width = 0;         ///< pixels
    int height = 0;        ///< pixels
    size_t stride = 0;     ///< bytes from one row's start to the next one's; 0: rows have no padding

    PixelView() = default;
    PixelView(Byte* first, size_t size, int columns, int rows, size_t row_stride = 0) noexcept
        : data(first), bytes(size), width(columns), height(rows), stride(row_stride) {}

    /// All bytes of a vector or an array.
    template <typename Container, typename = decltype(std::declval<Container&>().data())>
    PixelView(Container&& container, int columns, int rows, size_t row_stride = 0) noexcept
        : PixelView(container.data(), container.size(), columns, rows, row_stride) {}
};

/// Pixels to read.
using Pixels = PixelView<const uint8_t>;

/// Pixels to write. Padding stays as it is.
using WritablePixels = PixelView<uint8_t>;

}  // namespace quorvane

#endif
