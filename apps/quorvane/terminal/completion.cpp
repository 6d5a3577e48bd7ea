#include "apps/quorvane/terminal/completion.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace quorvane::app {
namespace {

constexpr std::string_view kHelpNames[] = {"-h", "--help"}, kVersionNames[] = {"-V", "--version"};

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

/// In single quotes, as all three shells take it.
std::string quoted(std::string_view text, std::string_view quote = "'\\''") {
    std::string out = "'";
    for (const char c : text) {
        if (c == '\'')
            out += quote;
        else
            out += c;
    }
    return out + '\'';
}

/// So much of a help text as fits next to a word: its first clause, without what means something to a shell.
std::string shortened(const std::string& help) {
    constexpr size_t kMost = 60;
    // A text may begin with its range.
    std::string text = help.substr(0, help.find_first_of(";:([]", 3));
    if (text.size() > kMost) text = text.substr(0, text.rfind(' ', kMost));
    while (!text.empty() && (text.back() == ' ' || text.back() == ',')) text.pop_back();
    return text;
}

bool takesFiles(const CommandLine& command) {
    for (const Option& option : command.options())
        if (option.isArgument()) return true;
    return false;
}

/// Whether it is all that the program does.
bool isOnly(const CommandLine& command) { return command.name().empty(); }

/// Whether its words are beginnings, such as "fov_scale=".
bool offersBeginnings(const Option& option) {
    return !option.words().empty() && option.words().front().back() == '=';
}

std::vector<std::string> allNames(const CommandLine& command) {
    std::vector<std::string> names;
    for (const Option& option : command.options())
        if (!option.isArgument())
            for (const std::string& name : option.allNames()) names.push_back(name);
    names.insert(names.end(), std::begin(kHelpNames), std::end(kHelpNames));
    if (isOnly(command)) names.insert(names.end(), std::begin(kVersionNames), std::end(kVersionNames));
    return names;
}

/// The cases of a bash command whose word before is an option with a value.
std::string bashValues(const CommandLine& command) {
    std::string cases;
    for (const Option& option : command.options()) {
        if (option.isArgument() || option.isFlag()) continue;
        std::string pattern;
        for (const std::string& name : option.allNames())
            pattern +=
                (pattern.empty() ? "" : " | ") + (option.isFlagOrWord() ? "" : name + " | ") + name + "=";
        cases += "                " + pattern + ")";
        if (option.isFile())
            cases += " compopt -o default 2> /dev/null; return ;;\n";
        else if (option.words().empty())
            cases += " return ;;\n";
        else
            cases += std::string(offersBeginnings(option) ? " compopt -o nospace 2> /dev/null;" : "") +
                     " words=" + quoted(joined(option.words())) + " ;;\n";
    }
    return cases;
}

/// What bash offers where a word of the command is wanted.
std::string bashWords(const CommandLine& command) {
    std::string text = "            case $before in\n" + bashValues(command) +
                       "                *=) return ;;\n                *)\n"
                       "                    if [[ $current == -* ]]; then\n"
                       "                        words=" +
                       quoted(joined(allNames(command))) + "\n";
    if (takesFiles(command))
        text += "                    else\n                        compopt -o default 2> /dev/null\n";
    return text + "                    fi ;;\n            esac";
}

/// Which command bash is in, and what it offers there.
std::string bashCommands(const CommandLines& program) {
    std::vector<std::string> first = program.commands(), commands;
    first.insert(first.end(), std::begin(kHelpNames), std::end(kHelpNames));
    first.insert(first.end(), std::begin(kVersionNames), std::end(kVersionNames));
    for (const auto& line : program.lines()) commands.push_back(line->name());
    std::string text = R"(    for ((i = 1; i < COMP_CWORD; ++i)); do
        if [[ ${COMP_WORDS[i]} != -* ]]; then
            command=${COMP_WORDS[i]}
            break
        fi
    done
    case $command in
)";
    text += "        '') words=" + quoted(joined(first)) + " ;;\n";
    text += "        help) ((i + 1 == COMP_CWORD)) && words=" + quoted(joined(commands)) + " ;;\n";
    for (const auto& line : program.lines())
        text += "        " + line->name() + ")\n" + bashWords(*line) + " ;;\n";
    return text + "    esac\n";
}

std::string zshSpec(const Option& option) {
    const std::string what = "[" + shortened(option.help()) + "]";
    std::string value;
    if (option.isFlagOrWord()) {
        value = "::word:(" + joined(option.words()) + ")";
    } else if (!option.isFlag()) {
        std::string what_for = option.valueName();
        what_for.erase(std::remove(what_for.begin(), what_for.end(), '\''), what_for.end());
        value = ":" + what_for + ":";
        if (option.isFile())
            value += "_files";
        else if (offersBeginnings(option))
            value += "{compadd -S \"\" - " + joined(option.words()) + "}";
        else if (!option.words().empty())
            value += "(" + joined(option.words()) + ")";
        else
            value += " ";
    }
    const std::vector<std::string> names = option.allNames();
    const std::string repeats = option.isRepeated() ? "*" : "";
    std::string name = names.back();
    if (option.isFlagOrWord())
        name += "=-";
    else if (!option.isFlag())
        name += "=";
    if (names.size() == 1) return "            " + quoted(repeats + name + what + value) + " \\\n";
    const std::string other = names.front() + (option.isFlag() ? "" : "+");
    return "            " + quoted("(" + joined(names) + ")") + "{" + other + "," + name + "}" +
           quoted(what + value) + " \\\n";
}

