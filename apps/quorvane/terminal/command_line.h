#ifndef QUORVANE_APPS_TERMINAL_COMMAND_LINE_H
#define QUORVANE_APPS_TERMINAL_COMMAND_LINE_H

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
class ParseError;
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
    Option& called(const std::string& value);   ///< what stands for its value in the help
    Option& usually(const std::string& value);  ///< its default: help says it, and a profile keeps it
    Option& excludes(const Option& other);      ///< given together they are refused

    /// What completion offers: some of what may stand behind it. A word's own words are offered by
    /// themselves.
    Option& offers(const std::vector<std::string>& words);

    /// Names, such as other programs', that are no option's and by which people look for this one: a line
    /// that has one is refused with this name.
    Option& soughtAs(const std::vector<std::string>& names);

    /// Says the same as `other` in another way: the one that the user gives puts aside what a profile says of
    /// the other. What excludes each other does so, too.
    Option& rivals(const Option& other);

    /// Whether the user gave it, on the command line; known when the command runs.
    bool given() const;

    /// What the user gave, where it was given.
    std::string givenText() const;

    /// The words of a command line that give it once more as it was given; none where it was not.
    std::vector<std::string> givenWords() const;

    /// What messages call it, such as "--size".
    std::string name() const;

    /// Whether it is known by its place.
    bool isArgument() const { return m_names[0] != '-'; }

    /// Whether it stands alone, without a value.
    bool isFlag() const { return m_value.empty(); }

    /// Whether its value is a file's or folder's name: arguments, and what is called FILE..., PATH, FOLDER
    /// or OUT.
    bool isFile() const;

    bool isRepeated() const { return m_repeated; }

    bool isRequired() const { return m_required; }

    /// Whether a value stands behind '=', or none at all.
    bool isFlagOrWord() const { return !m_value.empty() && m_value[0] == '['; }

    /// "-o" and "--out"; "PHOTO" of an argument.
    std::vector<std::string> allNames() const;

    /// What stands for its value in the help.
    const std::string& valueName() const { return m_value; }

    const std::string& help() const { return m_help; }
    const std::vector<std::string>& words() const { return m_words; }

    /// What was taken last, or what it is by default; none where it has no value then. A flag is "true".
    const std::optional<std::string>& value() const { return m_taken; }

    bool isExcludedBy(const Option& other) const;

    /// Whether one of them puts the other aside.
    bool isRivalOf(const Option& other) const;

    /// As if the user had given it, but for `given`. Throws UsageError.
    void take(const std::string& text);

  private:
    friend class CommandLine;
    friend class CommandLines;

    CLI::Option* m_option = nullptr;
    std::string m_names;  ///< "-o,--out"; "PHOTO" for an argument, which is known by its place
    std::string m_value;
    std::string m_help;
    bool m_required = false;
    bool m_repeated = false;
    std::vector<std::string> m_words;
    std::vector<std::string> m_sought;
    std::vector<const Option*> m_excluded;
    std::vector<const Option*> m_rivals;
    std::function<void(const std::string&)> m_take;
    std::optional<std::string> m_taken;
};

