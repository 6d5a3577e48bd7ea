#ifndef QUORVANE_DIAGNOSTICS_PPM_DUMP_H
#define QUORVANE_DIAGNOSTICS_PPM_DUMP_H

namespace quorvane {

/// Where debug dumps go. Never created here: without it, each dump logs one line and is skipped.
constexpr char kDumpDirectory[] = "/storage/sdcard0/qrvn/";

/// Bytes for a dump file's name.
constexpr int kDumpNameSize = 256;

/// The `format` codes of `ESRenderer::_dump_ppm`.
enum DumpFormat { kDumpGray = 0, kDumpRgba = 1, kDumpRgb = 2 };

/// Writes an image as ESRenderer::_dump_ppm describes it.
void dumpPpm(int width, int height, const char* filename, const unsigned char* pixels, int format);

}  // namespace quorvane

#endif
