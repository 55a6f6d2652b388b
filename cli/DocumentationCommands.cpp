// velmora completion SHELL and velmora man: the shell completions and the manual page, written
// from the same option definitions the parser uses, so they always match this binary.
#include "CliErrors.h"
#include "Commands.h"
#include "ManPage.h"
#include "ShellCompletion.h"

namespace corvel::cli {

void registerDocumentationCommands(CLI::App& app, CliContext& context) {
    auto shell = std::make_shared<std::string>();
    auto* completion = app.add_subcommand("completion", "Print the completion script for a shell: bash, zsh or fish");
    completion->add_option("shell", *shell, "bash, zsh or fish")->type_name("SHELL")->required()->expected(1);
    completion->callback([&app, &context, shell] {
        const auto script = ShellCompletion::script(*shell, CommandLineShape::of(app));
        if (!script) throw UsageError("unknown shell '" + *shell + "' (bash, zsh or fish)");
        context.out() << *script;
    });

    auto* man = app.add_subcommand("man", "Print the manual page velmora(1) in roff (try: velmora man | man -l -)");
    man->callback([&app, &context] { context.out() << ManPage::roff(CommandLineShape::of(app), VELMORA_VERSION); });
}

}  // namespace corvel::cli
