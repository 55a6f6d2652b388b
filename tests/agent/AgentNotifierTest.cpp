#include "agent/AgentConfiguration.h"
#include "agent/AgentNotifier.h"

#include "command/CommandError.h"
#include "support/ScriptedRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::ScriptedRunner;

MonitorEvent event(const std::string& title, std::optional<Severity> severity = std::nullopt) {
    return {TimePoint{}, severity ? MonitorEventKind::alert : MonitorEventKind::unmounted, "id", "Data", title,
            "Data: \"quoted\" \\ text", severity};
}

const auto always = [](const std::string&) { return true; };
const auto never = [](const std::string&) { return false; };

TEST(AgentNotifier, CommandsForEachPlatform) {
    const AgentNotifier::Notification note{"Critical: Almost full", "Data: \"quoted\" \\ text\nmore", true};
    EXPECT_EQ(AgentNotifier::command(Platform::linux, note),
              (AgentNotifier::Command{"/usr/bin/notify-send",
                                      {"--app-name=Velmora", "--urgency=critical", "--", note.title, note.message}}));
    const auto mac = AgentNotifier::command(Platform::macos, note);
    EXPECT_EQ(mac.executable, "/usr/bin/osascript");
    EXPECT_THAT(mac.arguments, ElementsAre("-e", "display notification \"Data: \\\"quoted\\\" \\\\ text more\" with "
                                                 "title \"Velmora\" subtitle \"Critical: Almost full\""));
    for (const auto platform : allCases<Platform>()) {
        const auto call = AgentNotifier::command(platform, note);
        EXPECT_TRUE(AgentNotifier::policy(platform).permits(call.arguments)) << rawValue(platform);
    }
}

TEST(AgentNotifier, AFewEventsEachAndTheRestAsOneSummary) {
    const auto notes = AgentNotifier::notifications(
        {event("one"), event("two"), event("three"), event("four"), event("five", Severity::critical)});
    ASSERT_EQ(notes.size(), 4u);
    EXPECT_EQ(notes[2].title, "three");
    EXPECT_EQ(notes[3].title, "2 more storage events");
    EXPECT_TRUE(notes[3].urgent);
    EXPECT_FALSE(notes[0].urgent);
}

TEST(AgentNotifier, SkipsWithOneLineWhenOffOrMissing) {
    ScriptedRunner runner;
    const std::vector<MonitorEvent> events{event("one"), event("two")};
    EXPECT_THAT(AgentNotifier::send(events, Platform::linux, runner, always, false),
                ElementsAre(HasSubstr("notificationsEnabled is false")));
    EXPECT_THAT(AgentNotifier::send(events, Platform::linux, runner, never, true),
                ElementsAre("notifications skipped (2 events): /usr/bin/notify-send is not installed"));
    EXPECT_THAT(runner.calls, IsEmpty());
    EXPECT_THAT(AgentNotifier::send({}, Platform::linux, runner, never, true), IsEmpty());
}

TEST(AgentNotifier, SendsEachAndLogsFailures) {
    ScriptedRunner runner;
    runner.answer("/usr/bin/notify-send", {"--app-name=Velmora", "--urgency=normal", "--", "one", event("one").message}, "");
    const auto log = AgentNotifier::send({event("one"), event("two")}, Platform::linux, runner, always, true);
    EXPECT_EQ(runner.calls.size(), 2u);
    EXPECT_THAT(log, ElementsAre("notification 'two' not shown: Could not launch command: no recording"));
}

TEST(AgentConfiguration, SettingsUnderTheCommandLine) {
    CorvelSettings settings;
    settings.agentIntervalMinutes = 30;
    settings.notificationsEnabled = false;
    settings.monitoringEnabled = false;
    auto configuration = AgentConfiguration::from(settings, {});
    EXPECT_EQ(configuration.interval, std::chrono::minutes(30));
    EXPECT_FALSE(configuration.notificationsEnabled);
    EXPECT_FALSE(configuration.monitoringEnabled);
    EXPECT_EQ(AgentConfiguration::from(settings, {std::chrono::seconds(1), std::nullopt}).interval,
              std::chrono::seconds(1));
    settings.agentIntervalMinutes = 0;  // a hand-edited file
    EXPECT_EQ(AgentConfiguration::from(settings, {}).interval, std::chrono::minutes(1));
}

}  // namespace
}  // namespace corvel
