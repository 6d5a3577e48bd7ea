#include "media/clip/ffmpeg.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

#include "media/clip/output_format.h"
#include "system/cores.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

std::unique_ptr<ChildProcess> start(const std::vector<std::string>& words, const ChildFiles& files) {
    try {
        return std::make_unique<ChildProcess>(words, files);
    } catch (const StartError& error) {
        if (!error.notFound()) throw;
        throw Error("ffmpeg is not installed; it writes " + extensionsOf(OutputKind::kClip, " and ") +
                    " (a folder of .png needs none)");
    }
}

/// Whether what ffmpeg said last is one of the system's reasons that pass.
bool lacksSomething(const std::string& said) {
    constexpr int kReasons[] = {ENOSPC, EDQUOT, ENOMEM, EAGAIN, EIO};
    return std::any_of(std::begin(kReasons), std::end(kReasons),
                       [&said](int reason) { return said.find(std::strerror(reason)) != std::string::npos; });
}

/// With the threads that this process may use, where it may not use all.
std::vector<std::string> withinCores(std::vector<std::string> words) {
    // Before the output, which is last.
    if (coresAreLimited()) words.insert(words.end() - 1, {"-threads", std::to_string(usableCores())});
    return words;
}

}  // namespace

Ffmpeg::Ffmpeg(const std::vector<std::string>& words, std::vector<int> kept) : m_errors(memoryFile()) {
    Connection input = connection();
    m_input = std::move(input.here);
    m_process = start(withinCores(words), {input.there.number(), -1, m_errors.number(), std::move(kept)});
}

bool Ffmpeg::write(const void* bytes, size_t size) { return sendAll(m_input, bytes, size); }

bool Ffmpeg::finish() {
    m_input.close();
    return m_process->wait().succeeded();
}

void Ffmpeg::fail(const std::string& path) {
    // It may still be writing down why it stopped reading.
    m_input.close();
    const ExitStatus status = m_process->wait();
    const std::string said = complaint();
    std::string why = "ffmpeg failed (" + said + ")";
    if (said.empty())
        why = status.succeeded() ? "ffmpeg stopped before the last frame" : "ffmpeg " + status.words();
    if (status.signal() != 0 || lacksSomething(said)) throw TemporaryError(path + ": " + why);
    throw Error(path + ": " + why);
}

std::string Ffmpeg::complaint() const {
    const off_t size = lseek(m_errors.number(), 0, SEEK_END);
    std::array<char, 4096> tail;
    const ssize_t got = pread(m_errors.number(), tail.data(), tail.size(),
                              std::max<off_t>(0, size - static_cast<off_t>(tail.size())));
    std::string text(tail.data(), static_cast<size_t>(std::max<ssize_t>(0, got)));
    text.erase(text.find_last_not_of("\r\n") + 1);
    const size_t before = text.find_last_of("\r\n");
    return before == std::string::npos ? text : text.substr(before + 1);
}

}  // namespace quorvane::media
