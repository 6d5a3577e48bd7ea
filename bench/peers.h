#ifndef QUORVANE_BENCH_PEERS_H
#define QUORVANE_BENCH_PEERS_H

#include <vector>

#include "kernels/downsize.h"
#include "kernels/guided_filter.h"
#include "stage.h"

namespace quorvane::bench {

// Packaged libraries at the same tasks, on one thread, each in the way that was found fastest. A library that
// is not installed adds no contender. What the arguments point to must outlive the contenders.

/// "OpenCV 4.6.0, libyuv"; empty where none is installed.
std::string installedPeers();

void addReductionPeers(const Reduction& reduction, std::vector<Contender>* contenders);
void addCrossDenoisePeers(const Bytes& plane, int width, int height, std::vector<Contender>* contenders);
void addDenoiseAndContrastPeers(const Bytes& plane, int width, int height, const uint8_t* table,
                                std::vector<Contender>* contenders);
void addGuidedFilterPeers(const GuidedFiltering& filtering, std::vector<Contender>* contenders);

/// The upload of a photo and its depth map, without GL.
struct Upload {
    const uint8_t* photo;
    int photo_width;
    int photo_height;
    const uint8_t* depth;
    int depth_width;
    int depth_height;
    int radius;
    float eps;
    const uint8_t* table;  ///< the contrast curve
};
void addUploadPeers(const Upload& upload, std::vector<Contender>* contenders);

namespace opencv {
std::string version();
void addReductions(const Reduction& reduction, std::vector<Contender>* contenders);
}  // namespace opencv

namespace libyuv_peer {
std::string version();
void addReductions(const Reduction& reduction, std::vector<Contender>* contenders);
}  // namespace libyuv_peer

}  // namespace quorvane::bench

#endif
