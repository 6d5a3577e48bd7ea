#ifndef QUORVANE_APPS_TERMINAL_COMMAND_LINE_H
#define QUORVANE_APPS_TERMINAL_COMMAND_LINE_H

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace quorvane::app {

/// A full command line, and what it is for.
struct Example {
    const char* task;
    const char* line;
};

/// One option or argument, as it was added. Lives as long as its CommandLine.
class Option {
  public:
    Option& required();
    Option& called(const std::string& value);  ///< what stands for its value in the help
    Option& excludes(const Option& other);     ///< given together they are refused

    /// Whether the user gave it; known when the command runs.
    bool given() const;

    /// What messages call it, such as "--size".
    std::string name() const;

  private:
    friend class CommandLine;
    friend class CommandLines;

    CLI::Option* m_option = nullptr;
    std::string m_names;  ///< "-o,--out"; "PHOTO" for an argument, which is known by its place
    std::string m_value;
    std::string m_help;
    bool m_required = false;
};

/// The options and arguments of one command. Names are "--size", "-o,--out", or "PHOTO" for an argument. What
/// the user gives is in its place when the command runs; until then the places hold the defaults, which the
/// help shows. A value that is no number or word of those allowed throws UsageError.
class CommandLine {
  public:
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    Option& text(const std::string& names, std::string* to, const std::string& help);
    Option& whole(const std::string& names, int* to, int least, int most, const std::string& help);
    Option& number(const std::string& names, double* to, double least, double most, const std::string& help);

    /// `take` gets what the user gave, and throws UsageError where it is not what is wanted.
    Option& parsed(const std::string& names, const std::function<void(const std::string&)>& take,
                   const std::string& help);

    /// The same for an option that may be given several times.
    Option& repeated(const std::string& names, const std::function<void(const std::string&)>& take,
                     const std::string& help);

    /// One of `words`, of which `take` gets the place.
    Option& word(const std::string& names, const std::vector<std::string>& words,
                 std::function<void(size_t)> take, const std::string& help);

    /// A flag that may have one of `words` behind '=', as in --name=word; alone it means the word `alone`.
    Option& flagOrWord(const std::string& names, const std::vector<std::string>& words, size_t alone,
                       std::function<void(size_t)> take, const std::string& help);

    Option& flag(const std::string& names, bool* to, const std::string& help);   ///< sets `*to`
    Option& unset(const std::string& names, bool* to, const std::string& help);  ///< clears `*to`
    Option& count(const std::string& names, int* to, const std::string& help);

    /// A paragraph of the help, behind the options: a heading, and rows of a word and what it means.
    void table(const std::string& heading, std::vector<std::pair<std::string, std::string>> rows);

  private:
    friend class CommandLines;
    struct Table {
        std::string heading;
        std::vector<std::pair<std::string, std::string>> rows;
    };

    explicit CommandLine(CLI::App* app);
    Option& add(CLI::Option* option, const std::string& names, std::string value, std::string help);

    CLI::App* m_app;
    std::string m_summary;
    std::vector<Example> m_examples;
    std::deque<Option> m_options;
    std::vector<Table> m_tables;
};

/// The command lines of a program: the first word chooses one.
class CommandLines {
  public:
    CommandLines(const std::string& program, const std::string& summary, const std::string& version);
    ~CommandLines();
    CommandLines(const CommandLines&) = delete;
    CommandLines& operator=(const CommandLines&) = delete;

    /// Adds a command.
    CommandLine* add(const std::string& name, const std::string& summary, std::vector<Example> examples);

    /// Lines for the end of the program's help.
    void note(const std::string& text);

    /// The place of the command that was chosen, in the order of `add`; none where help or the version was
    /// asked for and has been printed. Throws UsageError.
    bool parse(int argc, const char* const* argv, size_t* chosen);

  private:
    std::string help(size_t width) const;
    std::string help(const CommandLine& line, size_t width) const;
    [[noreturn]] void refuse(const std::string& fault) const;

    std::string m_program;
    std::string m_summary;
    std::string m_version;
    std::string m_note;
    std::unique_ptr<CLI::App> m_app;
    std::vector<std::unique_ptr<CommandLine>> m_lines;
};

}  // namespace quorvane::app

#endif
