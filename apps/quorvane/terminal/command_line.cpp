#include "apps/quorvane/terminal/command_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

/// The word that asks for help as a command does.
constexpr char kHelp[] = "help";

/// What most commands take a place to write to as.
constexpr char kOut[] = "--out";

/// What a program without commands has for one.
constexpr char kOnlyCommand[] = "only";

/// Columns of the terminal that help is printed to.
size_t terminalWidth() {
    constexpr size_t kNarrowest = 40, kUsual = 80;
    double columns = 0.0;
    const char* const told = std::getenv("COLUMNS");
    winsize size = {};
    if (told != nullptr && parseNumber(told, &columns) && columns >= 1.0 && columns <= 10000.0)
        return std::max(kNarrowest, static_cast<size_t>(columns));
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return std::max<size_t>(kNarrowest, size.ws_col);
    return kUsual;
}

/// "a, b or c".
std::string either(const std::vector<std::string>& words) {
    std::string text;
    for (size_t i = 0; i < words.size(); ++i)
        text += (i == 0 ? "" : i + 1 < words.size() ? ", " : " or ") + words[i];
    return text;
}

std::string didYouMean(const std::string& word, const std::vector<std::string>& known) {
    const std::string nearest = nearestWord(word, known);
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

std::string meantForOut(const std::string& word) {
    return "; did you mean " + std::string(kOut) + " " + word + "?";
}

/// The longest of "-o,--out", by which messages call an option.
std::string longName(const std::string& names) { return names.substr(names.rfind(',') + 1); }

/// Which of `words` the text is; messages begin with `option` and the text.
size_t placeOf(const std::string& text, const std::vector<std::string>& words, const std::string& option) {
    const auto found = std::find(words.begin(), words.end(), text);
    if (found == words.end())
        throw UsageError(option + text + ": " + either(words) + " is wanted" + didYouMean(text, words));
    return static_cast<size_t>(found - words.begin());
}

std::function<void(const std::string&)> setting(const std::string& names, bool* to, bool value) {
    return [=](const std::string& text) {
        if (text == "true")
            *to = value;
        else if (text != "false")
            throw UsageError(longName(names) + " " + text + ": true or false is wanted");
    };
}

/// A word and what it means, in two columns, of which the second begins at `column`.
std::string row(const std::string& word, const std::string& meaning, size_t width, size_t column) {
    std::string text = "  " + word;
    if (text.size() + 2 > column)
        text += '\n' + std::string(column, ' ');
    else
        text.resize(column, ' ');
    return text + wrapped(meaning, width, column, column) + '\n';
}

std::string listed(const CommandLine::Table& table, size_t width, size_t column) {
    std::string text = '\n' + wrapped(table.heading, width, 2) + '\n';
    for (const auto& [word, meaning] : table.rows) text += row(word, meaning, width, column);
    return text;
}

template <typename One>
bool isOneOf(const std::vector<One>& all, const One& one) {
    return std::find(all.begin(), all.end(), one) != all.end();
}

/// Examples are not wrapped, so that they can be copied.
std::string listed(const Example& example, size_t width) {
    return "  # " + wrapped(example.task, width, 4, 4) + "\n  " + example.line + '\n';
}

}  // namespace

Option& Option::required() {
    m_option->required();
    m_required = true;
    return *this;
}

Option& Option::called(const std::string& value) {
    m_value = value;
    m_option->type_name(value);
    return *this;
}

Option& Option::usually(const std::string& value) {
    const size_t opened = m_help.rfind('(');
    const bool ends_with_range = opened != std::string::npos && m_help.back() == ')' &&
                                 m_help.find(" to ", opened) != std::string::npos;
    if (ends_with_range)
        m_help.replace(m_help.size() - 1, 1, ", default " + value + ")");
    else
        m_help += " (default " + value + ")";
    m_taken = value;
    return *this;
}

