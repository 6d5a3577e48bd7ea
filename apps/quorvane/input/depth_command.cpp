#include "apps/quorvane/input/depth_command.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "apps/quorvane/terminal/ended_by_signals.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/decoder/decoder.h"
#include "system/cancel.h"
#include "system/child_process.h"
#include "system/error.h"

namespace quorvane::app {

namespace fs = std::filesystem;

namespace {

constexpr char kIn[] = "{in}";
constexpr char kOut[] = "{out}";

/// A folder that only this user can enter, gone with everything in it.
class PrivateFolder {
  public:
    PrivateFolder() {
        std::error_code failed;
        const fs::path place = fs::temp_directory_path(failed);
        m_path = ((failed ? fs::path(P_tmpdir) : place) / "quorvane-XXXXXX").string();
        if (mkdtemp(m_path.data()) == nullptr) throwFor("no temporary folder can be made", errno);
    }
    ~PrivateFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    std::string operator/(const char* name) const { return m_path + "/" + name; }

  private:
    std::string m_path;
};

/// Runs a program to its end. Throws Error unless it succeeds, and Cancelled after a signal.
void run(const std::vector<std::string>& words) {
    // What it prints does not belong to this program's output.
    const ExitStatus status = ChildProcess(words, {-1, STDERR_FILENO, STDERR_FILENO, {}}).wait();
    if (!status.succeeded()) throw Error(words[0] + " " + status.words());
}

std::string replaced(std::string word, const std::string& name, const std::string& path) {
    for (size_t at = 0; (at = word.find(name, at)) != std::string::npos; at += path.size())
        word.replace(at, name.size(), path);
    return word;
}

}  // namespace

std::vector<std::string> parseDepthCommand(const std::string& text) {
    std::vector<std::string> words;
    bool inside = false;  // a word; it may be empty, as '' is
    char quote = '\0';
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote == '\0' && std::strchr(" \t\n", c) != nullptr) {
            inside = false;
            continue;
        }
        if (!inside) words.emplace_back();
        inside = true;
        if (quote == '\0' && (c == '\'' || c == '"')) {
            quote = c;
        } else if (c == quote) {
            quote = '\0';
        } else if (c == '\\' && quote != '\'') {
            if (i + 1 == text.size()) throw UsageError("--depth-cmd: ends in a backslash");
            const char next = text[++i];
            // Between double quotes a shell keeps the backslash before all but these.
            if (quote == '"' && std::strchr("\"\\$`", next) == nullptr) words.back() += c;
            words.back() += next;
        } else {
            words.back() += c;
        }
    }
    if (quote != '\0') throw UsageError(std::string("--depth-cmd: a ") + quote + " stays open");
    for (const char* name : {kIn, kOut})
        if (std::none_of(words.begin(), words.end(),
                         [name](const std::string& word) { return word.find(name) != std::string::npos; }))
            throw UsageError(std::string("--depth-cmd: has no ") + name +
                             "; a program with {in} and {out} is wanted, such as 'estimate {in} {out}'");
    return words;
}

media::DepthMap estimateDepth(const std::vector<std::string>& command, const media::RgbImage& photo) {
    const std::string name = "--depth-cmd: " + command[0];
    const std::string bytes = [&] {
        const PrivateFolder folder;
        const std::string in = folder / "photo.png";
        const std::string out = folder / "depth.png";
        media::writePng(photo, in);
        throwIfCancelled();
        std::vector<std::string> words;
        words.reserve(command.size());
        for (const std::string& word : command) words.push_back(replaced(replaced(word, kIn, in), kOut, out));

        try {
            run(words);
        } catch (const Error& error) {
            throw Error(std::string("--depth-cmd: ") + error.what());
        }
        std::error_code ignored;
        if (!fs::is_regular_file(out, ignored)) throw Error(name + " has written no {out}");
        return media::readPictureFile(out, name + ": " + kOut);
    }();
    return endedBySignals([&] { return media::decoder::decodeDepthMap(bytes, name + ": " + kOut); });
}

}  // namespace quorvane::app
