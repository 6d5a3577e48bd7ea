#include "media/clip/clip_writer.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iterator>
#include <sstream>

#include "media/clip/ffmpeg.h"
#include "media/clip/yuv420.h"
#include "media/picture/picture_file.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/pending_folder.h"
#include "system/pending_output.h"

namespace quorvane::media {
namespace {

// What toYuv420 makes, said so in the file: players otherwise guess by the picture's height.
constexpr std::string_view kYuvWords =
    "-colorspace bt709 -color_primaries bt709 -color_trc iec61966-2-1 -color_range tv"
    " -chroma_sample_location center";

/// Frames as an encoder, or another program, takes them.
class FrameBytes {
  public:
    explicit FrameBytes(const Codec& codec) : m_halves_colours(codec.halves_colours) {}

    /// Lasts until the next call, and as long as `frame`.
    std::string_view of(const RgbaImage& frame) {
        if (m_halves_colours) toYuv420(frame, &m_planes);
        const std::vector<uint8_t>& bytes = m_halves_colours ? m_planes : frame.samples;
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }

  private:
    bool m_halves_colours;
    std::vector<uint8_t> m_planes;
};

/// Writes a picture of a format that takes no ffmpeg into an open file.
void savePicture(const RgbaImage& image, const Codec& codec, const EncoderSettings& encoder, int descriptor,
                 const std::string& name) {
    if (codec.isLossy())
        saveJpeg(image, ownQuality(codec, encoder.quality.value_or(codec.usual_quality)), descriptor, name);
    else
        savePng(image, descriptor, name);
}

class StillWriter : public ClipWriter {
  public:
    StillWriter(const std::string& path, const Codec& codec, const ClipSettings& settings)
        : m_codec(codec), m_encoder(settings.encoder), m_output(path, settings.standard_output) {}

    void add(int, const RgbaImage& frame) override {
        savePicture(frame, m_codec, m_encoder, m_output.descriptor(), m_output.path());
    }
    void finish() override {
        throwIfCancelled();
        m_output.commit();
    }

  private:
    const Codec& m_codec;
    EncoderSettings m_encoder;
    PendingOutput m_output;
};

class FolderWriter : public ClipWriter {
  public:
    FolderWriter(const std::string& path, bool force, const OutputFormat& format, EncoderSettings encoder)
        : m_folder(path, force),
          m_extension("." + std::string(format.word)),
          m_codec(codecFor(format, encoder)),
          m_encoder(std::move(encoder)) {}

    void add(int number, const RgbaImage& frame) override {
        throwIfCancelled();
        m_folder.add(frameName(number + 1), [&](int descriptor, const std::string& name) {
            savePicture(frame, m_codec, m_encoder, descriptor, name);
        });
    }

    void finish() override {
        throwIfCancelled();
        // Frames of an earlier, longer clip would be taken for this one's.
        m_folder.commit(isFrameName);
    }

  private:
    std::string frameName(int number) const {
        char name[24];
        std::snprintf(name, sizeof name, "%05d", number);
        return name + m_extension;
    }

    PendingFolder m_folder;
    std::string m_extension;
    const Codec& m_codec;
    EncoderSettings m_encoder;
};

/// ffmpeg, which puts a clip into an open file.
class FfmpegEncoder : public ClipWriter {
  public:
    FfmpegEncoder(PendingOutput* file, const OutputFormat& format, const Codec& codec,
                  const ClipSettings& settings)
        : m_file(*file),
          m_ffmpeg(arguments(*file, format, codec, settings), file->descriptor()),
          m_bytes(codec) {}

    void add(int, const RgbaImage& frame) override {
        const std::string_view bytes = m_bytes.of(frame);
        if (!m_ffmpeg.write(bytes.data(), bytes.size())) fail();
    }

    void finish() override {
        if (!m_ffmpeg.finish()) fail();
        if (m_file.empty()) throw Error(m_file.path() + ": ffmpeg has written nothing");
        throwIfCancelled();
    }