Option& Option::excludes(const Option& other) {
    m_option->excludes(other.m_option);
    m_excluded.push_back(&other);
    return *this;
}

Option& Option::rivals(const Option& other) {
    m_rivals.push_back(&other);
    return *this;
}

Option& Option::soughtAs(const std::vector<std::string>& names) {
    m_sought = names;
    return *this;
}

Option& Option::offers(const std::vector<std::string>& words) {
    m_words = words;
    return *this;
}

std::vector<std::string> Option::allNames() const {
    const size_t comma = m_names.find(',');
    if (comma == std::string::npos) return {m_names};
    return {m_names.substr(0, comma), m_names.substr(comma + 1)};
}

bool Option::isExcludedBy(const Option& other) const {
    return isOneOf(m_excluded, &other) || isOneOf(other.m_excluded, this);
}

bool Option::isRivalOf(const Option& other) const {
    return isExcludedBy(other) || isOneOf(m_rivals, &other) || isOneOf(other.m_rivals, this);
}

bool Option::given() const { return m_option->count() > 0; }

std::string Option::givenText() const { return given() ? m_option->results().back() : ""; }

std::vector<std::string> Option::givenWords() const {
    if (!given()) return {};
    if (m_value.empty()) return {name()};
    std::vector<std::string> words;
    for (const std::string& value : m_option->results()) addOption(name(), value, &words);
    return words;
}

std::string Option::name() const { return longName(m_names); }

bool Option::isFile() const {
    const auto is_called = [this](const char* name) { return m_value.rfind(name, 0) == 0; };
    return isArgument() || is_called("FILE") || is_called("PATH") || is_called("FOLDER") || is_called("OUT");
}

void addOption(const std::string& name, const std::string& value, std::vector<std::string>* words) {
    // Behind '=' nothing is taken for another option; but an empty value there is none.
    words->push_back(value.empty() ? name : name + "=" + value);
    if (value.empty()) words->push_back(value);
}

void Option::take(const std::string& text) {
    m_take(text);
    m_taken = text;
}

CommandLine::CommandLine(CLI::App* app, const std::vector<std::unique_ptr<CommandLine>>* all)
    : m_app(app), m_all(all) {}

Option& CommandLine::add(const std::string& names, std::string value, std::string help,
                         std::function<void(const std::string&)> take) {
    Option& added = m_options.emplace_back();
    added.m_names = names;
    added.m_value = std::move(value);
    added.m_help = std::move(help);
    added.m_take = std::move(take);
    return added;
}

void CommandLine::taken(Option* option, const std::string& text) {
    if (const std::function<void()> before = std::exchange(m_before_values, nullptr)) before();
    option->take(text);
}

Option& CommandLine::parsed(const std::string& names, const std::function<void(const std::string&)>& take,
                            const std::string& help) {
    Option& added = add(names, "TEXT", help, take);
    added.m_option = m_app->add_option_function<std::string>(
        names, [this, &added](const std::string& text) { taken(&added, text); });
    return added;
}

Option& CommandLine::repeated(const std::string& names, const std::function<void(const std::string&)>& take,
                              const std::string& help) {
    Option& added = add(names, "TEXT", help, take);
    const auto take_each = [this, &added](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) taken(&added, text);
    };
    added.m_option = m_app->add_option_function<std::vector<std::string>>(names, take_each);
    // An option has one value each time; arguments follow one another.
    added.m_option->allow_extra_args(added.isArgument())->take_all();
    added.m_repeated = true;
    return added;
}

Option& CommandLine::text(const std::string& names, std::string* to, const std::string& help) {
    return parsed(
        names, [to](const std::string& text) { *to = text; }, help);
}

Option& CommandLine::whole(const std::string& names, int* to, int least, int most, const std::string& help) {
    const std::string range = std::to_string(least) + " to " + std::to_string(most);
    const auto take = [=](const std::string& text) { *to = parseWhole(longName(names), text, least, most); };
    return parsed(names, take, help + " (" + range + ")").called("N").usually(std::to_string(*to));
}

