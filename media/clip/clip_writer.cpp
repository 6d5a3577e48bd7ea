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

    bool areYuv420() const { return m_halves_colours; }

    /// Lasts until the next call, and as long as `frame`.
    std::string_view of(const RgbaImage& frame) {
        if (m_halves_colours) toYuv420(frame, &m_planes);
        return of(m_halves_colours ? m_planes : frame.samples);
    }
    std::string_view of(const std::vector<uint8_t>& bytes) const {
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
        saveJpeg(image, static_cast<int>(ownQuality(codec, encoder.quality.value_or(codec.usual_quality))),
                 descriptor, name);
    else
        savePng(image, descriptor, name);
}

/// Puts a still into an open file.
class StillEncoder : public ClipWriter {
  public:
    StillEncoder(PendingOutput* file, const Codec& codec, EncoderSettings encoder)
        : m_file(*file), m_codec(codec), m_encoder(std::move(encoder)) {}

    void add(int, const RgbaImage& frame) override {
        savePicture(frame, m_codec, m_encoder, m_file.descriptor(), m_file.path());
    }
    void finish() override { throwIfCancelled(); }

  private:
    PendingOutput& m_file;
    const Codec& m_codec;
    EncoderSettings m_encoder;
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

std::vector<std::string> split(const std::string& words) {
    std::istringstream stream(words);
    return {std::istream_iterator<std::string>(stream), {}};
}

/// file: keeps a name with a colon from being taken for a protocol.
std::string nameFor(const PendingOutput& file) { return "file:" + file.temporary(); }

/// ffmpeg, which puts a clip into an open file.
class FfmpegEncoder : public ClipWriter, private Yuv420Frames {
  public:
    /// `input` tells ffmpeg of the frames, which are in `from` or are added; `words` tell it of the clip.
    FfmpegEncoder(PendingOutput* file, const Codec& codec, const std::vector<std::string>& input,
                  const std::string& words, const PendingOutput* from = nullptr)
        : m_file(*file), m_ffmpeg(command(*file, input, words), kept(*file, from)), m_bytes(codec) {}

    void add(int, const RgbaImage& frame) override { write(m_bytes.of(frame)); }
    Yuv420Frames* yuv420() override { return m_bytes.areYuv420() ? this : nullptr; }
    void addYuv420(int, const std::vector<uint8_t>& planes) override { write(m_bytes.of(planes)); }

    void finish() override {
        if (!m_ffmpeg.finish()) fail();
        if (m_file.empty()) throw Error(m_file.path() + ": ffmpeg has written nothing");
        throwIfCancelled();
    }

  private:
    void write(std::string_view bytes) {
        if (!m_ffmpeg.write(bytes.data(), bytes.size())) fail();
    }

    static std::vector<std::string> command(const PendingOutput& file, const std::vector<std::string>& input,
                                            const std::string& words) {
        // -xerror: without it a clip whose end found no room on the disk counts as success.
        std::vector<std::string> args = split("ffmpeg -nostdin -xerror -hide_banner -loglevel error -y");
        args.insert(args.end(), input.begin(), input.end());
        for (std::string& word : split(words)) args.push_back(std::move(word));
        args.push_back(nameFor(file));
        return args;
    }

    static std::vector<int> kept(const PendingOutput& file, const PendingOutput* from) {
        std::vector<int> descriptors = {file.descriptor()};
        if (from != nullptr) descriptors.push_back(from->descriptor());
        return descriptors;
    }

    [[noreturn]] void fail() { m_ffmpeg.fail(m_file.path()); }

