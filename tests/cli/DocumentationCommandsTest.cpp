// `velmora completion SHELL` and `velmora man`: written from the parser's own definitions, so each
// must name every command the help lists, be valid for its shell or for roff, and complete.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CommandLineShape.h"
#include "ManPage.h"
#include "cli/VelmoraProcess.h"
#include "common/AtomicFile.h"

#include <regex>
#include <sstream>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

bool installed(const std::string& tool) {
    return clitest::shell("command -v " + tool).status == 0;
}

// The commands a help text lists under Subcommands, as people read them.
std::vector<std::string> listedCommands(const std::string& help) {
    std::vector<std::string> names;
    std::istringstream lines(help.substr(std::min(help.find("Subcommands:"), help.size())));
    static const std::regex entry(R"(^  ([a-z][a-z0-9-]*)\s)");
    std::smatch match;
    for (std::string line; std::getline(lines, line);)
        if (std::regex_search(line, match, entry)) names.push_back(match[1]);
    return names;
}

// Every command and subcommand, from the help texts rather than from the definitions.
std::vector<std::string> everyCommandName() {
    std::vector<std::string> names = listedCommands(clitest::velmora({"--help"}).out);
    const std::vector<std::string> top = names;
    for (const auto& command : top) {
        for (const auto& sub : listedCommands(clitest::velmora({command, "--help"}).out)) names.push_back(sub);
    }
    return names;
}

// Runs `script` as a shell program; stdout and stderr together, and the exit status.
clitest::Outcome shell(const std::string& program, const std::string& script) {
    clitest::TemporaryFolder folder;
    return clitest::shell(program + " '" + folder.write("script", script) + "'");
}