Option& CommandLine::number(const std::string& names, double* to, double least, double most,
                            const std::string& help) {
    const std::string range = formatted("%g to %g", least, most);
    const auto take = [=](const std::string& text) {
        double value = 0.0;
        if (!parseNumber(text, &value) || value < least || value > most)
            throw UsageError(longName(names) + " " + text + ": a number from " + range + " is wanted");
        *to = value;
    };
    return parsed(names, take, help + " (" + range + ")").called("X").usually(formatted("%g", *to));
}

Option& CommandLine::word(const std::string& names, const std::vector<std::string>& words,
                          std::function<void(size_t)> take, const std::string& help) {
    const auto take_place = [=, take = std::move(take)](const std::string& text) {
        take(placeOf(text, words, longName(names) + " "));
    };
    return parsed(names, take_place, help).called("WORD").offers(words);
}

Option& CommandLine::flagOrWord(const std::string& names, const std::vector<std::string>& words, size_t alone,
                                std::function<void(size_t)> take, const std::string& help) {
    const auto take_place = [=, take = std::move(take)](const std::string& text) {
        take(placeOf(text, words, longName(names) + "="));
    };
    std::string value;
    for (const std::string& word : words) value += (value.empty() ? "[=" : "|") + word;
    Option& added = add(names, value + "]", help, take_place);
    added.offers(words);
    added.m_option = m_app->add_flag(names + "{" + words[alone] + "}");
    added.m_option->take_last()->each([this, &added](const std::string& text) { taken(&added, text); });
    return added;
}

Option& CommandLine::flag(const std::string& names, bool* to, const std::string& help) {
    Option& added = add(names, "", help, setting(names, to, true));
    added.m_option = m_app->add_flag_callback(names, [this, &added] { taken(&added, "true"); });
    return added;
}

Option& CommandLine::unset(const std::string& names, bool* to, const std::string& help) {
    Option& added = add(names, "", help, setting(names, to, false));
    added.m_option = m_app->add_flag_callback(names, [this, &added] { taken(&added, "true"); });
    return added;
}

Option& CommandLine::count(const std::string& names, int* to, const std::string& help) {
    Option& added =
        add(names, "", help, [=](const std::string& text) { *to = parseWhole(longName(names), text, 0, 9); });
    added.m_option = m_app->add_flag(names, *to);
    return added;
}

void CommandLine::table(const std::string& heading, std::vector<std::pair<std::string, std::string>> rows) {
    m_tables.push_back({heading, std::move(rows)});
}

void CommandLine::refuseStrayWords() const {
    std::error_code ignored;
    for (const Option& argument : m_options) {
        if (!argument.isArgument() || !argument.given()) continue;
        const std::string word = argument.givenText();
        for (const Option& option : m_options)
            if (option.isFlagOrWord() && option.given() && isOneOf(option.m_words, word) &&
                !std::filesystem::exists(word, ignored))
                throw UsageError(word + ": no such file; did you mean " + option.name() + "=" + word + "?");
    }
}

std::string CommandLine::usage(const std::string& program) const {
    std::string usage = program + (m_name.empty() ? "" : " " + m_name);
    for (const Option& option : m_options)
        if (option.isArgument())
            usage += option.m_required ? " " + option.m_names : " [" + option.m_names + "]";
    return usage + " [OPTIONS]";
}

CommandLines::CommandLines(const std::string& program, const std::string& summary, const std::string& version)
    : m_program(program),
      m_summary(summary),
      m_version(version),
      m_app(std::make_unique<CLI::App>(summary, program)) {
    m_app->set_version_flag("-V,--version", version);
    m_app->require_subcommand(1);
}

CommandLines::~CommandLines() = default;

