// The process environment as a value, so that what a front end inherited is read in one place and
// tests hand the core a fixed one. Also the home-folder lookup every part shares.
//
//   const Environment environment = currentEnvironment();
//   std::string home = userHome(environment);        // $HOME, else the password database
//   auto path = lookup(environment, "PATH");          // absent when unset or empty
#pragma once

#include <map>
#include <optional>
#include <string>

namespace corvel {

using Environment = std::map<std::string, std::string>;

Environment currentEnvironment();

// The variable's value; an unset or empty variable is absent.
std::optional<std::string> lookup(const Environment& environment, const std::string& name);

// $HOME when set, else the signed-in user's home folder from the password database, else "/"
// (a process started by a service manager may have neither).
std::string userHome(const Environment& environment);

// The user's home folder from the password database alone; absent when it has no entry.
std::optional<std::string> passwordDatabaseHome();

}  // namespace corvel
