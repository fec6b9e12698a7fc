#include "host/cli/Completion.h"

#include <fmt/format.h>

#include <algorithm>

#include "capi/vlwav_more.h"

namespace Completion {
namespace {

// Asked for when they are wanted: the module has them, in the user's language.
constexpr const char* kFormats = "vlwav formats 2>/dev/null | awk 'NR > 1 { print $1 }'";
constexpr const char* kFormatTexts =
    "vlwav formats 2>/dev/null | awk 'NR > 1 { i = $1; $1 = $2 = $3 = $4 = $5 = $6 = \"\"; sub(/^ +/, \"\"); "
    "print i \"%s\" $0 }'";

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

std::vector<std::string> TagNames(const char* after) {
    std::vector<std::string> names;
    for (const vlw::Keyword& keyword : vlw::keywords())
        if (keyword.is_kept) names.push_back(std::string(keyword.name) + after);
    return names;
}

std::vector<std::string> Languages() {
    std::vector<std::string> tags;
    for (size_t i = 0; const char* const tag = vlw_language(i); ++i) tags.emplace_back(tag);
    return tags;
}

std::vector<std::string> Names(const Commands& commands) {
    std::vector<std::string> names;
    for (const auto& command : commands) names.push_back(command->About().name);
    return names;
}

// The words that an option's value is one of, where they are known beforehand.
std::vector<std::string> KnownWords(const Option& option, const Commands& commands) {
    switch (option.words) {
        case Words::TagNames:
            return TagNames("");
        case Words::TagValues:
            return TagNames("=");
        case Words::Commands:
            return Names(commands);
        case Words::Languages:
            return Languages();
        default:
            return option.choices;
    }
}

std::vector<std::string> Spellings(const std::vector<Option>& options) {
    std::vector<std::string> all;
    for (const Option& option : options)
        if (!option.IsPlace())
            for (const std::string& spelling : option.Spellings()) all.push_back(spelling);
    return all;
}

std::string ReplaceAll(std::string text, std::string_view from, std::string_view to) {
    for (size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

// What bash is to do for a value, or for what is known by its place. Files are left to bash itself, which
// knows what to do with blanks, quotes and a tilde.
std::string BashReply(const Option& option, const Commands& commands, const char* none) {
    if (option.words == Words::Files) return "return";
    if (option.words == Words::Formats) return fmt::format("words=\"$({})\"", kFormats);
    const std::string words = Joined(KnownWords(option, commands));
    return words.empty() ? none : fmt::format("words='{}'", words);
}

std::string BashValues(const std::string& command, const std::vector<Option>& options,
                       const Commands& commands) {
    std::string cases;
    for (const Option& option : options) {
        if (option.IsFlag() || option.IsPlace()) continue;
        std::string patterns;
        for (const std::string& spelling : option.Spellings())
            patterns += fmt::format("{}{}' {}'", patterns.empty() ? "" : " | ", command, spelling);
        cases += fmt::format("    {}) {} ;;\n", patterns, BashReply(option, commands, "words=''"));
    }
    return cases;
}

// In single quotes of a shell.
std::string Quoted(const std::string& text) { return '\'' + ReplaceAll(text, "'", "'\\''") + '\''; }

std::string ZshAction(const Option& option, const Commands& commands) {
    switch (option.words) {
        case Words::Files:
            return "_files";
        case Words::Formats:
            return "_vlwav_formats";
        case Words::TagValues:
            return "_vlwav_values";
        case Words::None:
            if (option.choices.empty()) return " ";
            break;
        default:
            break;
    }
    return '(' + Joined(KnownWords(option, commands)) + ')';
}

// A line of _arguments for each spelling; colons and brackets in texts have a meaning there. A value may
// follow a long one after "=" as well.
std::string ZshOptions(const std::vector<Option>& options, const Commands& commands) {
    const auto plain = [](std::string text) {
        for (const char* const special : {"[", "]", ":"})
            text = ReplaceAll(text, special, std::string("\\") + special);
        return text;
    };
    std::string lines;
    for (const Option& option : options) {
        const std::string action = ":" + plain(option.value.empty() ? option.names : option.value) + ":" +
                                   ZshAction(option, commands);
        if (option.IsPlace()) {
            lines += "          " + Quoted((option.IsList() ? "*" : "") + action) + " \\\n";
            continue;
        }
        for (const std::string& spelling : option.Spellings())
            lines += "          " +
                     Quoted((option.IsList() ? "*" : "") + spelling +
                            (option.IsFlag() || spelling.size() == 2 ? "" : "=") + "[" + plain(option.help) +
                            "]" + (option.IsFlag() ? "" : action)) +
                     " \\\n";
    }
    return lines;
}

std::string FishOption(const Option& option, const std::string& condition, const Commands& commands) {
    std::string line = "complete -c vlwav -n " + Quoted(condition);
    for (const std::string& spelling : option.Spellings())
        line += spelling.size() == 2 ? " -s " + spelling.substr(1) : " -l " + spelling.substr(2);
    if (!option.IsFlag()) {
        const std::vector<std::string> words = KnownWords(option, commands);
        if (option.words == Words::Files)
            line += " -r -F";
        else if (option.words == Words::Formats)
            line += " -x -a '(__vlwav_formats)'";
        else
            line += " -x" + (words.empty() ? "" : " -a " + Quoted(Joined(words)));
    }
    return line + " -d " + Quoted(option.help) + '\n';
}

}  // namespace

std::string Bash(const Commands& commands, const std::vector<Option>& common) {
    std::string values;
    std::string places;
    std::string taking;
    for (const Option& option : common)
        if (!option.IsFlag()) taking += (taking.empty() ? "" : " | ") + option.Name();
    for (const auto& command : commands) {
        const std::string& name = command->About().name;
        values += BashValues("'" + name + "'", command->Options(), commands);
        std::string place = ":";
        for (const Option& option : command->Options())
            if (option.IsPlace()) place = BashReply(option, commands, ":");
        places += fmt::format("    {}) words='{} {} --help'; [[ -n \"$option\" ]] || {} ;;\n", name,
                              Joined(Spellings(command->Options())), Joined(Spellings(common)), place);
    }
    values += BashValues("*", common, commands);
    return R"(# bash completion for vlwav
_vlwav() {
  local cur="${COMP_WORDS[COMP_CWORD]}" previous="${COMP_WORDS[COMP_CWORD - 1]}" command='' option='' words i
  # "--format=2" is three words to bash.
  if [[ "$cur" == = ]]; then
    cur=''
  elif [[ "$previous" == = ]]; then
    previous="${COMP_WORDS[COMP_CWORD - 2]}"
  fi
  [[ "$cur" != -* ]] || option=1
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case "${COMP_WORDS[i]}" in
      --) option='' previous='' ;;
      )" + taking +
           R"()
        [[ "${COMP_WORDS[i + 1]}" != = ]] || ((++i))
        ((++i)) ;;
      -*) ;;
      *) [[ -n "$command" ]] || command="${COMP_WORDS[i]}" ;;
    esac
  done
  COMPREPLY=()
  case "$command $previous" in
)" + values +
           R"(    *)
      case "$command" in
)" + places +
           "    *) words='" + Joined(Names(commands)) + ' ' + Joined(Spellings(common)) +
           R"( --help --version' ;;
      esac ;;
  esac
  compopt +o default +o bashdefault
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
  [[ "${COMPREPLY[0]-}" != *= ]] || compopt -o nospace
}
complete -o bashdefault -o default -F _vlwav vlwav
)";
}