  private:
    static std::vector<std::string> arguments(const PendingOutput& file, const OutputFormat& format,
                                              const Codec& codec, const ClipSettings& settings) {
        std::ostringstream words;
        // -xerror: without it a clip whose end found no room on the disk counts as success.
        words
            << "ffmpeg -nostdin -xerror -hide_banner -loglevel error -y -protocol_whitelist pipe -f rawvideo "
               "-pix_fmt "
            << (codec.halves_colours ? "yuv420p" : "rgba") << " -s " << settings.size.width << 'x'
            << settings.size.height << " -r " << settings.fps << " -i pipe:0 ";
        if (codec.halves_colours) words << kYuvWords << ' ';
        words << encoderWords(codec, settings.encoder) << ' ' << format.words;
        if (settings.once) words << ' ' << format.once;
        std::istringstream split(words.str());
        std::vector<std::string> args{std::istream_iterator<std::string>(split), {}};
        // file: keeps a name with a colon from being taken for a protocol.
        args.push_back("file:" + file.temporary());
        return args;
    }

    [[noreturn]] void fail() { m_ffmpeg.fail(m_file.path()); }

    PendingOutput& m_file;
    Ffmpeg m_ffmpeg;
    FrameBytes m_bytes;
};

/// Frames as they are, for other programs; with what YUV4MPEG2 says before them where their colours are
/// halved.
class PlainFrames : public ClipWriter {
  public:
    PlainFrames(int descriptor, std::string name, const Codec& codec, const ClipSettings& settings)
        : m_descriptor(descriptor), m_name(std::move(name)), m_bytes(codec) {
        if (!codec.halves_colours) return;
        std::ostringstream head;
        // C420jpeg: the mean of 2 x 2 pixels stands in their middle.
        head << "YUV4MPEG2 W" << settings.size.width << " H" << settings.size.height << " F" << settings.fps
             << ":1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\n";
        writeAll(m_descriptor, head.str(), m_name);
        m_before_each = "FRAME\n";
    }

    void add(int, const RgbaImage& frame) override {
        writeAll(m_descriptor, m_before_each, m_name);
        writeAll(m_descriptor, m_bytes.of(frame), m_name);
    }

    void finish() override { throwIfCancelled(); }

  private:
    int m_descriptor;
    std::string m_name;
    FrameBytes m_bytes;
    std::string m_before_each;
};

/// A clip that appears at its place when it is whole.
class FileWriter : public ClipWriter {
  public:
    FileWriter(const std::string& path, const OutputFormat& format, const ClipSettings& settings)
        : m_output(path, settings.standard_output), m_encoder(encodeInto(&m_output, format, settings)) {}

    void add(int number, const RgbaImage& frame) override { m_encoder->add(number, frame); }

    void finish() override {
        m_encoder->finish();
        m_output.commit();
    }

  private:
    PendingOutput m_output;
    std::unique_ptr<ClipWriter> m_encoder;
};

}  // namespace

bool isFrameName(const std::string& name) {
    return name.size() >= 9 &&
           (name.substr(name.size() - 4) == ".png" || name.substr(name.size() - 4) == ".jpg") &&
           std::all_of(name.begin(), name.end() - 4, [](unsigned char c) { return std::isdigit(c); });
}

std::unique_ptr<ClipWriter> encodeInto(PendingOutput* file, const OutputFormat& format,
                                       const ClipSettings& settings) {
    const Codec& codec = codecFor(format, settings.encoder);
    if (std::min(settings.size.width, settings.size.height) < codec.least_side)
        throw Error(file->path() + ": " + std::string(codec.name) + " has sides of " +
                    std::to_string(codec.least_side) + " pixels or more");
    if (codec.words.empty())
        return std::make_unique<PlainFrames>(file->descriptor(), file->path(), codec, settings);
    return std::make_unique<FfmpegEncoder>(file, format, codec, settings);
}

std::unique_ptr<ClipWriter> openClip(const std::string& path, const OutputFormat& format,
                                     const ClipSettings& settings) {
    if (format.kind > OutputKind::kFolder)
        throw Error(path + ": " + std::string(format.name) + " has no frames");
    const Codec& codec = codecFor(format, settings.encoder);
    if (format.kind == OutputKind::kStill) return std::make_unique<StillWriter>(path, codec, settings);
    if (format.kind == OutputKind::kFolder)
        return std::make_unique<FolderWriter>(path, settings.force, format, settings.encoder);
    // What other programs read as it comes would fill the memory.
    if (path == kStandardOutput && codec.words.empty())
        return std::make_unique<PlainFrames>(settings.standard_output, "standard output", codec, settings);
    return std::make_unique<FileWriter>(path, format, settings);
}

}  // namespace quorvane::media
