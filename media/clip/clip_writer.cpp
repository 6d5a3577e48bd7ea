#include "media/clip/clip_writer.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <system_error>

#include "media/clip/ffmpeg.h"
#include "media/picture/picture_file.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::media {
namespace {

namespace fs = std::filesystem;

std::string lowerExtension(const std::string& path) {
    std::string extension = fs::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

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
    FolderWriter(const std::string& path, bool force)
        : m_path(withoutSlash(path)), m_folder(placeOf(m_path)) {
        std::error_code failed;
        requireFolderFor(m_folder, path);
        if (fs::exists(m_folder, failed) && !fs::is_directory(m_folder, failed))
            throw Error(path + ": is a file, not a folder");
        if (!force && fs::is_directory(m_folder, failed) && !fs::is_empty(m_folder, failed))
            throw Error(path + ": the folder is not empty; --force replaces the numbered frames in it");
        std::string pending;
        do {
            pending = temporaryBeside(m_folder);
        } while (!fs::create_directory(pending, failed) && !failed);
        if (failed) throw Error(path + ": cannot be written (" + failed.message() + ")");
        m_pending = pending;
    }

    ~FolderWriter() override {
        std::error_code ignored;
        if (!m_pending.empty()) fs::remove_all(m_pending, ignored);
    }

    bool takesAnyOrder() const override { return true; }

    void add(int number, const RgbaImage& frame) override {
        throwIfCancelled();
        try {
            writePng(frame, m_pending + "/" + frameName(number + 1));
            ++m_frames;
        } catch (const Error& error) {
            // It begins with a name that the user has never seen.
            throw Error(std::string(error.what()).replace(0, m_pending.size(), m_path));
        }
    }

    void finish() override {
        throwIfCancelled();
        try {
            if (fs::is_directory(m_folder) && !fs::is_empty(m_folder)) {
                replaceFrames();
            } else {
                // rename() replaces an empty folder.
                fs::rename(m_pending, m_folder);
            }
        } catch (const fs::filesystem_error& failed) {
            throw Error(m_path + ": cannot be written (" + failed.code().message() + ")");
        }
        m_pending.clear();
    }

  private:
    static std::string withoutSlash(std::string path) {
        while (path.size() > 1 && path.back() == '/') path.pop_back();
        return path;
    }

    // Frames of an earlier, longer clip would be taken for this one's.
    void replaceFrames() {
        for (const auto& entry : fs::directory_iterator(m_folder))
            if (isFrameName(entry.path().filename().string())) fs::remove(entry.path());
        for (int number = 1; number <= m_frames; ++number)
            fs::rename(m_pending + "/" + frameName(number), m_folder + "/" + frameName(number));
        fs::remove(m_pending);
    }

    std::string m_path;
    std::string m_folder;   ///< where the path leads
    std::string m_pending;  ///< empty until it is made and again once it is moved
    std::atomic<int> m_frames{0};
};

class FfmpegWriter : public ClipWriter {
  public:
    FfmpegWriter(const std::string& path, OutputKind kind, const ClipFormat& format)
        : m_path(path), m_pending(path), m_ffmpeg(arguments(kind, format)) {}

    void add(int, const RgbaImage& frame) override {
        throwIfCancelled();
        if (!m_ffmpeg.write(frame.samples.data(), frame.samples.size())) fail();
    }

    void finish() override {
        if (!m_ffmpeg.finish()) fail();
        throwIfCancelled();
        m_pending.commit();
    }

  private:
    std::vector<std::string> arguments(OutputKind kind, const ClipFormat& format) const {
        std::ostringstream words;
        // -xerror: without it a clip whose end found no room on the disk counts as success.
        words << "ffmpeg -nostdin -xerror -hide_banner -loglevel error -y -f rawvideo -pix_fmt rgba -s "
              << format.size.width << 'x' << format.size.height << " -r " << format.fps << " -i pipe:0 ";
        switch (kind) {
            case OutputKind::kMp4:
                // BT.709 limited range, said so in the file: players otherwise guess by the picture's height.
                words << "-vf scale=out_color_matrix=bt709:out_range=tv,format=yuv420p"
                         " -c:v libx264 -preset medium -crf 18 -colorspace bt709 -color_primaries bt709"
                         " -color_trc iec61966-2-1 -color_range tv -movflags +faststart -f mp4";
                break;
            case OutputKind::kWebp: words << "-c:v libwebp_anim -quality 85 -loop 0 -f webp"; break;
            case OutputKind::kGif:
                words << "-filter_complex split[a][b];[a]palettegen[p];[b][p]paletteuse -loop 0 -f gif";
                break;
            case OutputKind::kStill:
            case OutputKind::kFolder: break;
        }
        std::istringstream split(words.str());
        std::vector<std::string> args{std::istream_iterator<std::string>(split), {}};
        // file: keeps a name with a colon from being taken for a protocol.
        args.push_back("file:" + m_pending.temporary());
        return args;
    }

    [[noreturn]] void fail() {
        throwIfCancelled();
        throw Error(m_path + ": ffmpeg failed (" + m_ffmpeg.complaint() + ")");
    }

    std::string m_path;
    PendingOutput m_pending;
    Ffmpeg m_ffmpeg;
};

}  // namespace

OutputKind outputKind(const std::string& path) {
    std::error_code ignored;
    if (!path.empty() && path.back() == '/') return OutputKind::kFolder;
    if (fs::is_directory(path, ignored)) return OutputKind::kFolder;
    const std::string extension = lowerExtension(path);
    if (extension.empty()) return OutputKind::kFolder;
    if (extension == ".png") return OutputKind::kStill;
    if (extension == ".mp4") return OutputKind::kMp4;
    if (extension == ".webp") return OutputKind::kWebp;
    if (extension == ".gif") return OutputKind::kGif;
    throw Error(path + ": write .mp4, .webp or .gif (clips), .png (a still) or a folder");
}

bool isFrameName(const std::string& name) {
    return name.size() >= 9 && name.substr(name.size() - 4) == ".png" &&
           std::all_of(name.begin(), name.end() - 4, [](unsigned char c) { return std::isdigit(c); });
}

std::unique_ptr<ClipWriter> openClip(const std::string& path, OutputKind kind, const ClipFormat& format) {
    switch (kind) {
        case OutputKind::kStill: return std::make_unique<StillWriter>(path);
        case OutputKind::kFolder: return std::make_unique<FolderWriter>(path, format.force);
        case OutputKind::kMp4:
        case OutputKind::kWebp:
        case OutputKind::kGif: break;
    }
    return std::make_unique<FfmpegWriter>(path, kind, format);
}

}  // namespace quorvane::media
