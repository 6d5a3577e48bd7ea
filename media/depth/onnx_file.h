#ifndef QUORVANE_MEDIA_DEPTH_ONNX_FILE_H
#define QUORVANE_MEDIA_DEPTH_ONNX_FILE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvane::media {

/// What an .onnx file says of its network, without the weights.
struct OnnxFile {
    /// The first convolution's kernel, in pixels; 0 where there is none, or it does not say.
    int64_t kernel_width = 0;
    int64_t kernel_height = 0;
    /// Whether what goes into that convolution is calculated from the network's input: subtracted, divided,
    /// scaled. Otherwise it is the input itself, in another type or order.
    bool calculates_first = false;
    /// Names and values that the file gives about itself.
    std::vector<std::pair<std::string, std::string>> metadata;
    /// The files next to it that hold its graph's weights, by the paths that it gives, each once; 4096 at
    /// most.
    std::vector<std::string> data_files;
};

/// A file's bytes, read where they are needed.
struct RandomBytes {
    uint64_t size = 0;
    /// Copies `count` bytes from `offset` on, all of them inside. False where they cannot be read.
    std::function<bool(uint64_t offset, size_t count, char* to)> read;
};

/// Looks through an .onnx file (protocol buffers, as onnx.proto3 lays them out), skipping weights unread.
/// Throws Error, about `name`, for what is no such file, and for one that a runtime could read otherwise:
/// with two graphs, a path of more than 512 bytes or more than 4096 files of weights. Whatever the bytes are,
/// it takes a second and 10 MB at most.
OnnxFile lookIntoOnnx(const RandomBytes& file, const std::string& name);
OnnxFile lookIntoOnnx(std::string_view bytes, const std::string& name);

}  // namespace quorvane::media

#endif
