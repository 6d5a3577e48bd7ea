#include "media/decoder/decoder.h"

#include <libheif/heif.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "media/decoder/packing.h"
#include "media/picture/vips.h"
#include "system/child_process.h"
#include "system/error.h"
#include "system/sandbox.h"
#include "system/sealed_memory.h"

namespace quorvane::media {
namespace {

using Clock = std::chrono::steady_clock;

enum class Call : uint32_t {
    kLookInside,
    kHeader,
    kBareJpeg,
    kPhoto,
    kPhotoOfContents,
    kPreview,
    kPhotoAtLeast,
    kDepthMap,
    kDepth,
    kSideBySide,
    kViews,
};

enum class Outcome : uint32_t { kDone, kError, kNoMemory };

// The worker's end of the connection is its standard input.
constexpr int kWorkersSocket = STDIN_FILENO;

// A decoder that does not even use CPU time has hung.
constexpr std::chrono::minutes kMostTime(15);

/// The file that a plane refers to does not travel with it.
void refer(EmbeddedDepth* depth, std::string_view file) {
    if (auto* item = std::get_if<DepthHeifItem>(&depth->plane)) item->file = file;
}

// The worker.

DecodingLimits g_limits;

/// From now on the worker may take as long as these pictures are worth, though their pixels are not looked
/// at.
void allowFor(std::initializer_list<std::string_view> files, bool pixels) {
    double seconds = g_limits.seconds;
    for (const std::string_view file : files) {
        seconds += g_limits.seconds_a_megabyte * static_cast<double>(file.size()) / 1e6;
        if (!pixels) continue;
        try {
            const PictureHeader header = readPictureHeader(file, "");
            seconds +=
                g_limits.seconds_a_million_pixels * (static_cast<double>(header.width) * header.height / 1e6);
        } catch (const Error&) {
            // Whoever decodes it says what is wrong with it.
        }
    }
    limitCpuTime(static_cast<unsigned>(seconds));
}

/// A file and its contents, as they travel.
struct Opened {
    std::string_view file;
    Contents contents;
    std::string name;

    explicit Opened(Unpacker* in) {
        in->unpack(file, contents, name);
        if (contents.depth) refer(&*contents.depth, file);
    }
    /// Of the photo that is shown.
    std::string_view picture() const { return contents.original ? contents.original->bytes : file; }
};

void answer(Call call, Unpacker* in, Packer* out) {
    constexpr Outcome kDone = Outcome::kDone;
    std::string_view bytes;
    std::string name, remark;
    switch (call) {
        case Call::kLookInside: {
            in->unpack(bytes);
            allowFor({bytes}, false);
            const Contents contents = lookInside(bytes);
            return out->pack(kDone, contents);
        }
        case Call::kBareJpeg: {
            in->unpack(bytes, name);
            allowFor({bytes}, false);
            const std::string bare = bareJpeg(bytes, name);
            return out->pack(kDone, bare);
        }
        case Call::kHeader: {
            in->unpack(bytes, name);
            allowFor({bytes}, false);
            const PictureHeader header = readPictureHeader(bytes, name);
            return out->pack(kDone, header);
        }
        case Call::kPhoto: {
            in->unpack(bytes, name);
            allowFor({bytes}, true);
            const RgbImage photo = decodePhoto(bytes, name);
            return out->pack(kDone, photo);
        }
        case Call::kPhotoOfContents: {
            const Opened opened(in);
            allowFor({opened.picture(), opened.file}, true);
            const RgbImage photo =
                decodePhoto(opened.file, opened.contents, opened.name, kMostPixels, &remark);
            return out->pack(kDone, photo, remark);
        }
        case Call::kPreview: {
            const Opened opened(in);
            const int least_side = in->take<int>();
            allowFor({opened.picture(), opened.file}, true);
            const ShrunkPhoto preview =
                previewPhoto(opened.file, opened.contents, opened.name, least_side, kMostPixels, &remark);
            return out->pack(kDone, preview, remark);
        }
        case Call::kPhotoAtLeast: {
            const Opened opened(in);
            const Size least = in->take<Size>();
            allowFor({opened.picture(), opened.file}, true);
            const ShrunkPhoto photo =
                decodePhotoAtLeast(opened.file, opened.contents, opened.name, least, kMostPixels, &remark);
            return out->pack(kDone, photo, remark);
        }
        case Call::kDepthMap: {
            in->unpack(bytes, name);
            allowFor({bytes}, true);
            const DepthMap depth = decodeDepthMap(bytes, name);
            return out->pack(kDone, depth);
        }
        case Call::kDepth: {
            EmbeddedDepth depth;
            in->unpack(bytes, depth, name);
            refer(&depth, bytes);
            allowFor({planeBytes(depth)}, true);
            const DepthMap map = decodeDepth(depth, name, kMostPixels, &remark);
            return out->pack(kDone, map, remark);
        }
        case Call::kSideBySide: {
            DepthHalf half = {};
            in->unpack(bytes, half, name);
            allowFor({bytes}, true);
            const SplitPicture split = decodeSideBySide(bytes, half, name);
            return out->pack(kDone, split);
        }
        case Call::kViews: {
            StereoPair pair;
            in->unpack(bytes, pair, name);
            const auto pictureOf = [bytes](const StereoView& view) {
                return view.bytes.empty() ? bytes : std::string_view(view.bytes);
            };
            allowFor({pictureOf(pair.left), pictureOf(pair.right)}, true);
            const StereoViews views = decodeViews(bytes, pair, name);
            return out->pack(kDone, views);
        }
    }
    throw Malformed();
}

SealedMemory answered(const SealedMemory& request) {
    const auto failed = [](Outcome outcome, const char* text) {
        Packer out;
        out.pack(outcome, std::string_view(text));
        return out.finish();
    };
    try {
        Packer out;
        Unpacker in(request.bytes());
        answer(in.take<Call>(), &in, &out);
        return out.finish();
    } catch (const Error& error) {
        return failed(Outcome::kError, error.what());
    } catch (const std::bad_alloc&) {
        return failed(Outcome::kNoMemory, "");
    }
}

// The program.

std::string g_program;

/// The one worker of this process.
class Worker {
  public:
    /// Null where there is none to be had.
    static Worker* get() {
        static std::unique_ptr<Worker> worker;
        if (worker && (worker->m_lost || worker->m_program != g_program)) worker.reset();
        if (worker || g_program.empty()) return worker.get();
        worker = started();
        if (!worker) g_program.clear();
        return worker.get();
    }