CommandLine* CommandLines::add(const std::string& name, const std::string& summary,
                               std::vector<Example> examples) {
    m_lines.emplace_back(new CommandLine(m_app->add_subcommand(name, summary), &m_lines));
    m_lines.back()->m_name = name;
    m_lines.back()->m_summary = summary;
    m_lines.back()->m_examples = std::move(examples);
    return m_lines.back().get();
}

void CommandLines::table(const std::string& heading, std::vector<std::pair<std::string, std::string>> rows) {
    m_tables.push_back({heading, std::move(rows)});
}

CommandLine* CommandLines::addOnly(std::vector<Example> examples) {
    m_has_commands = false;
    CommandLine* const line = add(kOnlyCommand, m_summary, std::move(examples));
    line->m_name.clear();
    return line;
}

void CommandLines::note(const std::string& text) { m_note = text; }

bool CommandLines::parse(int argc, const char* const* argv, size_t* chosen) {
    const auto parsed_line = [this] {
        return static_cast<size_t>(std::find_if(m_lines.begin(), m_lines.end(),
                                                [](const auto& line) { return line->m_app->parsed(); }) -
                                   m_lines.begin());
    };
    std::vector<const char*> words(argv, argv + argc);
    if (m_has_commands && argc > 1 && std::string(argv[1]) == kHelp) {
        if (argc > 3) throw UsageError(std::string(argv[3]) + ": one argument too many");
        if (argc == 3) requireCommand(argv[2]);
        words.erase(words.begin() + 1);
        words.push_back("--help");
    }
    const bool asks_version =
        argc == 2 && (std::string(argv[1]) == "--version" || std::string(argv[1]) == "-V");
    if (!m_has_commands && !asks_version) words.insert(words.begin() + 1, kOnlyCommand);
    try {
        m_app->parse(static_cast<int>(words.size()), words.data());
    } catch (const CLI::CallForHelp&) {
        const size_t asked = parsed_line();
        const size_t width = terminalWidth();
        std::fputs((asked < m_lines.size() ? help(*m_lines[asked], width) : help(width)).c_str(), stdout);
        return false;
    } catch (const CLI::CallForVersion&) {
        std::puts(m_version.c_str());
        return false;
    } catch (const CLI::ParseError& error) {
        refuse(error);
    }
    *chosen = parsed_line();
    m_lines[*chosen]->refuseStrayWords();
    return true;
}

std::vector<std::string> CommandLines::commands() const {
    std::vector<std::string> names;
    for (const auto& line : m_lines) names.push_back(line->m_name);
    names.emplace_back(kHelp);
    return names;
}

void CommandLines::requireCommand(const std::string& word) const {
    const std::vector<std::string> known = commands();
    if (word[0] == '-' || isOneOf(known, word)) return;
    std::string meant = didYouMean(word, known);
    std::error_code ignored;
    if (meant.empty() && std::filesystem::exists(word, ignored))
        meant = "; did you mean " + m_program + ' ' + known.front() + ' ' + word + "?";
    throw UsageError(word + ": no such command" +
                     (meant.empty() ? "; the commands are " + either(known) : meant));
}

void CommandLines::refuse(const CLI::ParseError& error) const {
    const CommandLine* chosen = nullptr;
    for (const auto& line : m_lines)
        if (line->m_app->parsed()) chosen = line.get();
    // A word that nothing takes is the mistake, whatever else is missing because of it.
    const std::vector<std::string> unknown = m_app->remaining(true);
    if (!unknown.empty()) refuseWords(unknown, chosen);
    if (chosen == nullptr) throw UsageError("a subcommand is wanted: " + either(commands()));
    const std::string fault = error.what();
    for (const Option& option : chosen->m_options) {
        if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr &&
            fault.rfind(option.name() + ":", 0) == 0)
            throw UsageError(option.name() + ": " + option.m_value + " is missing");
        // As in: render photo.jpg sway.mp4.
        std::error_code ignored;
        if (option.isArgument() && option.given() && fault.rfind(kOut, 0) == 0 &&
            !std::filesystem::exists(option.givenText(), ignored))
            throw UsageError(fault + meantForOut(option.givenText()));
    }
    throw UsageError(fault);
}

