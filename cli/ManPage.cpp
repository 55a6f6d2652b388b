#include "ManPage.h"

#include <fmt/format.h>

#include <algorithm>

namespace corvel::cli::ManPage {
namespace {

// An option's or command's name: every hyphen is a real one, never a typographic dash.
std::string literal(const std::string& name) {
    std::string out;
    for (const char c : name) out += c == '-' ? std::string("\\-") : std::string(1, c);
    return out;
}

// "-h, --help" in bold with the value's name in italics: "\fB\-\-html\fR \fIFILE\fR".
std::string optionTerm(const OptionShape& option) {
    std::string out;
    for (const auto& name : option.names) {
        if (!out.empty()) out += ", ";
        out += "\\fB" + literal(name) + "\\fR";
    }
    if (!option.valueName.empty()) out += " \\fI" + escaped(option.valueName) + "\\fR";
    return out;
}

std::string operandWord(const OptionShape& operand) {
    std::string word = "\\fI" + escaped(operand.names.front()) + "\\fR";
    if (operand.repeats) word += " ...";
    return operand.required ? word : "[" + word + "]";
}

// Roff paragraphs: a blank line in a description starts a new one; other line breaks are kept.
std::string paragraphs(const std::string& text) {
    if (text.empty()) return {};
    std::string out;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = text.substr(start, end - start);
        out += line.empty() ? ".PP\n" : escaped(line) + "\n";
        if (!line.empty() && end < text.size()) out += ".br\n";
        start = end + 1;
    }
    return out;
}

void describeCommand(const CommandShape& command, const std::string& path, std::string& out) {
    std::string synopsis = "velmora " + path;
    if (!command.options.empty()) synopsis += " [OPTIONS]";
    out += ".SS \"" + escaped(synopsis) + "\"";
    for (const auto& operand : command.operands) out += " " + operandWord(operand);
    out += "\n" + paragraphs(command.description);
    for (const auto& operand : command.operands) {
        out += ".TP\n\\fI" + escaped(operand.names.front()) + "\\fR\n" + paragraphs(operand.description);
    }
    for (const auto& option : command.options) {
        out += ".TP\n" + optionTerm(option) + "\n" + paragraphs(option.description);
    }
    for (const auto& sub : command.commands) describeCommand(sub, path + " " + sub.name, out);
}

}  // namespace

std::string escaped(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-' && (i == 0 || text[i - 1] == ' ' || text[i - 1] == '-' || text[i - 1] == '[')) {
            out += "\\-";  // an option's hyphen, which must not become a typographic dash
        } else if (static_cast<unsigned char>(c) >= 0x80) {
            // Roff input is ASCII: a character beyond it travels as its code point, "…" as \[u2026].
            const auto lead = static_cast<unsigned char>(c);
            const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
            char32_t point = length == 1 ? 0 : lead & (0x7F >> length);
            bool valid = length > 1 && i + length <= text.size();
            for (std::size_t k = 1; valid && k < length; ++k) {
                const auto next = static_cast<unsigned char>(text[i + k]);
                valid = (next & 0xC0) == 0x80;
                point = (point << 6) | (next & 0x3F);
            }
            if (valid) {
                out += fmt::format("\\[u{:04X}]", static_cast<std::uint32_t>(point));
                i += length - 1;
            } else {
                out += '?';
            }
        } else {
            out += c;
        }
    }
    if (!out.empty() && (out.front() == '.' || out.front() == '\'')) out.insert(0, "\\&");
    return out;
}

std::string roff(const CommandShape& program, const std::string& version) {
    const std::string summary = program.description.substr(0, program.description.find('\n'));
    std::string out = ".\\\" Written by 'velmora man' from the command line's own definitions.\n";
    out += fmt::format(".TH VELMORA 1 \"\" \"velmora {}\" \"User Commands\"\n", escaped(version));
    out += ".SH NAME\nvelmora \\- " + escaped(summary) + "\n";
    out += ".SH SYNOPSIS\n.B velmora\n[\\fIOPTIONS\\fR] [\\fICOMMAND\\fR [\\fIARGUMENTS\\fR]]\n";
    out += ".SH DESCRIPTION\n" + paragraphs(program.description) +
           ".PP\nWithout a command, velmora prints the overview of the machine (\\fBvelmora status\\fR).\n";
    out += ".SH OPTIONS\nThese options may be given before or after the command.\n";
    for (const auto& option : program.options)
        out += ".TP\n" + optionTerm(option) + "\n" + paragraphs(option.description);
    out += ".SH COMMANDS\n";
    for (const auto& command : program.commands) describeCommand(command, command.name, out);
    out +=
        ".SH ENVIRONMENT\n.TP\n\\fBVELMORA_DATA_DIR\\fR\n"
        "The folder for velmora's data files when \\fB\\-\\-data\\-dir\\fR is not given.\n"
        ".TP\n\\fBNO_COLOR\\fR\nWhen set, the output has no colours.\n";
    out += ".SH EXIT STATUS\n0 on success, 1 when the work failed, 2 for bad usage.\n";
    return out;
}

}  // namespace corvel::cli::ManPage
