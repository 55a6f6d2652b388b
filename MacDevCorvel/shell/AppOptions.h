// The desktop application's command line, read before any window exists (registering the agent
// must work without a display): the machine to look at, the data folder, a fixed clock, the
// start flags of the background agent, and the screenshot run used by `make screenshots`.
//
//   auto parsed = AppOptions::parse({"--replay", "tests/fixtures/machines/macbook-air-m2"});
//   if (parsed.error) { print(*parsed.error); return 2; }
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

struct AppOptions {
    enum class AgentChange { none, registerAgent, unregisterAgent };

    std::optional<std::string> replay;
    std::optional<std::string> now;
    std::optional<std::string> dataDir;
    AgentChange agent = AgentChange::none;
    std::optional<std::string> spaceFolder;  // preselected on the space screen, scanned at start
    std::optional<std::string> screenshots;  // write every screen as PNG here, then quit
    bool help = false;

    struct Parsed;
    // `arguments` without the program name. Accepts "--name value" and "--name=value".
    static Parsed parse(const std::vector<std::string>& arguments);
    static std::string usage();
};

struct AppOptions::Parsed {
    AppOptions options;
    std::optional<std::string> error;  // one line naming the argument
};

}  // namespace corvel::desktop
