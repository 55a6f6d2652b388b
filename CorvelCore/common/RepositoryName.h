// GitHub repository names as typed by a person ("owner/name"): checked once here for the update
// setting and for --repo, so that a word that could be read as an option never reaches a tool.
//
//   RepositoryName::isValid("velmora-app/velmora") == true
//   RepositoryName::isValid("--help/x") == false
#pragma once

#include <string_view>

namespace corvel::RepositoryName {

// Exactly one "/" between an owner and a name, each of letters, digits, ".", "_" and "-", neither
// starting with "-" nor being "." or "..".
bool isValid(std::string_view text);

}  // namespace corvel::RepositoryName