std::string zshArguments(const CommandLine& command) {
    std::string text = "          _arguments -s \\\n";
    int place = 0;
    std::string arguments;
    for (const Option& option : command.options()) {
        if (option.isArgument())
            arguments += "            " +
                         quoted(std::to_string(++place) + (option.isRequired() ? ":" : "::") + option.name() +
                                ":_files") +
                         " \\\n";
        else
            text += zshSpec(option);
    }
    if (isOnly(command)) arguments += "            '(- *)'{-V,--version}'[say which version it is]' \\\n";
    return text + arguments + "            '(- *)'{-h,--help}'[say what it takes]' && ret=0\n";
}

std::string zshCommands(const CommandLines& program) {
    std::string text = "  local -a commands=(\n";
    std::vector<std::string> commands;
    for (const auto& line : program.lines()) {
        text += "    " + quoted(line->name() + ":" + shortened(line->summary())) + "\n";
        commands.push_back(line->name());
    }
    text += R"(    'help:say what a command takes'
  )
  local curcontext="$curcontext" state line ret=1
  _arguments -C \
    '(- *)'{-h,--help}'[say what the program does]' \
    '(- *)'{-V,--version}'[say which version it is]' \
    '1:command:->command' \
    '*::argument:->argument' && ret=0
  case $state in
    command)
      _describe -t commands command commands && ret=0
      ;;
    argument)
      case $words[1] in
)";
    text +=
        "        help)\n          _arguments '1:command:(" + joined(commands) + ")' && ret=0\n          ;;\n";
    for (const auto& line : program.lines())
        text += "        " + line->name() + ")\n" + zshArguments(*line) + "          ;;\n";
    return text + "      esac\n      ;;\n  esac\n";
}

std::string fishNames(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        text += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
    return text;
}

std::string fishDescription(const std::string& help) { return " -d " + quoted(shortened(help), "\\'"); }

std::string fishOption(const Option& option, const std::string& when) {
    std::string line = when + fishNames(option.allNames());
    if (option.isFlagOrWord()) {
        line += fishDescription(option.help()) + '\n';
        for (const std::string& word : option.words())
            line += when + " -a " + option.name() + "=" + word + '\n';
        return line;
    }
    if (option.isFile())
        line += " -r -F";
    else if (!option.isFlag())
        line += " -x";
    if (!option.words().empty()) line += " -a " + quoted(joined(option.words()));
    return line + fishDescription(option.help()) + '\n';
}

/// What fish offers where a word of the command is wanted; `when` says so.
std::string fishWords(const CommandLine& command, const std::string& when) {
    std::string text;
    if (takesFiles(command)) text += when + " -F\n";
    text += when + " -s h -l help -d 'say what it takes'\n";
    for (const Option& option : command.options())
        if (!option.isArgument()) text += fishOption(option, when);
    return text;
}

}  // namespace

std::string bashCompletion(const CommandLines& program) {
    const std::string& name = program.program();
    const std::string text =
        "# Completion of " + name + " for bash, made of its tables of options.\n_" + name + R"(() {
    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command= words= i
    COMPREPLY=()
    # "--name=value" comes as three words.
    if [[ $current == = ]]; then
        before+== current=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD-2]}=
    fi
)";
    return text +
           (program.hasCommands() ? bashCommands(program) : bashWords(*program.lines().front()) + "\n") +
           "    [[ $words ]] && mapfile -t COMPREPLY < <(compgen -W \"$words\" -- "
           "\"$current\")\n}\ncomplete -F _" +
           name + " " + name + "\n";
}

std::string zshCompletion(const CommandLines& program) {
    const std::string& name = program.program();
    const std::string text = "#compdef " + name + "\n# Completion of " + name +
                             " for zsh, made of its tables of options.\n_" + name + "() {\n";
    // Read by the shell's own loader the file is the function's body, and sourced it defines the function.
    return text +
           (program.hasCommands() ? zshCommands(program)
                                  : "  local ret=1\n" + zshArguments(*program.lines().front())) +
           "  return ret\n}\nif [[ $funcstack[1] == _" + name + " ]]; then\n  _" + name +
           " \"$@\"\nelse\n  compdef _" + name + " " + name + "\nfi\n";
}

std::string fishCompletion(const CommandLines& program) {
    const std::string& name = program.program();
    const std::string complete = "complete -c " + name;
    const std::string first = complete + " -n __fish_use_subcommand";
    std::string text =
        "# Completion of " + name + " for fish, made of its tables of options.\n" + complete + " -f\n";
    if (!program.hasCommands())
        return text + complete + " -s V -l version -d 'say which version it is'\n" +
               fishWords(*program.lines().front(), complete);
    text += first + " -s h -l help -d 'say what the program does'\n" + first +
            " -s V -l version -d 'say which version it is'\n";
    std::vector<std::string> commands;
    for (const auto& line : program.lines()) {
        text += first + " -a " + line->name() + fishDescription(line->summary()) + '\n';
        commands.push_back(line->name());
    }
    text += first + " -a help -d 'say what a command takes'\n";
    text += complete + " -n '__fish_seen_subcommand_from help; and not __fish_seen_subcommand_from " +
            joined(commands) + "' -a " + quoted(joined(commands)) + '\n';
    for (const auto& line : program.lines()) {
        const std::string when = complete + " -n '__fish_seen_subcommand_from " + line->name() +
                                 "; and not __fish_seen_subcommand_from help'";
        text += fishWords(*line, when);
    }
    return text;
}

}  // namespace quorvane::app
