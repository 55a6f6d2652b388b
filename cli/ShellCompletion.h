// Completion scripts for bash, zsh and fish, written from the command line's own definitions:
// commands at every level, their options (with the global ones), and file or folder names where
// an option or operand takes one.
//
//   velmora completion bash > /etc/bash_completion.d/velmora
//   context.out() << ShellCompletion::script("zsh", CommandLineShape::of(app));
#pragma once

#include "CommandLineShape.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel::cli::ShellCompletion {

// The shells a script can be written for, in the order help lists them.
const std::vector<std::string>& shells();

// The script for `shell`, or absent for a shell not in `shells()`.
std::optional<std::string> script(const std::string& shell, const CommandShape& program);

std::string bash(const CommandShape& program);
std::string zsh(const CommandShape& program);
std::string fish(const CommandShape& program);

}  // namespace corvel::cli::ShellCompletion