    /// Sends a request for the file called `name`, and waits for the answer. Throws Error.
    SealedMemory ask(const SealedMemory& request, const std::string& name) {
        m_lost = true;
        const Clock::time_point end = Clock::now() + kMostTime;
        if (!send(m_connection.here.number(), request)) throw failure(name, false);
        std::optional<SealedMemory> answer = receive(m_connection.here.number(), kMostTime);
        if (!answer) throw failure(name, Clock::now() >= end);
        m_lost = false;
        return *std::move(answer);
    }

  private:
    Worker()
        : m_program(g_program), m_connection(connection()), m_process({m_program, kDecodingWorker}, files()) {
        // The worker's own: with ours open too, its end would go unnoticed.
        m_connection.there.close();
    }

    /// A worker that is ready; null where none works.
    static std::unique_ptr<Worker> started() {
        // A limit of what files may hold is one of memory files too.
        rlimit file_size = {};
        if (getrlimit(RLIMIT_FSIZE, &file_size) != 0 || file_size.rlim_cur != RLIM_INFINITY) return nullptr;
        try {
            std::unique_ptr<Worker> worker(new Worker());
            // It says so before it has seen any file: in an emulator, say, it may not get that far.
            return receive(worker->m_connection.here.number(), kMostTime) ? std::move(worker) : nullptr;
        } catch (const StartError&) {
            return nullptr;
        }
    }

    ChildFiles files() {
        ChildFiles files;
        files.input = m_connection.there.number();
        return files;
    }

    /// Why no answer has come.
    Error failure(const std::string& name, bool hangs) {
        m_process.kill();
        const int signal = m_process.wait().signal();
        if (hangs || signal == SIGXCPU)
            return Error(name +
                         ": decoding it takes far longer than a picture of its size should; it is given up");
        return Error(name + ": a decoder crashed over it; it is damaged, or made to do harm");
    }

