#ifndef QUORVANE_HOST_OUTPUT_H
#define QUORVANE_HOST_OUTPUT_H

#include <memory>

#include "quorvane/esRenderer.h"
#include "quorvane/host/Status.h"

namespace quorvane {

/// What is drawn into: an RGBA texture, and a depth buffer so that near things hide far things. Every call
/// needs the context current in which it was made.
class Output {
  public:
    /// Sides in pixels, within the driver's limits. Leaves the texture bound to unit 0.
    static Status create(int width, int height, std::unique_ptr<Output>* output);

    ~Output();

    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Has `renderer` draw into it, and leaves the renderer's framebuffer bound. False where the driver
    /// cannot.
    bool attachTo(ESRenderer* renderer) const;

    /// Leaves the objects to their context, where that is not current at the end.
    void abandon() noexcept;

    GLuint texture() const noexcept { return m_texture; }

  private:
    Output() = default;

    GLuint m_texture = 0;
    GLuint m_depth_buffer = 0;
};

}  // namespace quorvane

#endif
