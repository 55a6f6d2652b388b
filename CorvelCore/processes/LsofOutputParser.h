// Decodes the open-file lister's field output (`lsof -F pcfn`) into ProcessUsage records. Pure,
// so every rule is checked on captured output on any platform.
//
//   p406            a process set starts: its pid
//   cloginwindow    the process's command name
//   fcwd            a file set starts: its descriptor (cwd, txt, 3, mem, ...)
//   n/              the file's name, taken as it is
//
//   std::vector<ProcessUsage> usages = LsofOutputParser::parse(lsofOutput);
#pragma once

#include "processes/ProcessUsage.h"

#include <string_view>
#include <vector>

namespace corvel::LsofOutputParser {

// Every named file of every process set, in the lister's order. A process set whose pid is not a
// number is skipped with its files; a file set without a name is skipped; lines of other fields
// are ignored. Never throws.
std::vector<ProcessUsage> parse(std::string_view output);

// cwd is a working directory, txt the program's own text, anything else an open file.
ProcessUsage::Kind kindOfDescriptor(std::string_view descriptor);

}  // namespace corvel::LsofOutputParser
