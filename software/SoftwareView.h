#ifndef QUORVANE_SOFTWARE_SOFTWARE_VIEW_H
#define QUORVANE_SOFTWARE_SOFTWARE_VIEW_H

#include <cstdint>
#include <memory>
#include <vector>

#include "quorvane/host/PhotoView.h"
#include "quorvane/parameters.h"

namespace quorvane {

namespace software {
class MeshDrawing;
struct Camera;
}  // namespace software

/// A view that the processor draws: no OpenGL, no context. Parameters, sizes and refusals are ParallaxView's,
/// and so is the picture but for rounding; the same input gives the same bytes on every processor. Calls come
/// from any thread, one at a time.
///
/// The device properties that override parameters are read once, when the view is made; the debug switch is
/// not, and no timing lines are written.
class SoftwareView final : public PhotoView {
  public:
    struct Options {
        uint32_t orientation = 4;    ///< the tuned parameter set, as in ViewOptions
        int samples = kAutoSamples;  ///< a pixel at silhouettes: 1, 2, 4 or 8; kAutoSamples is 4
        int threads = 0;             ///< that draw; 0 for as many as the machine has processors
    };

    /// Makes a view whose pictures are width x height pixels, each 1 to 16384.
    static Status create(int width, int height, const Options& options, std::unique_ptr<SoftwareView>* view);

    ~SoftwareView() override;

    Status setParameter(const std::string& name, double value) override;
    Status setPhoto(const Pixels& rgb) override;
    Status setDepth(const Pixels& depth) override;
    Status lookAt(float x, float y) override;
    Status resize(int width, int height) override;
    Status render() override;
    Status readPixels(const WritablePixels& rgba) const override;
    bool drawsYuv420() const noexcept override { return true; }
    Status renderYuv420(uint8_t* planes, size_t bytes) override;

    int width() const noexcept override { return m_width; }
    int height() const noexcept override { return m_height; }
    int samples() const noexcept override { return m_samples; }
    int largestPhotoSide() const noexcept override;
    Geometry geometry() const override;
    Pixels guide() const override;
    Pixels shapedDepth() const override;

  private:
    SoftwareView(int samples, const LibParam& parameters);

    Status checkImages() const;
    software::Camera camera() const;

    const int m_samples;
    int m_width = 0, m_height = 0;
    float m_half_width = 0.0f;  ///< of the mesh, object units
    LibParam m_parameters;
    std::unique_ptr<software::MeshDrawing> m_drawing;

    int m_photo_width = 0, m_photo_height = 0;
    std::vector<uint8_t> m_photo;  ///< R, G, B, and what its reduction reads past it
    int m_grid_width = 0, m_grid_height = 0;
    std::vector<uint8_t> m_guide, m_shaped;  ///< empty until a depth map is set

    float m_x = 0.0f, m_y = 0.0f;  ///< the view position
    std::vector<uint8_t> m_picture;
    bool m_has_picture = false;
};

}  // namespace quorvane

#endif
