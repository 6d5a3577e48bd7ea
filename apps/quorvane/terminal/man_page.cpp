#include "apps/quorvane/terminal/man_page.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace quorvane::app {
namespace {

/// As man shows it: a hyphen is one that can be copied, and nothing is an instruction.
std::string escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const bool begins = out.empty() || out.back() == '\n';
        if (begins && (c == '.' || c == '\'')) out += "\\&";
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
    }
    return out;
}

std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }
std::string slanted(std::string_view text) { return "\\fI" + escaped(text) + "\\fR"; }

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string section(const std::string& heading) { return ".SH " + upper(heading) + '\n'; }

/// A line with what is explained, and the explanation, indented.
std::string item(const std::string& marked_up, const std::string& text) {
    return ".TP\n" + marked_up + '\n' + escaped(text) + '\n';
}

std::string head(const CommandLines& program, const std::string& name, const std::string& summary,
                 const std::string& date) {
    return ".TH " + upper(escaped(name)) + " 1 " + date + " \"" + escaped(program.version()) +
           "\" \"User Commands\"\n" + section("Name") + escaped(name) + " \\- " + escaped(summary) + '\n';
}

/// A sentence as it stands behind a page's name.
std::string asPhrase(std::string sentence) {
    if (!sentence.empty() && sentence.back() == '.') sentence.pop_back();
    if (!sentence.empty())
        sentence[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(sentence[0])));
    return sentence;
}

std::string versionItem() { return item(bold("-V") + ", " + bold("--version"), "say which version it is"); }

std::string tables(const std::vector<CommandLine::Table>& all) {
    std::string text;
    for (const CommandLine::Table& table : all) {
        std::string heading = table.heading;
        if (!heading.empty() && heading.back() == ':') heading.pop_back();
        text += section('"' + escaped(heading) + '"');
        for (const auto& [word, meaning] : table.rows) text += item(bold(word), meaning);
    }
    return text;
}

std::string examples(const CommandLine& command) {
    std::string text;
    for (const Example& example : command.examples())
        text += (text.empty() ? "" : ".PP\n") + escaped(example.task) + ":\n.PP\n.RS 4\n.nf\n" +
                escaped(example.line) + "\n.fi\n.RE\n";
    return text;
}

std::string optionItem(const Option& option) {
    std::string names;
    for (const std::string& name : option.allNames()) names += (names.empty() ? "" : ", ") + bold(name);
    if (option.isFlagOrWord())
        names += escaped(option.valueName());
    else if (!option.isFlag())
        names += ' ' + slanted(option.valueName());
    return item(names, (option.isRequired() ? "Required: " : "") + option.help());
}

std::string seeAlso(const std::vector<std::string>& names) {
    std::string text = section("\"See also\"");
    for (size_t i = 0; i < names.size(); ++i)
        text += ".BR " + escaped(names[i]) + " (1)" + (i + 1 < names.size() ? "," : "") + '\n';
    return text;
}

/// Lines as paragraphs.
std::string paragraphs(const std::string& text) {
    std::string out;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        out += (out.empty() ? "" : ".PP\n") + escaped(text.substr(at, end - at)) + '\n';
        at = end + 1;
    }
    return out;
}

}  // namespace

std::string manPageName(const CommandLines& program, const CommandLine& command) {
    return program.program() + (program.hasCommands() ? "-" + command.name() : "");
}

std::string manPage(const CommandLines& program, const std::string& date) {
    if (!program.hasCommands()) return manPage(program, *program.lines().front(), date);
    std::string text = head(program, program.program(), asPhrase(program.summary()), date);
    text += section("Synopsis") + bold(program.program()) + ' ' + slanted("COMMAND") + " [" +
            slanted("OPTIONS") + "]\n";
    text += section("Description") + paragraphs(program.note());
    text += section("Commands");
    std::vector<std::string> pages;
    for (const auto& line : program.lines()) {
        text += item(bold(line->name()), line->summary() + "; see " + manPageName(program, *line) + "(1)");
        pages.push_back(manPageName(program, *line));
    }
    text += item(bold("help") + " [" + slanted("COMMAND") + ']', "say what a command takes");
    text += section("Options") + item(bold("-h") + ", " + bold("--help"), "say what the program does") +
            versionItem();
    text += tables(program.tables()) + section("Examples");
    for (const auto& line : program.lines()) text += examples(*line);
    return text + seeAlso(pages);
}

std::string manPage(const CommandLines& program, const CommandLine& command, const std::string& date) {
    const bool is_only = !program.hasCommands();
    std::string text = head(program, manPageName(program, command),
                            is_only ? asPhrase(command.summary()) : command.summary(), date);
    std::string synopsis = bold(program.program() + (is_only ? "" : " " + command.name())), arguments,
                options;
    for (const Option& option : command.options()) {
        if (!option.isArgument()) {
            options += optionItem(option);
            continue;
        }
        const std::string name = slanted(option.name());
        synopsis += ' ' + (option.isRequired() ? name : '[' + name + ']');
        arguments += item(name, option.help());
    }
    text += section("Synopsis") + synopsis + " [" + slanted("OPTIONS") + "]\n";
    if (!arguments.empty()) text += section("Arguments") + arguments;
    text += section("Options") + options + item(bold("-h") + ", " + bold("--help"), "say what it takes");
    if (is_only) text += versionItem();
    text += tables(command.tables()) + section("Examples") + examples(command);
    return is_only ? text : text + seeAlso({program.program()});
}

}  // namespace quorvane::app