std::string Zsh(const Commands& commands, const std::vector<Option>& common) {
    const std::string formats = ReplaceAll(kFormatTexts, "%s", ":");
    std::string names;
    std::string cases;
    for (const auto& command : commands) {
        const CommandText& text = command->About();
        names += "    " + Quoted(text.name + ":" + text.summary) + '\n';
        cases += "      " + text.name + ")\n        _arguments -S \\\n" +
                 ZshOptions(command->Options(), commands) + ZshOptions(common, commands) +
                 "          '--help[What there is, in short]' ;;\n";
    }
    return "#compdef vlwav\n"
           "_vlwav_formats() {\n"
           "  local -a formats\n"
           "  formats=(${(f)\"$(" +
           formats +
           ")\"})\n"
           "  _describe 'format' formats\n"
           "}\n"
           "_vlwav_values() {\n"
           "  compadd \"$@\" -S '' -- " +
           Joined(TagNames("=")) +
           "\n"
           "}\n"
           "_vlwav() {\n"
           "  local -a commands\n"
           "  local context state state_descr line\n"
           "  typeset -A opt_args\n"
           "  commands=(\n" +
           names +
           "  )\n"
           "  _arguments -C -S \\\n" +
           ZshOptions(common, commands) +
           "          '--version[The versions]' '--help[What there is, in short]' \\\n"
           "          '1: :->command' '*:: :->arguments'\n"
           "  case $state in\n"
           "    command) _describe 'command' commands ;;\n"
           "    arguments) case $words[1] in\n" +
           cases +
           "      esac ;;\n"
           "  esac\n"
           "}\n"
           "_vlwav \"$@\"\n";
}

std::string Fish(const Commands& commands, const std::vector<Option>& common) {
    std::string taking;
    for (const Option& option : common)
        if (!option.IsFlag()) taking += ' ' + option.Name();
    std::string text = "# fish completion for vlwav\nfunction __vlwav_formats\n  " +
                       ReplaceAll(kFormatTexts, "%s", "\\t") + R"(
end
function __vlwav_in
  set -l words (commandline -opc)
  set -l command ''
  set -l i 2
  while test -z "$command" -a $i -le (count $words)
    switch $words[$i]
      case)" + taking +
                       R"(
        set i (math $i + 1)
      case '-*'
      case '*'
        set command $words[$i]
    end
    set i (math $i + 1)
  end
  test "$command" = "$argv[1]"
end
)";
    const std::string nowhere = "__vlwav_in \"\"";
    for (const auto& command : commands)
        text += fmt::format("complete -c vlwav -f -n {} -a {} -d {}\n", Quoted(nowhere),
                            command->About().name, Quoted(command->About().summary));
    for (const Option& option : common) text += FishOption(option, "true", commands);
    text += "complete -c vlwav -s h -l help -d 'What there is, in short'\n";
    text += "complete -c vlwav -n " + Quoted(nowhere) + " -l version -d 'The version'\n";
    for (const auto& command : commands) {
        const std::string here = "__vlwav_in " + command->About().name;
        bool files = false;
        for (const Option& option : command->Options()) {
            if (!option.IsPlace())
                text += FishOption(option, here, commands);
            else if (const auto words = KnownWords(option, commands); !words.empty())
                text += fmt::format("complete -c vlwav -n {} -a {}\n", Quoted(here), Quoted(Joined(words)));
            files = files || (option.IsPlace() && option.words == Words::Files);
        }
        if (!files) text += fmt::format("complete -c vlwav -f -n {}\n", Quoted(here));
    }
    return text;
}

}  // namespace Completion
