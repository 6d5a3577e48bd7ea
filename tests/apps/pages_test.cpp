// What is made of the tables of options: manual pages, completion in three shells, and profiles. Every option
// of every command is in all of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>

#include "apps/quorvane/commands/profile_options.h"
#include "apps/quorvane/commands/program.h"
#include "apps/quorvane/drawing/view_options.h"
#include "apps/quorvane/terminal/completion.h"
#include "apps/quorvane/terminal/man_page.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane::app {
namespace {

using quorvane::test::TemporaryFolder;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;

bool isInstalled(const std::string& program) {
    return std::system(("command -v " + program + " > /dev/null 2>&1").c_str()) == 0;
}

#define NEEDS(program) \
    if (!isInstalled(program)) GTEST_SKIP() << "NO " program " HERE"

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// All options of a command with dashes, in every spelling.
std::vector<std::string> spellings(const CommandLine& command) {
    std::vector<std::string> names = {"-h", "--help"};
    for (const Option& option : command.options())
        if (!option.isArgument())
            for (const std::string& name : option.allNames()) names.push_back(name);
    return names;
}

std::vector<std::string> commandsOf(const Program& program) {
    std::vector<std::string> names;
    for (const auto& line : program.lines().lines()) names.push_back(line->name());
    return names;
}

/// Calls `check` with every command and each of its options that has a word to offer.
template <typename Check>
void forEachOffer(const Program& program, Check check) {
    for (const auto& command : program.lines().lines())
        for (const Option& option : command->options())
            if (!option.words().empty()) check(*command, option);
}

class Pages : public testing::Test {
  protected:
    std::string write(const std::string& name, const std::string& text) const {
        test::writeBytes(folder / name, text);
        return folder / name;
    }

    const Program program;
    const TemporaryFolder folder;
};

TEST_F(Pages, ManualHasEveryOptionArgumentAndTable) {
    const std::string all = manPage(program.lines(), "2026-01-02");
    for (const auto& command : program.lines().lines()) {
        SCOPED_TRACE(command->name());
        EXPECT_THAT(all, HasSubstr("quorvane\\-" + command->name() + "(1)"));
        const std::string page = manPage(program.lines(), *command, "2026-01-02");
        const auto has_item = [&page](std::string name) {
            for (size_t at = 0; (at = name.find('-', at)) != std::string::npos; at += 2)
                name.insert(at, "\\");
            EXPECT_THAT(page,
                        testing::AnyOf(HasSubstr("\\fB" + name + "\\fR"), HasSubstr("\\fI" + name + "\\fR")));
        };
        for (const std::string& name : spellings(*command)) has_item(name);
        for (const Option& option : command->options())
            if (option.isArgument()) has_item(option.name());
        for (const CommandLine::Table& table : command->tables())
            for (const auto& [word, meaning] : table.rows) has_item(word);
    }
}

TEST_F(Pages, ManualIsWithoutAWarning) {
    NEEDS("mandoc");
    NEEDS("groff");
    std::vector<std::string> pages = {manPage(program.lines(), "2026-01-02")};
    for (const auto& command : program.lines().lines())
        pages.push_back(manPage(program.lines(), *command, "2026-01-02"));
    for (const std::string& page : pages) {
        const std::string path = write("page.1", page);
        EXPECT_EQ(test::printedBy("mandoc -Tlint -W warning " + path), "");
        EXPECT_EQ(test::printedBy("groff -man -Tutf8 -ww -z " + path), "");
    }
}

TEST_F(Pages, ManualReadsAsTheHelpDoes) {
    NEEDS("mandoc");
    const auto& lines = program.lines().lines();
    const auto render =
        std::find_if(lines.begin(), lines.end(), [](const auto& l) { return l->name() == "render"; });
    const std::string path = write("render.1", manPage(program.lines(), **render, "2026-01-02"));
    std::string text = test::printedBy("mandoc -Tascii -O width=1000 " + path + " | col -b");
    EXPECT_THAT(text, HasSubstr("-o, --out PATH"));
    EXPECT_THAT(text, HasSubstr("--invert-depth[=yes|no|auto]"));
    EXPECT_THAT(text, HasSubstr("quorvane render PHOTO [DEPTH] [OPTIONS]"));
    for (const Example& example : (*render)->examples()) EXPECT_THAT(text, HasSubstr(example.line));
    for (const Option& option : (*render)->options()) {
        const bool has_to_be_given = option.isRequired() && !option.isArgument();
        EXPECT_THAT(text, HasSubstr((has_to_be_given ? "Required: " : "") + option.help()));
    }
}

// Each word that completion offers is one that the option takes.
TEST_F(Pages, OffersAreTaken) {
    forEachOffer(program, [](const CommandLine& command, const Option& option) {
        for (const std::string& word : option.words()) {
            EXPECT_FALSE(word.empty());
            EXPECT_EQ(
                word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.=:"),
                std::string::npos)
                << word << " means something to a shell";
            if (word.back() == '=') continue;
            EXPECT_NO_THROW(Option(option).take(word))
                << command.name() << " " << option.name() << " " << word;
        }
    });
}

TEST_F(Pages, BashCompletesCommandsOptionsAndWords) {
    NEEDS("bash");
    std::string script = "source " + write("quorvane", bashCompletion(program.lines())) + R"(
        try() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _quorvane; echo "${COMPREPLY[*]}"; }
)";
    std::vector<std::pair<std::string, std::vector<std::string>>> tries;
    tries.emplace_back("quorvane ''", commandsOf(program));
    tries.emplace_back("quorvane help ''", commandsOf(program));
    for (const auto& command : program.lines().lines())
        tries.emplace_back("quorvane " + command->name() + " photo.jpg -", spellings(*command));
    forEachOffer(program, [&](const CommandLine& command, const Option& option) {
        for (const std::string& name : option.allNames()) {
            const std::string before = "quorvane " + command.name() + " photo.jpg " + name;
            if (!option.isFlagOrWord()) tries.emplace_back(before + " ''", option.words());
            tries.emplace_back(before + " =", option.words());
            tries.emplace_back(before + " = " + option.words().front().substr(0, 1),
                               std::vector<std::string>{option.words().front()});
        }
    });
    for (const auto& [line, wanted] : tries) script += "try " + line + "\n";
    const std::vector<std::string> printed =
        linesOf(test::printedBy("bash --norc " + write("script", script)));
    ASSERT_EQ(printed.size(), tries.size());
    for (size_t i = 0; i < tries.size(); ++i)
        EXPECT_THAT(wordsOf(printed[i]), IsSupersetOf(tries[i].second)) << tries[i].first;
    // Nothing where only the user knows the value.
    EXPECT_EQ(test::printedBy("bash --norc " + write("script", "source " + (folder / "quorvane") + R"(
        COMP_WORDS=(quorvane render p.jpg --fps ''); COMP_CWORD=4; _quorvane; echo -n "${COMPREPLY[*]}")")),
              "");
}

