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

class StillWriter : public ClipWriter {
  public:
    explicit StillWriter(const std::string& path) : m_path(path) {
        // Only asked whether the place can be written, before any work is done.
        const PendingOutput place(path);
    }
    void add(int, const RgbaImage& frame) override { m_frame = frame; }
    void finish() override {
        throwIfCancelled();
        writePng(m_frame, m_path);
    }

  private:
    std::string m_path;
    RgbaImage m_frame;
};

std::string frameName(int number) {
    char name[24];
    std::snprintf(name, sizeof name, "%05d.png", number);
    return name;
}

class FolderWriter : public ClipWriter {
  public:
    FolderWriter(const std::string& path, bool force) : m_folder(path, force) {}

    void add(int number, const RgbaImage& frame) override {
        throwIfCancelled();
        m_folder.add(frameName(number + 1),
                     [&frame](int descriptor, const std::string& name) { savePng(frame, descriptor, name); });
    }

    void finish() override {
        throwIfCancelled();
        // Frames of an earlier, longer clip would be taken for this one's.
        m_folder.commit(isFrameName);
    }

  private:
    PendingFolder m_folder;
};

class FfmpegWriter : public ClipWriter {
  public:
    FfmpegWriter(const std::string& path, std::string_view words, const ClipSettings& settings)
        : m_path(path), m_pending(path), m_ffmpeg(arguments(words, settings), m_pending.descriptor()) {}

    void add(int, const RgbaImage& frame) override {
        if (!m_ffmpeg.write(frame.samples.data(), frame.samples.size())) fail();
    }

    void finish() override {
        if (!m_ffmpeg.finish()) fail();
        if (m_pending.empty()) throw Error(m_path + ": ffmpeg has written nothing");
        throwIfCancelled();
        m_pending.commit();
    }

  private:
    std::vector<std::string> arguments(std::string_view format, const ClipSettings& settings) const {
        std::ostringstream words;
        // -xerror: without it a clip whose end found no room on the disk counts as success.
        words << "ffmpeg -nostdin -xerror -hide_banner -loglevel error -y -protocol_whitelist pipe -f "
                 "rawvideo -pix_fmt rgba -s "
              << settings.size.width << 'x' << settings.size.height << " -r " << settings.fps << " -i pipe:0 "
              << format;
        std::istringstream split(words.str());
        std::vector<std::string> args{std::istream_iterator<std::string>(split), {}};
        // file: keeps a name with a colon from being taken for a protocol.
        args.push_back("file:" + m_pending.temporary());
        return args;
    }

    [[noreturn]] void fail() { throw Error(m_path + ": " + m_ffmpeg.failure()); }

    std::string m_path;
    PendingOutput m_pending;
    Ffmpeg m_ffmpeg;
};

}  // namespace

bool isFrameName(const std::string& name) {
    return name.size() >= 9 && name.substr(name.size() - 4) == ".png" &&
           std::all_of(name.begin(), name.end() - 4, [](unsigned char c) { return std::isdigit(c); });
}

std::unique_ptr<ClipWriter> openClip(const std::string& path, const OutputFormat& format,
                                     const ClipSettings& settings) {
    switch (format.kind) {
        case OutputKind::kStill: return std::make_unique<StillWriter>(path);
        case OutputKind::kFolder: return std::make_unique<FolderWriter>(path, settings.force);
        case OutputKind::kPage: throw Error(path + ": a page has no frames");
        case OutputKind::kClip: break;
    }
    return std::make_unique<FfmpegWriter>(path, format.words, settings);
}

}  // namespace quorvane::media
