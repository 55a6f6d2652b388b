#include "ShellCompletion.h"

#include <fmt/format.h>

#include <map>

namespace corvel::cli::ShellCompletion {
namespace {

// A command with the names of the commands above it ("" for the program, "ops plan" below).
struct Level {
    std::string key;
    const CommandShape* command;
};

void collectLevels(const CommandShape& command, const std::string& key, std::vector<Level>& levels) {
    levels.push_back({key, &command});
    for (const auto& sub : command.commands) collectLevels(sub, key.empty() ? sub.name : key + " " + sub.name, levels);
}

std::vector<Level> levelsOf(const CommandShape& program) {
    std::vector<Level> levels;
    collectLevels(program, "", levels);
    return levels;
}

const char* kindName(ValueKind kind) {
    switch (kind) {
        case ValueKind::file:
            return "file";
        case ValueKind::folder:
            return "folder";
        case ValueKind::word:
            return "word";
        case ValueKind::none:
            break;
    }
    return "";
}

// Every option that takes a value, by name, with how its value completes. Where two commands
// share a name with different kinds, offering file names is the more useful guess.
std::map<std::string, ValueKind> valueOptions(const std::vector<Level>& levels) {
    std::map<std::string, ValueKind> kinds;
    for (const auto& level : levels) {
        for (const auto& option : level.command->options) {
            if (option.value == ValueKind::none) continue;
            for (const auto& name : option.names) {
                auto& kind = kinds[name];
                if (kind == ValueKind::none || option.value == ValueKind::file) kind = option.value;
            }
        }
    }
    return kinds;
}

std::string joined(const std::vector<std::string>& words, const char* separator = " ") {
    std::string out;
    for (const auto& word : words) out += (out.empty() ? "" : separator) + word;
    return out;
}

std::string singleQuoted(const std::string& text) {
    std::string out = "'";
    for (const char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// The helpers bash and zsh share: how an option's value and a command's first operand complete.
std::string kindFunctions(const std::vector<Level>& levels) {
    std::string out = "_velmora_value() {\n    case \"$1\" in\n";
    std::map<ValueKind, std::vector<std::string>> byKind;
    for (const auto& [name, kind] : valueOptions(levels)) byKind[kind].push_back(name);
    for (const auto& [kind, names] : byKind)
        out += fmt::format("        {}) echo {} ;;\n", joined(names, "|"), kindName(kind));
    out += "    esac\n}\n\n_velmora_operand() {\n    case \"$1\" in\n";
    for (const auto& level : levels) {
        if (level.command->operands.empty() || level.key.empty()) continue;
        const ValueKind kind = level.command->operands.front().value;
        if (kind == ValueKind::file || kind == ValueKind::folder)
            out += fmt::format("        \"{}\") echo {} ;;\n", level.key, kindName(kind));
    }
    return out + "    esac\n}\n";
}

std::vector<std::string> optionNames(const CommandShape& command) {
    std::vector<std::string> names;
    for (const auto& option : command.options) names.insert(names.end(), option.names.begin(), option.names.end());
    return names;
}

std::vector<std::string> commandNames(const CommandShape& command) {
    std::vector<std::string> names;
    for (const auto& sub : command.commands) names.push_back(sub.name);
    return names;
}

std::string fishQuoted(const std::string& text) {
    std::string out = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\') out += '\\';
        out += c == '\n' ? ' ' : c;
    }
    return out + "'";
}

std::string fishOption(const OptionShape& option, const std::string& condition) {
    std::string out = "complete -c velmora";
    if (!condition.empty()) out += " -n " + fishQuoted(condition);
    for (const auto& name : option.names) {
        if (name.rfind("--", 0) == 0)
            out += " -l " + name.substr(2);
        else
            out += " -s " + name.substr(1);
    }
    switch (option.value) {
        case ValueKind::file:
            out += " -r -F";
            break;
        case ValueKind::folder:
            out += " -x -a '(__fish_complete_directories)'";
            break;
        case ValueKind::word:
            out += " -x";
            break;
        case ValueKind::none:
            break;
    }
    return out + " -d " + fishQuoted(option.description) + "\n";
}

// The first line of a description: completion menus have one line per entry.
std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace

const std::vector<std::string>& shells() {
    static const std::vector<std::string> names{"bash", "zsh", "fish"};
    return names;
}

std::optional<std::string> script(const std::string& shell, const CommandShape& program) {
    if (shell == "bash") return bash(program);
    if (shell == "zsh") return zsh(program);
    if (shell == "fish") return fish(program);
    return std::nullopt;
}

std::string bash(const CommandShape& program) {
    const auto levels = levelsOf(program);
    std::string commands = "_velmora_commands() {\n    case \"$1\" in\n";
    std::string options = "_velmora_options() {\n    case \"$1\" in\n";
    for (const auto& level : levels) {
        if (!level.command->commands.empty())
            commands += fmt::format("        \"{}\") echo {} ;;\n", level.key, joined(commandNames(*level.command)));
        options += fmt::format("        \"{}\") echo {} ;;\n", level.key, joined(optionNames(*level.command)));
    }
    commands += "    esac\n}\n\n";
    options += "    esac\n}\n\n";
    return "# bash completion for velmora, written by 'velmora completion bash' from its own option definitions.\n\n" +
           commands + options + kindFunctions(levels) + R"SH(
_velmora() {
    local current="${COMP_WORDS[COMP_CWORD]}" node="" word child i
    # The command being completed: the words that name commands, skipping options and their values.
    for ((i = 1; i < COMP_CWORD; i++)); do
        word="${COMP_WORDS[i]}"
        if [[ "$word" == -* ]]; then
            [[ -n "$(_velmora_value "$word")" ]] && ((i++))
            continue
        fi
        for child in $(_velmora_commands "$node"); do
            if [[ "$child" == "$word" ]]; then
                node="${node:+$node }$word"
                break
            fi
        done
    done
    if ((COMP_CWORD > 1)); then
        case "$(_velmora_value "${COMP_WORDS[COMP_CWORD - 1]}")" in
            file) COMPREPLY=($(compgen -f -- "$current")); return ;;
            folder) COMPREPLY=($(compgen -d -- "$current")); return ;;
            word) COMPREPLY=(); return ;;
        esac
    fi
    if [[ "$current" == -* ]]; then
        # This command's options and those of the commands above it (global options go anywhere).
        local options="" level="$node"
        while :; do
            options+=" $(_velmora_options "$level")"
            [[ -z "$level" ]] && break
            if [[ "$level" == *" "* ]]; then level="${level% *}"; else level=""; fi
        done
        COMPREPLY=($(compgen -W "$options" -- "$current"))
        return
    fi
    COMPREPLY=($(compgen -W "$(_velmora_commands "$node")" -- "$current"))
    case "$(_velmora_operand "$node")" in
        file) COMPREPLY+=($(compgen -f -- "$current")) ;;
        folder) COMPREPLY+=($(compgen -d -- "$current")) ;;
    esac
}

