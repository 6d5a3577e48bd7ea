#include "media/clip/clip_writer.h"

#include <fcntl.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <set>
#include <sstream>
#include <system_error>

#include "media/clip/ffmpeg.h"
#include "media/picture/picture_file.h"
#include "system/cancel.h"
#include "system/descriptor.h"
#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::media {
namespace {

namespace fs = std::filesystem;

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
            throw FolderNotEmpty(path + ": the folder is not empty");
        // Inside the folder where there is one: it may be another disk than what it lies in.
        m_was_there = fs::is_directory(m_folder, failed);
        std::string pending;
        do {
            pending = temporaryBeside(m_was_there ? m_folder + "/frames" : m_folder);
        } while (!fs::create_directory(pending, failed) && !failed);
        if (failed) throw Error(path + ": cannot be written (" + failed.message() + ")");
        m_pending = pending;
    }

    ~FolderWriter() override {
        std::error_code ignored;
        if (!m_pending.empty()) fs::remove_all(m_pending, ignored);
    }

    void add(int number, const RgbaImage& frame) override {
        throwIfCancelled();
        const std::string name = "/" + frameName(number + 1);
        const Descriptor file(
            open((m_pending + name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        const auto fail = [&] {
            throw Error(m_path + name + ": cannot be written (" + std::strerror(errno) + ")");
        };
        if (!file) fail();
        savePng(frame, file.number(), m_path + name);
        if (!reachesDisk(file.number())) fail();
        ++m_frames;
    }

    void finish() override {
        throwIfCancelled();
        try {
            if (m_was_there)
                fillFolder();
            else
                fs::rename(m_pending, m_folder);
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

    void fillFolder() {
        std::set<std::string> names;
        for (int number = 1; number <= m_frames; ++number) {
            const std::string& name = *names.insert(frameName(number)).first;
            fs::rename(m_pending + "/" + name, m_folder + "/" + name);
        }
        // Frames of an earlier, longer clip would be taken for this one's.
        for (const auto& entry : fs::directory_iterator(m_folder)) {
            const std::string name = entry.path().filename().string();
            if (isFrameName(name) && names.count(name) == 0) fs::remove(entry.path());
        }
        fs::remove(m_pending);
    }

    std::string m_path;
    std::string m_folder;   ///< where the path leads
    bool m_was_there;       ///< before this writer
    std::string m_pending;  ///< empty until it is made and again once it is moved
    std::atomic<int> m_frames{0};
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
        case OutputKind::kClip: break;
    }
    return std::make_unique<FfmpegWriter>(path, format.words, settings);
}

}  // namespace quorvane::media
