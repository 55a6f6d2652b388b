// The manual page velmora(1) in roff, written from the command line's own definitions: every
// command at every level with its operands and options, then the environment and files. `make
// man` writes it to build/man/velmora.1 and `make install` puts it in share/man/man1.
//
//   velmora man > velmora.1 && man -l velmora.1
//   context.out() << ManPage::roff(CommandLineShape::of(app), VELMORA_VERSION);
#pragma once

#include "CommandLineShape.h"

#include <string>

namespace corvel::cli::ManPage {

std::string roff(const CommandShape& program, const std::string& version);

// `text` safe in a roff line: backslashes doubled as \e, hyphens of options as \-, and a leading
// '.' or '\'' (which roff would read as a request) guarded.
std::string escaped(const std::string& text);

}  // namespace corvel::cli::ManPage
