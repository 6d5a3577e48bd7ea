// A JPEG stripped of what describes its file: what is left stays as it is when it is stripped again.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "media/embedding/photo_with_depth_file.h"
#include "one_line.h"

using namespace quorvane;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    fuzz::orOneLine([bytes] {
        const std::string bare = media::bareJpeg(bytes, "photo");
        fuzz::promised(bare.size() <= bytes.size(), "nothing is added");
        fuzz::promised(media::bareJpeg(bare, "bare") == bare, "nothing is left to be taken away");
    });
    return 0;
}