/// Adds the words that give the option `name`, such as "--size", a value.
void addOption(const std::string& name, const std::string& value, std::vector<std::string>* words);

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

    /// The same for an option or argument that may be given several times.
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

    /// `what` is called once before the first value that the user gave is taken, wherever that stands. By
    /// then `given` of all options is known.
    void beforeValues(std::function<void()> what) { m_before_values = std::move(what); }

    /// `what` is called instead of the command's work, which it gets.
    void around(std::function<void(const std::function<void()>& work)> what) { m_around = std::move(what); }

    void run(const std::function<void()>& work) const { m_around ? m_around(work) : work(); }

    struct Table {
        std::string heading;
        std::vector<std::pair<std::string, std::string>> rows;
    };

    const std::string& name() const { return m_name; }
    const std::string& summary() const { return m_summary; }
    const std::vector<Example>& examples() const { return m_examples; }
    const std::vector<Table>& tables() const { return m_tables; }

    /// In the order in which they were added.
    std::deque<Option>& options() { return m_options; }
    const std::deque<Option>& options() const { return m_options; }

    /// How it is called, such as "quorvane render PHOTO [DEPTH] [OPTIONS]".
    std::string usage(const std::string& program) const;

    /// Of the program, this one among them.
    const std::vector<std::unique_ptr<CommandLine>>& all() const { return *m_all; }

    /// What to do instead where there are more arguments than it takes, for the message.
    void surplus(const std::string& hint) { m_surplus = hint; }

    /// A paragraph of the help, behind the options: a heading, and rows of a word and what it means.
    void table(const std::string& heading, std::vector<std::pair<std::string, std::string>> rows);

  private:
    friend class CommandLines;

    CommandLine(CLI::App* app, const std::vector<std::unique_ptr<CommandLine>>* all);
    Option& add(const std::string& names, std::string value, std::string help,
                std::function<void(const std::string&)> take);
    /// Throws UsageError for the word of a flag that stands behind a space and so was taken for a file.
    void refuseStrayWords() const;
    /// Takes what the user gives.
    void taken(Option* option, const std::string& text);

    CLI::App* m_app;
    const std::vector<std::unique_ptr<CommandLine>>* m_all;
    std::function<void()> m_before_values;
    std::function<void(const std::function<void()>&)> m_around;
    std::string m_name;
    std::string m_summary;
    std::string m_surplus;
    std::vector<Example> m_examples;
    std::deque<Option> m_options;
    std::vector<Table> m_tables;
};

/// The command lines of a program: the first word chooses one. "help", alone or before one of the commands,
/// prints what --help does.
class CommandLines {
  public:
    CommandLines(const std::string& program, const std::string& summary, const std::string& version);
    ~CommandLines();
    CommandLines(const CommandLines&) = delete;
    CommandLines& operator=(const CommandLines&) = delete;

    /// Adds a command.
    CommandLine* add(const std::string& name, const std::string& summary, std::vector<Example> examples);

    /// Adds the work of a program that has no commands; nothing else is added then.
    CommandLine* addOnly(std::vector<Example> examples);

    /// Lines for the end of the program's help.
    void note(const std::string& text);

    /// As CommandLine::table, behind the commands.
    void table(const std::string& heading, std::vector<std::pair<std::string, std::string>> rows);

    /// The place of the command that was chosen, in the order of `add`; none where help or the version was
    /// asked for and has been printed. Throws UsageError.
    bool parse(int argc, const char* const* argv, size_t* chosen);

    const std::vector<std::unique_ptr<CommandLine>>& lines() const { return m_lines; }

    /// Whether the first word chooses a command; otherwise `lines` has one without a name.
    bool hasCommands() const { return m_has_commands; }

    /// The commands' names, and "help".
    std::vector<std::string> commands() const;

    const std::string& program() const { return m_program; }
    const std::string& summary() const { return m_summary; }
    const std::string& version() const { return m_version; }
    const std::string& note() const { return m_note; }
    const std::vector<CommandLine::Table>& tables() const { return m_tables; }

  private:
    std::string help(size_t width) const;
    std::string help(const CommandLine& line, size_t width) const;
    void requireCommand(const std::string& word) const;  ///< throws UsageError for what is none
    [[noreturn]] void refuse(const CLI::ParseError& error) const;
    [[noreturn]] void refuseWords(const std::vector<std::string>& unknown, const CommandLine* chosen) const;

    std::string m_program;
    std::string m_summary;
    std::string m_version;
    std::string m_note;
    std::vector<CommandLine::Table> m_tables;
    bool m_has_commands = true;
    std::unique_ptr<CLI::App> m_app;
    std::vector<std::unique_ptr<CommandLine>> m_lines;
};

}  // namespace quorvane::app

#endif
