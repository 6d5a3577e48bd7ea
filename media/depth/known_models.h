#ifndef QUORVANE_MEDIA_DEPTH_KNOWN_MODELS_H
#define QUORVANE_MEDIA_DEPTH_KNOWN_MODELS_H

namespace quorvane::media {

/// A network that people have as an .onnx file with an interface that DepthModel understands. What is said
/// here comes from the pages of those who publish it.
struct KnownModel {
    const char* name;
    const char* files;    ///< whose copy, and which of its files
    const char* size;     ///< of the file, in the precisions that there are
    const char* licence;  ///< of the weights
    const char* gives;    ///< which kind of depth
};

constexpr KnownModel kKnownModels[] = {
    {"Depth Anything V2 small", "onnx-community/depth-anything-v2-small, onnx/model*.onnx",
     "99 MB; fp16 50 MB, int8 27 MB", "Apache-2.0", "relative depth, sizes free: try this one first"},
    {"Depth Anything V2 base, large", "of the same publisher", "larger",
     "CC-BY-NC-4.0: not for commercial use", "relative depth, sizes free"},
    {"Depth Anything V1 small", "Xenova/depth-anything-small-hf, onnx/model*.onnx",
     "99 MB; fp16 50 MB, int8 28 MB", "Apache-2.0", "relative depth, sizes free"},
    {"Depth Anything V2 metric", "fabio-sim/Depth-Anything-ONNX, indoor and outdoor in the name", "99 MB",
     "see its page", "metres"},
    {"Depth Anything 3, one view", "exports of the small and base weights", "depends on the export",
     "Apache-2.0; large and giant CC-BY-NC-4.0", "distance up to scale, with confidence and camera"},
    {"MiDaS 2.1 small", "isl-org/MiDaS v2_1, model-small.onnx", "66 MB", "MIT", "relative depth, 256 x 256"},
    {"MiDaS 3 DPT", "exports of dpt_swin2_tiny_256, dpt_levit_224", "165 MB, 143 MB", "MIT",
     "relative depth, one size"},
    {"Depth Pro", "onnx-community/DepthPro-ONNX", "3.8 GB; fp16 1.9 GB, int8 1.0 GB, q4 0.7 GB",
     "unclear; its weights are for research only", "metres, 1536 x 1536: slow"},
    {"Metric3D ViT small", "onnx-community, metric3d-vit-small", "see its page", "CC0-1.0, says its page",
     "metres"},
};

}  // namespace quorvane::media

#endif
