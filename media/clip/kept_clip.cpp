#include "media/clip/kept_clip.h"

#include <utility>

#include "system/cancel.h"

namespace quorvane::media {
namespace {

class KeptStill : public KeptClip {
  public:
    KeptStill(const OutputFormat& format, ClipSettings settings)
        : m_format(format), m_settings(std::move(settings)) {}

    void add(int, const RgbaImage& frame) override { m_frame = frame; }
    void finish() override { throwIfCancelled(); }

    void encode(PendingOutput* file, const EncoderSettings& encoder) override {
        m_settings.encoder = encoder;
        const auto writer = encodeInto(file, m_format, m_settings);
        writer->add(0, m_frame);
        writer->finish();
    }

  private:
    const OutputFormat& m_format;
    ClipSettings m_settings;
    RgbaImage m_frame;
};

class KeptFrames : public KeptClip {
  public:
    KeptFrames(const std::string& path, const OutputFormat& format, ClipSettings settings)
        : m_format(format),
          m_settings(std::move(settings)),
          m_frames(path),
          m_writer(keepInto(&m_frames, m_format, m_settings)) {}

    void add(int number, const RgbaImage& frame) override { m_writer->add(number, frame); }
    Yuv420Frames* yuv420() override { return m_writer->yuv420(); }
    void finish() override { m_writer->finish(); }

    void encode(PendingOutput* file, const EncoderSettings& encoder) override {
        m_settings.encoder = encoder;
        encodeKept(m_frames, file, m_format, m_settings);
    }

  private:
    const OutputFormat& m_format;
    ClipSettings m_settings;
    PendingOutput m_frames;
    std::unique_ptr<ClipWriter> m_writer;
};

}  // namespace

std::unique_ptr<KeptClip> keepClip(const std::string& path, const OutputFormat& format,
                                   const ClipSettings& settings) {
    if (format.kind == OutputKind::kStill) return std::make_unique<KeptStill>(format, settings);
    return std::make_unique<KeptFrames>(path, format, settings);
}

}  // namespace quorvane::media
