#include "diagnostics/DiagnosticsFixtures.h"
#include "monitoring/AlertTracker.h"
#include "monitoring/MonitorEvent.h"
#include "monitoring/MountChange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::finding;
using testing::GB;
using testing::volume;

Finding freeSpace(Severity severity, const std::string& volumeID = "V") {
    return finding("volume.freeSpace", severity, "Data", FindingSubject::volume(volumeID));
}

TEST(AlertTracker, AlertsOnlyWhenNewOrWorse) {
    struct Step {
        const char* what;
        std::vector<Finding> findings;
        std::vector<Severity> alerted;
        std::optional<Severity> active;  // the map's entry for the finding afterwards
    };
    const std::vector<Step> steps{
        {"first seen as warning", {freeSpace(Severity::warning)}, {Severity::warning}, Severity::warning},
        {"still warning", {freeSpace(Severity::warning)}, {}, Severity::warning},
        {"escalates to critical", {freeSpace(Severity::critical)}, {Severity::critical}, Severity::critical},
        {"back to warning", {freeSpace(Severity::warning)}, {}, Severity::warning},
        {"gone while another finding is new",
         {finding("volume.readOnly", Severity::warning, "Backup", FindingSubject::volume("B"))},
         {Severity::warning},
         std::nullopt},
        {"back as warning", {freeSpace(Severity::warning)}, {Severity::warning}, Severity::warning},
        {"info is below the minimum", {freeSpace(Severity::info)}, {}, std::nullopt},
        {"warning again after info", {freeSpace(Severity::warning)}, {Severity::warning}, Severity::warning},
        {"no findings at all", {}, {}, std::nullopt},
    };
    AlertTracker tracker;
    for (const auto& step : steps) {
        std::vector<Severity> alerted;
        for (const auto& alert : tracker.update(step.findings, Severity::warning)) alerted.push_back(alert.severity);
        EXPECT_EQ(alerted, step.alerted) << step.what;
        const auto found = tracker.active.find(freeSpace(Severity::warning).id());
        EXPECT_EQ(found == tracker.active.end() ? std::nullopt : std::optional(found->second), step.active) << step.what;
    }
}

TEST(AlertTracker, RestoredStateSuppressesWhatWasAlreadyAlerted) {
    AlertTracker tracker;
    tracker.restore({{freeSpace(Severity::warning).id(), Severity::critical}});
    EXPECT_THAT(tracker.update({freeSpace(Severity::critical), freeSpace(Severity::warning, "W")}, Severity::warning),
                ElementsAre(Field(&Finding::subject, FindingSubject::volume("W"))));
    EXPECT_EQ(tracker.active.size(), 2u);
}

TEST(MountChange, DiffsByVolumeID) {
    const auto a = volume("A", "Alpha", 100 * GB, 50 * GB);
    const auto b = volume("B", "Beta", 100 * GB, 50 * GB);
    auto renamed = volume("B2", "Beta", 100 * GB, 50 * GB);  // same volume, new id
    const auto change = MountChange::diff(std::vector{a, b}, std::vector{a, renamed});
    EXPECT_THAT(change.mounted, ElementsAre(Field(&StorageVolume::id, "B2")));
    EXPECT_THAT(change.unmounted, ElementsAre(Field(&StorageVolume::id, "B")));
    EXPECT_TRUE(MountChange::diff(std::vector{a, b}, std::vector{b, a}).empty());
    EXPECT_THAT(MountChange::diff(std::vector<StorageVolume>{}, std::vector{a}).mounted, ElementsAre(a));
}

TEST(MonitorEvent, WordsMountChangesAndAlerts) {
    const auto at = *ISO8601::parse("2026-11-02T09:30:00Z");
    const auto events = MonitorEvent::fromMountChange(
        {{volume("N", "New", 2000 * GB, 1500 * GB)}, {volume("O", "Old", 100 * GB, 1 * GB)}}, at);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].kind, MonitorEventKind::mounted);
    EXPECT_EQ(events[0].title, "Volume mounted");
    EXPECT_EQ(events[0].message, "New (/Volumes/New) was mounted: 1.5 TB free of 2 TB.");
    EXPECT_EQ(events[1].kind, MonitorEventKind::unmounted);
    EXPECT_EQ(events[1].message, "Old (/Volumes/Old) is no longer mounted.");
    EXPECT_EQ(events[1].subjectID, "O");

    const auto alert = MonitorEvent::alert(freeSpace(Severity::critical), at);
    EXPECT_EQ(alert.title, "Critical: title");
    EXPECT_EQ(alert.message, "Data: detail");
    EXPECT_EQ(alert.subjectID, "volume.freeSpace|volume:V");
    EXPECT_EQ(alert.severity, Severity::critical);
    EXPECT_FALSE(Json(events[0]).contains("severity"));
}

}  // namespace
}  // namespace corvel
