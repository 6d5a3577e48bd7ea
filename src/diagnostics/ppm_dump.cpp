#include "diagnostics/ppm_dump.h"

#include <cstddef>
#include <cstdio>
#include <memory>
#include <new>

#include "diagnostics/log.h"

void quorvane::dumpPpm(int width, int height, const char* filename, const unsigned char* pixels, int format) {
    if (filename[0] == '\0') {
        LOGD("[ERROR] Invalid file name\n");
        return;
    }
    if (pixels == nullptr || width == 0 || height == 0) {
        LOGD("[ERROR] Invalid image\n");
        return;
    }
    FILE* file = std::fopen(filename, "wb");
    if (file == nullptr) {
        LOGD("[ERROR] Cannot open file %s\n", filename);
        return;
    }

    const bool colour = format == kDumpRgba || format == kDumpRgb;
    // The open stream of an unknown format is the contract: hosts see an empty file and no message.
    if (!colour && format != kDumpGray) return;

    const size_t pixels_per_row = width > 0 ? static_cast<size_t>(width) : 0;
    const size_t channels = colour ? 3 : 1;
    const size_t source_channels = format == kDumpRgba ? 4 : channels;
    const size_t row_bytes = pixels_per_row * channels;

    std::fputs(colour ? "P6\n" : "P5\n", file);
    std::fprintf(file, "%d %d\n255 ", width, height);

    const std::unique_ptr<unsigned char[]> row(new (std::nothrow) unsigned char[row_bytes]);
    const unsigned char* source = pixels;
    for (int y = 0; row != nullptr && y < height; ++y) {
        for (size_t x = 0; x < pixels_per_row; ++x)
            for (size_t c = 0; c < channels; ++c) row[x * channels + c] = source[x * source_channels + c];
        std::fwrite(row.get(), 1, row_bytes, file);
        source += pixels_per_row * source_channels;
    }
    std::fclose(file);
}