TEST(Completion, EveryScriptNamesEveryCommandAndPassesItsShellsSyntaxCheck) {
    const auto commands = everyCommandName();
    ASSERT_THAT(commands, AllOf(Contains("report"), Contains("completion"), Contains("preflight")));
    for (const std::string name : {"bash", "zsh", "fish"}) {
        SCOPED_TRACE(name);
        const auto outcome = clitest::velmora({"completion", name});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        for (const auto& command : commands) EXPECT_THAT(outcome.out, HasSubstr(command));
        for (const std::string option : {"--max-nodes", "--replay", "--export"}) {
            // fish names long options without their dashes
            EXPECT_THAT(outcome.out, HasSubstr(name == "fish" ? "-l " + option.substr(2) : option));
        }
        if (!installed(name)) continue;
        const std::string check = name == "fish" ? "fish --no-execute" : name + " -n";
        const auto syntax = shell(check, outcome.out);
        EXPECT_EQ(syntax.status, 0) << syntax.out;
    }
    const auto unknown = clitest::velmora({"completion", "tcsh"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_THAT(unknown.err, HasSubstr("unknown shell 'tcsh'"));
}

// The bash script really completes: commands, nested commands, options, and folders for --data-dir.
TEST(Completion, BashCompletesCommandsOptionsAndFolders) {
    clitest::TemporaryFolder folder;
    folder.makeFolder("recordings/laptop");
    const std::string script = clitest::velmora({"completion", "bash"}).out;
    const std::string file = folder.write("velmora.bash", script);
    struct Case {
        std::string words;
        std::string expected;
    };
    const std::vector<Case> cases{
        {"velmora rep", "report"},
        {"velmora ops pl", "plan"},
        {"velmora ops plan add", "add-volume"},
        {"velmora report --max", "--max-nodes"},
        {"velmora report --js", "--json"},  // a global option after the command
        {"velmora --data-dir " + folder.path("recordings/la"), folder.path("recordings/laptop")},
        {"velmora --replay " + folder.path("rec") + " sta", "status"},
    };
    for (const auto& [words, expected] : cases) {
        const std::string program = "source '" + file + "'; COMP_WORDS=(" + words +
                                    "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _velmora; printf '%s\\n' "
                                    "\"${COMPREPLY[@]}\"";
        const auto outcome = shell("bash", program);
        EXPECT_EQ(outcome.status, 0) << outcome.out;
        EXPECT_THAT(outcome.out, HasSubstr(expected + "\n")) << words;
    }
}

TEST(CommandLineShape, ReadsOptionsOperandsAndCommandsFromTheDefinitions) {
    CLI::App app("Tool.\nSecond line.", "tool");
    std::string file, name;
    bool flag = false;
    int count = 0;
    app.add_flag("-q,--quiet", flag, "Say less");
    auto* sub = app.add_subcommand("copy", "Copy things");
    sub->add_option("--to", file, "Where")->type_name("DIR")->required();
    sub->add_option("--times", count, "How often")->check(CLI::Range(1, 9));
    sub->add_option("source", name, "What")->type_name("PATH");
    sub->add_subcommand("dry", "Only say");

    const auto shape = cli::CommandLineShape::of(app);
    EXPECT_EQ(shape.name, "tool");
    EXPECT_THAT(shape.options, Contains(AllOf(Field(&cli::OptionShape::names, ElementsAre("-q", "--quiet")),
                                              Field(&cli::OptionShape::valueName, IsEmpty()))));
    ASSERT_EQ(shape.commands.size(), 1u);
    const auto& copy = shape.commands[0];
    EXPECT_THAT(copy.options, Contains(AllOf(Field(&cli::OptionShape::names, ElementsAre("--to")),
                                             Field(&cli::OptionShape::value, cli::ValueKind::folder),
                                             Field(&cli::OptionShape::required, true))));
    // The validator CLI11 appends to the type name is not part of the value's name.
    EXPECT_THAT(copy.options, Contains(AllOf(Field(&cli::OptionShape::names, ElementsAre("--times")),
                                             Field(&cli::OptionShape::valueName, Not(HasSubstr(":"))),
                                             Field(&cli::OptionShape::value, cli::ValueKind::word))));
    EXPECT_THAT(copy.operands, ElementsAre(AllOf(Field(&cli::OptionShape::names, ElementsAre("source")),
                                                 Field(&cli::OptionShape::value, cli::ValueKind::file))));
    EXPECT_THAT(copy.commands, ElementsAre(Field(&cli::CommandShape::name, "dry")));
}

TEST(ManPage, EscapesWhatRoffWouldReadAsRequestsOrDashes) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"--data-dir DIR", "\\-\\-data-dir DIR"},
        {"a-b and -x", "a-b and \\-x"},
        {".hidden", "\\&.hidden"},
        {"'quoted'", "\\&'quoted'"},
        {"C:\\path", "C:\\epath"},
        {"then ~/src, \u2026 \xC2\xB7", "then ~/src, \\[u2026] \\[u00B7]"},
        {"disk \xF0\x9F\x92\xBE", "disk \\[u1F4BE]"},
        {"cut \xE2\x80 and \xFF", "cut ?? and ?"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(cli::ManPage::escaped(text), expected) << text;
}

TEST(ManPage, RendersWithoutWarningsAndDescribesEveryCommandAndOption) {
    const auto page = clitest::velmora({"man"});
    ASSERT_EQ(page.status, 0) << page.err;
    EXPECT_THAT(page.out, AllOf(HasSubstr(".TH VELMORA 1"), HasSubstr("\\fB\\-\\-max\\-nodes\\fR")));
    if (!installed("groff")) GTEST_SKIP() << "groff is not installed";
    clitest::TemporaryFolder folder;
    const std::string file = folder.write("velmora.1", page.out);
    const auto rendered =
        clitest::shell("groff -man -Tutf8 -P-cbou -ww '" + file + "' 2>&1 >'" + folder.path("out") + "'");
    EXPECT_EQ(rendered.status, 0);
    EXPECT_THAT(rendered.out, IsEmpty()) << "groff warned";
    const std::string text = AtomicFile::read(folder.path("out")).value_or("");
    for (const auto& command : everyCommandName()) EXPECT_THAT(text, HasSubstr(command));
}

}  // namespace
}  // namespace corvel