    const std::string m_program;
    Connection m_connection;
    ChildProcess m_process;
    bool m_lost = false;  ///< it cannot be asked again
};

/// What the worker answers to a call for the file called `name`.
template <typename... Results, typename... Values>
std::tuple<Results...> ask(Call call, const std::string& name, const Values&... values) {
    Packer request;
    request.pack(call, values...);
    const SealedMemory answer = Worker::get()->ask(request.finish(), name);
    try {
        Unpacker in(answer.bytes());
        switch (in.take<Outcome>()) {
            case Outcome::kDone: {
                std::tuple<Results...> results;
                std::apply([&in](auto&... result) { in.unpack(result...); }, results);
                return results;
            }
            case Outcome::kError: throw Error(in.take<std::string>());
            case Outcome::kNoMemory:
                throw Error(name + ": decoding it takes more memory than there is for it");
        }
        throw Malformed();
    } catch (const Malformed&) {
        throw Error(name + ": a decoder gave no sense; the file is damaged, or made to do harm");
    }
}

bool workerIsThere() { return Worker::get() != nullptr; }

/// Leaves the remark where it is wanted.
template <typename Result>
Result remarked(std::tuple<Result, std::string> answer, std::string* remark) {
    if (remark != nullptr) *remark = std::move(std::get<1>(answer));
    return std::move(std::get<0>(answer));
}

}  // namespace

void decodeInWorker(const std::string& program) {
    g_program.clear();
    Worker::get();
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // They map terabytes of addresses and ask the kernel for much that the sandbox refuses.
    static_cast<void>(program);
#else
    g_program = program;
#endif
}

int serveDecoding(const DecodingLimits& limits) {
    g_limits = limits;
    // A program that ends takes its worker along, even in the middle of a picture.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // What decoders open once: their modules, tables and settings.
    startVips();
    heif_init(nullptr);
    limitMemory(limits.memory);
    enterSandbox();
    Packer ready;
    if (!send(kWorkersSocket, ready.finish())) return 0;
    while (const std::optional<SealedMemory> request = receive(kWorkersSocket))
        if (!send(kWorkersSocket, answered(*request))) break;
    return 0;
}

namespace decoder {

Contents lookInside(std::string_view file, const std::string& name) {
    if (!workerIsThere()) return media::lookInside(file);
    auto [contents] = ask<Contents>(Call::kLookInside, name, file);
    if (contents.depth) refer(&*contents.depth, file);
    return std::move(contents);
}

PictureHeader readPictureHeader(std::string_view bytes, const std::string& name) {
    if (!workerIsThere()) return media::readPictureHeader(bytes, name);
    return std::get<0>(ask<PictureHeader>(Call::kHeader, name, bytes, name));
}

RgbImage decodePhoto(std::string_view bytes, const std::string& name) {
    if (!workerIsThere()) return media::decodePhoto(bytes, name);
    return std::get<0>(ask<RgbImage>(Call::kPhoto, name, bytes, name));
}

RgbImage decodePhoto(std::string_view file, const Contents& contents, const std::string& name,
                     std::string* remark) {
    if (!workerIsThere()) return media::decodePhoto(file, contents, name, kMostPixels, remark);
    return remarked(ask<RgbImage, std::string>(Call::kPhotoOfContents, name, file, contents, name), remark);
}

ShrunkPhoto previewPhoto(std::string_view file, const Contents& contents, const std::string& name,
                         int least_side, std::string* remark) {
    if (!workerIsThere()) return media::previewPhoto(file, contents, name, least_side, kMostPixels, remark);
    return remarked(ask<ShrunkPhoto, std::string>(Call::kPreview, name, file, contents, name, least_side),
                    remark);
}

ShrunkPhoto decodePhotoAtLeast(std::string_view file, const Contents& contents, const std::string& name,
                               Size least, std::string* remark) {
    if (!workerIsThere()) return media::decodePhotoAtLeast(file, contents, name, least, kMostPixels, remark);
    return remarked(ask<ShrunkPhoto, std::string>(Call::kPhotoAtLeast, name, file, contents, name, least),
                    remark);
}

DepthMap decodeDepthMap(std::string_view bytes, const std::string& name) {
    if (!workerIsThere()) return media::decodeDepthMap(bytes, name);
    return std::get<0>(ask<DepthMap>(Call::kDepthMap, name, bytes, name));
}

DepthMap decodeDepth(const EmbeddedDepth& depth, const std::string& name, std::string* remark) {
    if (!workerIsThere()) return media::decodeDepth(depth, name, kMostPixels, remark);
    const auto* item = std::get_if<DepthHeifItem>(&depth.plane);
    const std::string_view file = item != nullptr ? item->file : std::string_view();
    return remarked(ask<DepthMap, std::string>(Call::kDepth, name, file, depth, name), remark);
}

SplitPicture decodeSideBySide(std::string_view file, DepthHalf half, const std::string& name) {
    if (!workerIsThere()) return media::decodeSideBySide(file, half, name);
    return std::get<0>(ask<SplitPicture>(Call::kSideBySide, name, file, half, name));
}

std::string bareJpeg(std::string_view file, const std::string& name) {
    if (!workerIsThere()) return media::bareJpeg(file, name);
    return std::get<0>(ask<std::string>(Call::kBareJpeg, name, file, name));
}

StereoViews decodeViews(std::string_view file, const StereoPair& pair, const std::string& name) {
    if (!workerIsThere()) return media::decodeViews(file, pair, name);
    return std::get<0>(ask<StereoViews>(Call::kViews, name, file, pair, name));
}

}  // namespace decoder

}  // namespace quorvane::media