    PendingOutput& m_file;
    Ffmpeg m_ffmpeg;
    FrameBytes m_bytes;
};

/// The codec of the settings. Throws Error where pictures of their size are too small for it, too.
const Codec& codecFor(const PendingOutput& file, const OutputFormat& format, const ClipSettings& settings) {
    const Codec& codec = codecFor(format, settings.encoder);
    if (std::min(settings.size.width, settings.size.height) < codec.least_side)
        throw Error(file.path() + ": " + std::string(codec.name) + " has sides of " +
                    std::to_string(codec.least_side) + " pixels or more");
    return codec;
}

/// What ffmpeg is told of frames that are added.
std::vector<std::string> addedFrames(const Codec& codec, const ClipSettings& settings) {
    std::ostringstream words;
    words << "-protocol_whitelist pipe -f rawvideo -pix_fmt " << (codec.halves_colours ? "yuv420p" : "rgba")
          << " -s " << settings.size.width << 'x' << settings.size.height << " -r " << settings.fps
          << " -i pipe:0";
    return split(words.str());
}

/// What ffmpeg is told of a clip.
std::string clipWords(const OutputFormat& format, const Codec& codec, const ClipSettings& settings) {
    std::string words(codec.halves_colours ? kYuvWords : "");
    words += ' ' + encoderWords(codec, settings.encoder) + ' ';
    words.append(format.words);
    if (settings.once) words.append(" ").append(format.once);
    return words;
}

/// Frames as they are, for other programs; with what YUV4MPEG2 says before them where their colours are
/// halved.
class PlainFrames : public ClipWriter, private Yuv420Frames {
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

    void add(int, const RgbaImage& frame) override { write(m_bytes.of(frame)); }
    Yuv420Frames* yuv420() override { return m_bytes.areYuv420() ? this : nullptr; }
    void addYuv420(int, const std::vector<uint8_t>& planes) override { write(m_bytes.of(planes)); }

    void finish() override { throwIfCancelled(); }

  private:
    void write(std::string_view bytes) {
        writeAll(m_descriptor, m_before_each, m_name);
        writeAll(m_descriptor, bytes, m_name);
    }

    int m_descriptor;
    std::string m_name;
    FrameBytes m_bytes;
    std::string m_before_each;
};

/// A clip or still that appears at its place when it is whole.
class FileWriter : public ClipWriter {
  public:
    FileWriter(const std::string& path, const OutputFormat& format, const ClipSettings& settings)
        : m_output(path, settings.standard_output), m_encoder(encodeInto(&m_output, format, settings)) {}

    void add(int number, const RgbaImage& frame) override { m_encoder->add(number, frame); }
    Yuv420Frames* yuv420() override { return m_encoder->yuv420(); }

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
    const Codec& codec = codecFor(*file, format, settings);
    if (format.kind == OutputKind::kStill)
        return std::make_unique<StillEncoder>(file, codec, settings.encoder);
    if (codec.words.empty())
        return std::make_unique<PlainFrames>(file->descriptor(), file->path(), codec, settings);
    return std::make_unique<FfmpegEncoder>(file, codec, addedFrames(codec, settings),
                                           clipWords(format, codec, settings));
}

std::unique_ptr<ClipWriter> keepInto(PendingOutput* file, const OutputFormat& format,
                                     const ClipSettings& settings) {
    const Codec& codec = codecFor(*file, format, settings);
    // The fastest of ffmpeg's lossless codecs: of a photo's frames it leaves a third.
    return std::make_unique<FfmpegEncoder>(
        file, codec, addedFrames(codec, settings),
        codec.halves_colours ? "-c:v utvideo -f nut" : "-c:v utvideo -pix_fmt gbrp -f nut");
}

void encodeKept(const PendingOutput& frames, PendingOutput* file, const OutputFormat& format,
                const ClipSettings& settings) {
    const Codec& codec = codecFor(format, settings.encoder);
    std::vector<std::string> input = split("-protocol_whitelist file -f nut -i");
    input.push_back(nameFor(frames));
    FfmpegEncoder(file, codec, input, clipWords(format, codec, settings), &frames).finish();
}

std::unique_ptr<ClipWriter> openClip(const std::string& path, const OutputFormat& format,
                                     const ClipSettings& settings) {
    if (format.kind > OutputKind::kFolder)
        throw Error(path + ": " + std::string(format.name) + " has no frames");
    const Codec& codec = codecFor(format, settings.encoder);
    if (format.kind == OutputKind::kFolder)
        return std::make_unique<FolderWriter>(path, settings.force, format, settings.encoder);
    // What other programs read as it comes would fill the memory.
    if (path == kStandardOutput && format.kind == OutputKind::kClip && codec.words.empty())
        return std::make_unique<PlainFrames>(settings.standard_output, "standard output", codec, settings);
    return std::make_unique<FileWriter>(path, format, settings);
}

}  // namespace quorvane::media