TEST_F(Pages, FishCompletesCommandsOptionsAndWords) {
    NEEDS("fish");
    write("photo of mine.jpg", "");
    std::string script = "cd " + folder.path() + "; source " +
                         write("quorvane.fish", fishCompletion(program.lines())) +
                         "\nfunction try; echo '>' $argv[1]; complete -C $argv[1]; end\n";
    std::vector<std::pair<std::string, std::vector<std::string>>> tries;
    tries.emplace_back("quorvane ", commandsOf(program));
    tries.emplace_back("quorvane help ", commandsOf(program));
    for (const auto& command : program.lines().lines()) {
        std::vector<std::string> names = spellings(*command);
        names.erase(std::remove_if(names.begin(), names.end(),
                                   [](const std::string& name) { return name[1] != '-'; }),
                    names.end());
        tries.emplace_back("quorvane " + command->name() + " --", names);
    }
    forEachOffer(program, [&](const CommandLine& command, const Option& option) {
        std::vector<std::string> words = option.words();
        if (option.isFlagOrWord()) {
            for (std::string& word : words) word = option.name() + "=" + word;
            tries.emplace_back("quorvane " + command.name() + " " + option.name(), words);
        } else {
            tries.emplace_back("quorvane " + command.name() + " " + option.name() + " ", words);
        }
    });
    tries.emplace_back("quorvane render ph", std::vector<std::string>{"photo of mine.jpg"});
    tries.emplace_back("quorvane render -o ph", std::vector<std::string>{"photo of mine.jpg"});
    for (const auto& [line, wanted] : tries) script += "try '" + line + "'\n";
    const std::string printed =
        test::printedBy("HOME=" + folder.path() + " XDG_CONFIG_HOME=" + folder.path() + " fish --no-config " +
                        write("script.fish", script));
    std::vector<std::set<std::string>> found;
    for (const std::string& line : linesOf(printed)) {
        if (line[0] == '>')
            found.emplace_back();
        else if (!found.empty())
            found.back().insert(line.substr(0, line.find('\t')));
    }
    ASSERT_EQ(found.size(), tries.size()) << printed;
    for (size_t i = 0; i < tries.size(); ++i)
        EXPECT_THAT(found[i], IsSupersetOf(tries[i].second)) << tries[i].first;
}

