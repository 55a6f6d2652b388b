// The shape of the command line as the parser knows it: every command, its options and operands,
// read from the CLI11 definitions themselves. The shell completions and the manual page are made
// from it, so they can never name an option the parser does not have (or miss one it has).
//
//   const CommandShape shape = CommandLineShape::of(app);
//   context.out() << ShellCompletion::bash(shape);
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace corvel::cli {

// What the value an option or operand takes is, for completing it.
enum class ValueKind {
    none,    // a flag
    file,    // a file or folder name (FILE, PATH, SOURCE, ...)
    folder,  // a folder name (DIR)
    word,    // anything else: a number, a time, a name
};

struct OptionShape {
    std::vector<std::string> names;  // "-h", "--help"; for an operand its one name ("path")
    std::string valueName;           // "FILE", "DIR", "UINT"; empty for a flag
    ValueKind value = ValueKind::none;
    std::string description;
    bool required = false;
    bool repeats = false;  // may be given more than once (or takes several words as an operand)
    bool operator==(const OptionShape&) const = default;
};

struct CommandShape {
    std::string name;  // "velmora" for the whole program
    std::string description;
    std::vector<OptionShape> options;   // in the order they were defined
    std::vector<OptionShape> operands;  // positional words, in order
    std::vector<CommandShape> commands;
    bool operator==(const CommandShape&) const = default;
};

namespace CommandLineShape {

CommandShape of(const CLI::App& app);

// How a value named `valueName` (an option's type name) is completed.
ValueKind valueKindOf(const std::string& valueName);

}  // namespace CommandLineShape
}  // namespace corvel::cli
