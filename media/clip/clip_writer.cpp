#include "media/clip/clip_writer.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iterator>
#include <sstream>

#include "media/clip/ffmpeg.h"
#include "media/picture/picture_file.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/pending_folder.h"
#include "system/pending_output.h"

namespace quorvane::media {
namespace {

// BT.709 limited range, said so in the file: players otherwise guess by the picture's height.
constexpr std::string_view kYuvWords =
    "-vf scale=out_color_matrix=bt709:out_range=tv,format=yuv420p -colorspace bt709 -color_primaries bt709"
    " -color_trc iec61966-2-1 -color_range tv";

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
    StillWriter(std::string path, const Codec& codec, EncoderSettings encoder)
        : m_path(std::move(path)), m_codec(codec), m_encoder(std::move(encoder)), m_output(m_path) {}

    void add(int, const RgbaImage& frame) override {
        savePicture(frame, m_codec, m_encoder, m_output.descriptor(), m_path);
    }
    void finish() override {
        throwIfCancelled();
        m_output.commit();
    }

  private:
    std::string m_path;
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
    FfmpegEncoder(PendingOutput* file, const OutputFormat& format, const ClipSettings& settings)
        : m_file(*file), m_ffmpeg(arguments(format, settings), file->descriptor()) {}

    void add(int, const RgbaImage& frame) override {
        if (!m_ffmpeg.write(frame.samples.data(), frame.samples.size())) fail();
    }

    void finish() override {
        if (!m_ffmpeg.finish()) fail();
        if (m_file.empty()) throw Error(m_file.path() + ": ffmpeg has written nothing");
        throwIfCancelled();
    }

  private:
    std::vector<std::string> arguments(const OutputFormat& format, const ClipSettings& settings) const {
        const Codec& codec = codecFor(format, settings.encoder);
        if (std::min(settings.size.width, settings.size.height) < codec.least_side)
            throw Error(m_file.path() + ": " + std::string(codec.name) + " has sides of " +
                        std::to_string(codec.least_side) + " pixels or more");
        std::ostringstream words;
        // -xerror: without it a clip whose end found no room on the disk counts as success.
        words << "ffmpeg -nostdin -xerror -hide_banner -loglevel error -y -protocol_whitelist pipe -f "
                 "rawvideo -pix_fmt rgba -s "
              << settings.size.width << 'x' << settings.size.height << " -r " << settings.fps
              << " -i pipe:0 ";
        if (codec.halves_colours) words << kYuvWords << ' ';
        words << encoderWords(codec, settings.encoder) << ' ' << format.words;
        std::istringstream split(words.str());
        std::vector<std::string> args{std::istream_iterator<std::string>(split), {}};
        // file: keeps a name with a colon from being taken for a protocol.
        args.push_back("file:" + m_file.temporary());
        return args;
    }

    [[noreturn]] void fail() { throw Error(m_file.path() + ": " + m_ffmpeg.failure()); }

    PendingOutput& m_file;
    Ffmpeg m_ffmpeg;
};

/// A clip that appears at its place when it is whole.
class FileWriter : public ClipWriter {
  public:
    FileWriter(const std::string& path, const OutputFormat& format, const ClipSettings& settings)
        : m_output(path), m_encoder(encodeInto(&m_output, format, settings)) {}

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
    return std::make_unique<FfmpegEncoder>(file, format, settings);
}

std::unique_ptr<ClipWriter> openClip(const std::string& path, const OutputFormat& format,
                                     const ClipSettings& settings) {
    const EncoderSettings& encoder = settings.encoder;
    switch (format.kind) {
        case OutputKind::kStill:
            return std::make_unique<StillWriter>(path, codecFor(format, encoder), encoder);
        case OutputKind::kFolder:
            return std::make_unique<FolderWriter>(path, settings.force, format, encoder);
        case OutputKind::kPage: throw Error(path + ": a page has no frames");
        case OutputKind::kClip: break;
    }
    return std::make_unique<FileWriter>(path, format, settings);
}

}  // namespace quorvane::media