complete -o filenames -F _velmora velmora
)SH";
}

std::string zsh(const CommandShape& program) {
    const auto levels = levelsOf(program);
    std::string commands = "_velmora_commands() {\n    case \"$1\" in\n";
    std::string options = "_velmora_options() {\n    case \"$1\" in\n";
    for (const auto& level : levels) {
        std::vector<std::string> entries;
        for (const auto& sub : level.command->commands)
            entries.push_back(singleQuoted(sub.name + ":" + firstLine(sub.description)));
        if (!entries.empty()) commands += fmt::format("        \"{}\") reply=({}) ;;\n", level.key, joined(entries));
        entries.clear();
        for (const auto& option : level.command->options) {
            for (const auto& name : option.names)
                entries.push_back(singleQuoted(name + ":" + firstLine(option.description)));
        }
        options += fmt::format("        \"{}\") reply=({}) ;;\n", level.key, joined(entries));
    }
    commands += "        *) reply=() ;;\n    esac\n}\n\n";
    options += "        *) reply=() ;;\n    esac\n}\n\n";
    return "#compdef velmora\n# zsh completion for velmora, written by 'velmora completion zsh' from its own option "
           "definitions.\n\n" +
           commands + options + kindFunctions(levels) + R"SH(
_velmora() {
    local node="" word entry level i
    local -a reply candidates
    # The command being completed: the words that name commands, skipping options and their values.
    for ((i = 2; i < CURRENT; i++)); do
        word="${words[i]}"
        if [[ "$word" == -* ]]; then
            [[ -n "$(_velmora_value "$word")" ]] && ((i++))
            continue
        fi
        _velmora_commands "$node"
        for entry in "${reply[@]}"; do
            if [[ "${entry%%:*}" == "$word" ]]; then
                node="${node:+$node }$word"
                break
            fi
        done
    done
    case "$(_velmora_value "${words[CURRENT - 1]}")" in
        file) _files; return ;;
        folder) _files -/; return ;;
        word) _message 'a value'; return ;;
    esac
    if [[ "${words[CURRENT]}" == -* ]]; then
        # This command's options and those of the commands above it (global options go anywhere).
        level="$node"
        while :; do
            _velmora_options "$level"
            candidates+=("${reply[@]}")
            [[ -z "$level" ]] && break
            if [[ "$level" == *" "* ]]; then level="${level% *}"; else level=""; fi
        done
        _describe 'option' candidates
        return
    fi
    _velmora_commands "$node"
    candidates=("${reply[@]}")
    (( ${#candidates} )) && _describe 'command' candidates
    case "$(_velmora_operand "$node")" in
        file) _files ;;
        folder) _files -/ ;;
    esac
}

_velmora "$@"
)SH";
}

std::string fish(const CommandShape& program) {
    std::string out =
        "# fish completion for velmora, written by 'velmora completion fish' from its own option definitions.\n\n"
        "complete -c velmora -f\n";
    for (const auto& option : program.options) out += fishOption(option, "");
    for (const auto& level : levelsOf(program)) {
        const CommandShape& command = *level.command;
        const std::string inside = level.key.empty() ? "" : "__fish_seen_subcommand_from " + command.name;
        const std::string offer = level.key.empty() ? "__fish_use_subcommand" : inside;
        for (const auto& sub : command.commands) {
            out += fmt::format("complete -c velmora -n {} -a {} -d {}\n", fishQuoted(offer), fishQuoted(sub.name),
                               fishQuoted(firstLine(sub.description)));
        }
        if (level.key.empty()) continue;
        for (const auto& option : command.options) out += fishOption(option, inside);
        if (!command.operands.empty() && command.operands.front().value == ValueKind::file)
            out += fmt::format("complete -c velmora -n {} -F\n", fishQuoted(inside));
        if (!command.operands.empty() && command.operands.front().value == ValueKind::folder)
            out += fmt::format("complete -c velmora -n {} -a '(__fish_complete_directories)'\n", fishQuoted(inside));
    }
    return out;
}

}  // namespace corvel::cli::ShellCompletion