// What a shell shows next to a word has to fit there.
TEST_F(Pages, DescriptionsAreShort) {
    const std::string before = " -d '";
    int described = 0;
    for (const std::string& line : linesOf(fishCompletion(program.lines()))) {
        const size_t at = line.find(before);
        if (at == std::string::npos) continue;
        ++described;
        EXPECT_LE(line.size() - (at + before.size() + 1), 64u) << line;
        EXPECT_GT(line.size() - (at + before.size() + 1), 0u) << line;
    }
    EXPECT_GT(described, 100);
}

/// A shell that believes that somebody types.
class Typing {
  public:
    explicit Typing(const std::vector<std::string>& arguments) {
        winsize size = {};
        size.ws_row = 50;
        size.ws_col = 200;
        m_shell = forkpty(&m_terminal, nullptr, nullptr, &size);
        if (m_shell != 0) return;
        setenv("TERM", "dumb", 1);
        std::vector<char*> words;
        for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
        words.push_back(nullptr);
        execvp(words[0], words.data());
        _exit(127);
    }
    ~Typing() {
        close(m_terminal);
        kill(m_shell, SIGKILL);
        waitpid(m_shell, nullptr, 0);
    }
    Typing(const Typing&) = delete;
    Typing& operator=(const Typing&) = delete;

    bool begun() const { return m_shell > 0; }

