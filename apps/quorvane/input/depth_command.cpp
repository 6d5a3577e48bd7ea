#include "apps/quorvane/input/depth_command.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "apps/quorvane/terminal/ended_by_signals.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "system/cancel.h"
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
        if (mkdtemp(m_path.data()) == nullptr)
            throw Error(std::string("no temporary folder can be made: ") + std::strerror(errno));
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

/// A running program; killed and reaped by the destructor.
class Program {
  public:
    /// Starts words[0], found on PATH.
    explicit Program(const std::vector<std::string>& words) {
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
        // A process group of its own: Ctrl-C reaches us alone, and we end it with all that it has started.
        // What we ignore it need not.
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setpgroup(&attributes, 0);
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
        sigaddset(&defaults, SIGXFSZ);
        posix_spawnattr_setsigdefault(&attributes, &defaults);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);

        std::vector<char*> argv;
        argv.reserve(words.size() + 1);
        for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
        argv.push_back(nullptr);
        const int failed = posix_spawnp(&m_process, argv[0], &files, &attributes, argv.data(), environ);
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&files);
        if (failed != 0) {
            m_process = -1;
            throw Error("--depth-cmd: " + words[0] + " does not start (" + std::strerror(failed) + ")");
        }
    }
    ~Program() {
        if (m_process < 0) return;
        kill(-m_process, SIGKILL);
        while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits for its end and returns its wait status. Throws Error("interrupted") after a signal.
    int wait() {
        // A signal that comes just before a wait does not end it, so no wait is endless.
        constexpr int kLongestWaitMs = 100;
        int status = 0;
        for (int wait_ms = 1;; wait_ms = std::min(2 * wait_ms, kLongestWaitMs)) {
            throwIfCancelled();
            const pid_t ended = waitpid(m_process, &status, WNOHANG);
            if (ended == m_process) break;
            if (ended < 0 && errno != EINTR)
                throw Error(std::string("--depth-cmd: cannot be waited for (") + std::strerror(errno) + ")");
            poll(nullptr, 0, wait_ms);
        }
        m_process = -1;
        return status;
    }

  private:
    pid_t m_process = -1;
};

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

        const int status = Program(words).wait();
        if (WIFSIGNALED(status))
            throw Error(name + " was ended by signal " + std::to_string(WTERMSIG(status)) + " (" +
                        strsignal(WTERMSIG(status)) + ")");
        if (WEXITSTATUS(status) != 0)
            throw Error(name + " failed with exit code " + std::to_string(WEXITSTATUS(status)));
        std::error_code ignored;
        if (!fs::is_regular_file(out, ignored)) throw Error(name + " has written no {out}");
        return media::readPictureFile(out, name + ": " + kOut);
    }();
    return endedBySignals([&] { return media::decodeDepthMap(bytes, name + ": " + kOut); });
}

}  // namespace quorvane::app
