#ifndef QUORVANE_HOST_ROWS_H
#define QUORVANE_HOST_ROWS_H

#include <memory>

#include "quorvane/host/Pixels.h"
#include "quorvane/host/Status.h"

namespace quorvane {

/// Whether the memory holds the pixels. Both sides are at least 1; stride and bytes may be anything. `what`
/// begins the sentence.
Status checkPixels(const char* what, const Pixels& pixels, int bytes_per_pixel);
Status checkPixels(const char* what, const WritablePixels& pixels, int bytes_per_pixel);

/// Rows without padding: the caller's own where they have none, else a copy of them.
class TightRows {
  public:
    /// `pixels` have been checked. Of each pixel's bytes the first `kept` are taken.
    static Status of(const char* what, const Pixels& pixels, int bytes_per_pixel, int kept, TightRows* rows);

    const uint8_t* data() const noexcept { return m_data; }

  private:
    std::unique_ptr<uint8_t[]> m_copy;
    const uint8_t* m_data = nullptr;
};

/// Rows without padding that are filled first and then put where the caller wants them.
class RowsToFill {
  public:
    /// `pixels` have been checked.
    static Status of(const char* what, const WritablePixels& pixels, int bytes_per_pixel, RowsToFill* rows);

    /// What is to be filled: the caller's own memory where the rows have no padding there.
    uint8_t* data() noexcept { return m_copy != nullptr ? m_copy.get() : m_pixels.data; }

    /// Puts what was filled where the caller wants it.
    void deliver() const noexcept;

  private:
    WritablePixels m_pixels;
    size_t m_row = 0;  ///< bytes
    std::unique_ptr<uint8_t[]> m_copy;
};

}  // namespace quorvane

#endif
