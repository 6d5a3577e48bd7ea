#ifndef QUORVANE_GUIDED_FILTER_H
#define QUORVANE_GUIDED_FILTER_H

/// Edge-preserving smoother: the guided image filter of K. He, J. Sun and X. Tang, "Guided Image Filtering"
/// (ECCV 2010; IEEE TPAMI 35(6), 2013), for 8-bit planes.
///
/// All images are row-major, one byte a pixel, no row padding. The filter owns no memory: the caller lends it
/// a buffer through `assignBuffer` and frees that buffer after the filter's last use. Not thread-safe.
class guided_filter_qrv {
  public:
    /// No buffer assigned.
    guided_filter_qrv();

    guided_filter_qrv(const guided_filter_qrv&) = delete;
    guided_filter_qrv& operator=(const guided_filter_qrv&) = delete;

    /// Forgets the assigned buffer; never frees it.
    virtual ~guided_filter_qrv();

    /// Filters `input`, steered by `guide`, into `output`; all three are width x height bytes.
    ///
    ///   width, height   pixels, as given to `assignBuffer`; height at most 66051 (32-bit column sums)
    ///   rx, ry          window radii in pixels: a window is (2 rx + 1) x (2 ry + 1), clipped to the image.
    ///                   A negative radius counts as 0, one beyond the image as the whole image.
    ///   eps             regulariser, acting on intensities normalised to 0..1
    ///
    /// `output` may be `input` or `guide`. Window sums are exact integers, so a flat guide gives a = 0
    /// exactly; q is rounded to nearest and clamped to 0..255. Where variance + eps is not positive, a is 0.
    /// The cost does not depend on the radii. Does nothing while no buffer is assigned.
    virtual void operator()(unsigned char* guide, unsigned char* input, unsigned char* output, int width,
                            int height, int rx, int ry, float eps);

    /// Bytes that `assignBuffer` needs for a width x height image: 20 a pixel and 8 for every entry of a
    /// (width + 1) x (height + 1) table.
    virtual int bufferSize(int width, int height) const;

    /// The assigned buffer, or null.
    virtual unsigned char* buffer() const;

    /// Lends the filter `buffer`, `bufferSize(width, height)` bytes of any alignment, for images of
    /// width x height. May be called again with another size or buffer at any time.
    virtual void assignBuffer(int width, int height, unsigned char* buffer);

    /// True when an image of width x height fits the assigned buffer.
    virtual bool accepts(int width, int height) const;

  protected:
    /// Forgets the assigned buffer; never frees it.
    virtual void releaseBuffer();

  private:
    unsigned char* m_buffer;
    int m_width;
    int m_height;
};

#endif