    void type(const std::string& keys) const {
        ASSERT_EQ(write(m_terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    /// All that has been shown, once `wanted` is in it, or after ten seconds without.
    const std::string& shown(const std::string& wanted) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (m_shown.find(wanted) == std::string::npos && std::chrono::steady_clock::now() < end) {
            timeval wait = {0, 100000};
            fd_set set;
            FD_ZERO(&set);
            FD_SET(m_terminal, &set);
            if (select(m_terminal + 1, &set, nullptr, nullptr, &wait) <= 0) continue;
            std::array<char, 4096> chunk = {};
            const ssize_t got = read(m_terminal, chunk.data(), chunk.size());
            if (got <= 0) break;
            m_shown.append(chunk.data(), static_cast<size_t>(got));
        }
        return m_shown;
    }

  private:
    int m_terminal = -1;
    pid_t m_shell = -1;
    std::string m_shown;
};

/// The keys, and what the line becomes by them.
const std::vector<std::pair<std::string, std::string>> kTyped = {
    {"quorvane rend\t", "quorvane render "},
    {"quorvane render --super\t", "quorvane render --supersample"},
    {"quorvane render --edges cl\t", "quorvane render --edges clean"},
    {"quorvane help samp\t", "quorvane help sample"},
    {"quorvane render photo-of\t", "quorvane render photo-of-mine.jpg"},
    {"quorvane render -o photo-of\t", "quorvane render -o photo-of-mine.jpg"},
    {"quorvane render --profile photo-of\t", "quorvane render --profile photo-of-mine.jpg"},
    {"quorvane render --set depth_contrast=9 --set fov_s\t0.8",
     "quorvane render --set depth_contrast=9 --set fov_scale=0.8"},
};

TEST_F(Pages, BashCompletesWhatIsTyped) {
    NEEDS("bash");
    write("photo-of-mine.jpg", "");
    write("quorvane", bashCompletion(program.lines()));
    Typing shell({"bash", "--norc", "-i"});
    if (!shell.begun()) GTEST_SKIP() << "NO PSEUDO-TERMINALS HERE";
    shell.type("PS1='$ '; cd " + folder.path() + "; source ./quorvane; echo rea''dy\n");
    ASSERT_THAT(shell.shown("ready"), HasSubstr("ready"));
    for (const auto& [keys, line] : kTyped) {
        shell.type(keys);
        EXPECT_THAT(shell.shown(line), HasSubstr(line));
        shell.type("\x15");
    }
}

TEST_F(Pages, ZshCompletesWhatIsTyped) {
    NEEDS("zsh");
    write("photo-of-mine.jpg", "");
    const std::string script = write("_quorvane", zshCompletion(program.lines()));
    EXPECT_EQ(test::printedBy("zsh -n " + script), "");
    Typing shell({"zsh", "-f", "-i"});
    if (!shell.begun()) GTEST_SKIP() << "NO PSEUDO-TERMINALS HERE";
    shell.type("PS1='$ '; unsetopt prompt_cr; cd " + folder.path() +
               "; fpath=($PWD $fpath); autoload -Uz compinit; compinit -u -D; echo rea''dy\n");
    ASSERT_THAT(shell.shown("ready"), HasSubstr("ready"));
    for (const auto& [keys, line] : kTyped) {
        shell.type(keys);
        EXPECT_THAT(shell.shown(line), HasSubstr(line));
        shell.type("\x15");
    }
}

TEST_F(Pages, ZshHasEveryOption) {
    const std::string script = zshCompletion(program.lines());
    for (const auto& command : program.lines().lines()) {
        const size_t begin = script.find("\n        " + command->name() + ")\n");
        ASSERT_NE(begin, std::string::npos) << command->name();
        const std::string part = script.substr(begin, script.find(";;", begin) - begin);
        for (const std::string& name : spellings(*command))
            EXPECT_THAT(part, testing::ContainsRegex("[',{*]" + name + "[]=+[,}]")) << command->name();
    }
}

const CommandLine* commandOf(const Program& program, const std::string& name) {
    for (const auto& line : program.lines().lines())
        if (line->name() == name) return line.get();
    return nullptr;
}

const Option* optionOf(const CommandLine& command, const std::string& name) {
    for (const Option& option : command.options())
        if (option.name() == name) return &option;
    return nullptr;
}

/// Some text that the option takes and that is not what it is by default.
std::string acceptedBy(const Option& option) {
    std::vector<std::string> tries = option.words();
    tries.insert(tries.end(), {"true", "2", "0.5", "1", "0.5,0.5", "60", "3", "8MB", "sbs", "quilt:2x2"});
    for (const std::string& text : tries) {
        if (text == option.value()) continue;
        try {
            Option(option).take(text);
            return text;
        } catch (const UsageError&) {
        }
    }
    return "";
}

/// The command line that gives all required arguments, and `more`.
void parse(Program* program, const std::string& command, const std::vector<std::string>& more) {
    std::vector<std::string> words = {"quorvane", command};
    for (const Option& option : commandOf(*program, command)->options()) {
        if (!option.isRequired()) continue;
        if (!option.isArgument()) words.push_back(option.name());
        words.emplace_back("file.png");
    }
    words.insert(words.end(), more.begin(), more.end());
    std::vector<const char*> arguments;
    for (const std::string& word : words) arguments.push_back(word.c_str());
    size_t chosen = 0;
    ASSERT_TRUE(program->parse(static_cast<int>(arguments.size()), arguments.data(), &chosen));
}

// Each option is kept by a profile and comes back from it, names a file or a program, or is on the list of
// those that are no part of a picture.
TEST_F(Pages, ProfilesKeepEveryOptionOfAPicture) {
    std::set<std::string> not_kept(notOfPictures().begin(), notOfPictures().end());
    std::set<std::string> seen;
    int kept = 0;
    for (const auto& command : program.lines().lines()) {
        for (const Option& option : command->options()) {
            seen.insert(option.name());
            if (optionOf(*command, "--profile") == nullptr || option.isFile() ||
                not_kept.count(option.name()) > 0 || option.name() == "--depth-cmd" ||
                option.name() == "--set")
                continue;
            SCOPED_TRACE(command->name() + " " + option.name());
            const std::string text = acceptedBy(option);
            ASSERT_NE(text, "") << "a value for this option is wanted in acceptedBy";
            EXPECT_FALSE(option.isRepeated()) << "a profile holds one value";
            Program given, taken;
            parse(&given, command->name(), {option.isFlag() ? option.name() : option.name() + "=" + text});
            const media::Profile profile = profileOf(*commandOf(given, command->name()), ViewOptions());
            EXPECT_THAT(profile.options, Contains(testing::Key(option.name().substr(2))));
            parse(&taken, command->name(), {"--profile", write("p.json", media::profileText(profile))});
            EXPECT_EQ(optionOf(*commandOf(taken, command->name()), option.name())->value(), text);
            ++kept;
        }
    }
    EXPECT_GT(kept, 40);
    for (const std::string& name : notOfPictures()) EXPECT_THAT(seen, Contains(name)) << "no command has it";
}

}  // namespace
}  // namespace quorvane::app