void CommandLines::refuseWords(const std::vector<std::string>& unknown, const CommandLine* chosen) const {
    const std::string& word = unknown.front();
    const bool is_option = word.size() > 1 && word[0] == '-';
    if (!is_option && chosen == nullptr) requireCommand(word);
    if (!is_option) {
        std::string hint = chosen->m_surplus.empty() ? "" : "; " + chosen->m_surplus;
        for (const Option& option : chosen->m_options)
            if (option.name() == kOut && option.m_required && !option.given()) hint = meantForOut(word);
        throw UsageError(word + ": one argument too many" + hint);
    }
    const std::string name = word.substr(0, word.find('='));
    std::vector<std::string> options = {"--help"};
    if (chosen == nullptr) {
        options.emplace_back("--version");
    } else {
        for (const Option& option : chosen->m_options) {
            if (isOneOf(option.m_sought, name))
                throw UsageError(name + ": no such option; " +
                                 (option.isArgument()
                                      ? option.name() + " stands by itself, as in " + chosen->usage(m_program)
                                      : "did you mean " + option.name() + "?"));
            if (!option.isArgument()) options.push_back(option.name());
        }
    }
    if (chosen != nullptr && isOneOf(options, name))
        throw UsageError(name + ": goes behind the command, as in " + m_program + ' ' + chosen->m_name + ' ' +
                         name);
    throw UsageError(name + ": no such option" + didYouMean(name, options));
}

std::string CommandLines::help(size_t width) const {
    std::string text = wrapped(m_summary, width, 0) + "\n\n";
    // The first command is what most come for. A command's own help has the others.
    for (const auto& line : m_lines) {
        const size_t shown = line == m_lines.front() ? 2 : 1;
        for (size_t i = 0; i < std::min(shown, line->m_examples.size()); ++i)
            text += listed(line->m_examples[i], width);
    }
    text += "\nCommands:\n";
    for (const auto& line : m_lines) text += row(line->m_name, line->m_summary, width, 11);
    text +=
        '\n' + wrapped(m_program + " help COMMAND: a command's options and more examples.", width, 0) + '\n';
    text += wrapped(m_program + " --version: the version.", width, 0) + '\n';
    for (const CommandLine::Table& table : m_tables) text += listed(table, width, width < 72 ? 16 : 26);
    return text + '\n' + wrapped(m_note, width, 0) + '\n';
}

std::string CommandLines::help(const CommandLine& line, size_t width) const {
    const size_t column = width < 72 ? 16 : 26;
    const std::string program = m_program + (line.m_name.empty() ? "" : " " + line.m_name);
    std::string text = wrapped(program + ": " + line.m_summary, width, 2) + "\n\n";
    for (const Example& example : line.m_examples) text += listed(example, width);
    std::string arguments, options;
    for (const Option& option : line.m_options) {
        const std::string help = (option.m_required ? "required: " : "") + option.m_help;
        if (option.isArgument()) {
            arguments += row(option.m_names, option.m_help, width, column);
            continue;
        }
        std::string names = option.m_names;
        if (const size_t comma = names.find(','); comma != std::string::npos) names.insert(comma + 1, " ");
        const bool apart = !option.m_value.empty() && option.m_value[0] != '[';
        options += row(names + (apart ? " " : "") + option.m_value, help, width, column);
    }
    text += '\n' + wrapped(line.usage(m_program), width, 2) + "\n\n" + arguments;
    text += (arguments.empty() ? "" : "\n") + options + row("-h, --help", "this text", width, column);
    if (!m_has_commands) text += row("-V, --version", "the version", width, column);
    for (const CommandLine::Table& table : line.m_tables) text += listed(table, width, column);
    return text;
}

}  // namespace quorvane::app
