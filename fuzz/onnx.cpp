// .onnx files and what lies next to them: whatever the bytes, a description within bounds, or one line.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "media/depth/onnx_file.h"
#include "media/depth/preprocessor_config.h"
#include "one_line.h"

using namespace quorvane;
using fuzz::orOneLine;
using fuzz::promised;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    orOneLine([bytes] {
        const media::OnnxFile file = media::lookIntoOnnx(bytes, "model");
        promised(file.kernel_width >= 0 && file.kernel_width <= 1024, "a kernel's width");
        promised((file.kernel_width == 0) == (file.kernel_height == 0), "a kernel has both sides or none");
        promised(file.metadata.size() <= 64 && file.data_files.size() <= 4096, "few names");
        for (const std::string& name : file.data_files) promised(name.size() <= 512, "short names");
    });
    orOneLine([bytes] {
        const media::PreprocessorConfig config = media::readPreprocessorConfig(bytes, bytes, "");
        if (config.normalisation)
            for (const double deviation : config.normalisation->deviation)
                promised(deviation > 0.0 && std::isfinite(deviation), "what levels are divided by");
        if (config.size) promised(config.size->width >= 1 && config.size->height <= 4096, "sides of a photo");
        if (config.multiple) promised(*config.multiple >= 1 && *config.multiple <= 4096, "a multiple");
    });
    return 0;
}
