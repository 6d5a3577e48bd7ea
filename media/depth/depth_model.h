#ifndef QUORVANE_MEDIA_DEPTH_DEPTH_MODEL_H
#define QUORVANE_MEDIA_DEPTH_DEPTH_MODEL_H

#include <memory>
#include <string>

#include "media/depth/model_session.h"
#include "media/picture/image.h"
#include "media/picture/picture_file.h"

namespace quorvane::media {

/// A depth map that a network has estimated.
struct ModelEstimate {
    /// Of the photo's aspect, lying as it does; larger = nearer, of 16 bit, linear in 1 / distance where the
    /// network measures distances.
    DepthMap depth;
    /// That the end which is taken for near is near: 1 where the model says so. Below 0.5 the photo speaks
    /// against it, but not clearly enough against what most networks give.
    double polarity_confidence = 1.0;
    std::string belief;  ///< one line: what was taken for granted of the network, and why
};

/// An ONNX network that estimates depth from one photo. What it wants is found by looking: the rank and place
/// of its input's channels, whether its sizes are free, its first convolution, what lies beside it, and how
/// its results agree with the photo's edges.
class DepthModel {
  public:
    /// `path` is an .onnx file, or a folder as model hubs lay them out: with model.onnx or onnx/model.onnx in
    /// it, or one .onnx file. `size` is the shorter side of what a network of free sizes is given, in pixels,
    /// 0 for 518 or what its preprocessor_config.json says. Throws Error, also where the runtime is missing,
    /// and Cancelled after a signal.
    explicit DepthModel(const std::string& path, int size = 0, const ModelLimits& limits = {});
    ~DepthModel();
    DepthModel(const DepthModel&) = delete;
    DepthModel& operator=(const DepthModel&) = delete;

    /// The network stays loaded, and what was found out about it with the first photo holds for the next
    /// ones. Throws Error, and Cancelled after a signal.
    ModelEstimate estimate(const RgbImage& photo);

  private:
    class Network;
    std::unique_ptr<Network> m_network;
};

}  // namespace quorvane::media

#endif
