// One audit entry per confirmed attempt, whatever its outcome, in a log that never holds more
// than the newest 1000 and shrugs off a corrupt file; and the plans that are only ever printed.
#include "DiskObjects.h"
#include "command/CommandError.h"
#include "diskops/OperationAttempt.h"
#include "diskops/OperationAuditLog.h"
#include "diskops/OperationPlan.h"
#include "support/ScriptedRunner.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Op = DiskOperation;

OperationAuditLog::Entry entryNumbered(int number) {
    OperationAuditLog::Entry entry;
    entry.id = std::to_string(number);
    entry.operation = Op::unmount;
    entry.target = "Volume disk4s1 (Backup)";
    entry.outcome = "Unmount completed.";
    entry.succeeded = true;
    return entry;
}

TEST(OperationAuditLog, NeverHoldsMoreThanTheNewestThousandWhateverWasThereBefore) {
    // Files of any length, an over-long one left by someone else included, then a few records.
    for (const int stored : {0, 1, 998, 1000, 1500}) {
        testing::TemporaryFolder folder;
        const auto file = OperationAuditLog::fileIn(folder.root());
        std::vector<OperationAuditLog::Entry> seed;
        for (int i = 1; i <= stored; ++i) seed.push_back(entryNumbered(i));
        folder.write(OperationAuditLog::fileName, Json(seed).dump());
        OperationAuditLog log(file);
        for (int i = 1; i <= 2; ++i) {
            log.record(entryNumbered(stored + i));
            const auto entries = OperationAuditLog(file).entries();
            const auto expected = std::min(stored + i, 1000);
            ASSERT_EQ(entries.size(), static_cast<std::size_t>(expected)) << stored << "+" << i;
            EXPECT_EQ(entries.front().id, std::to_string(stored + i - expected + 1)) << stored << "+" << i;
            EXPECT_EQ(entries.back().id, std::to_string(stored + i)) << stored << "+" << i;
        }
    }
}

TEST(OperationAuditLog, ACorruptFileReadsAsEmptyAndIsReplacedByTheNextEntry) {
    testing::TemporaryFolder folder;
    const auto file = folder.write("operations-audit.json", "{ not json");
    OperationAuditLog log(file);
    EXPECT_THAT(log.entries(), IsEmpty());
    EXPECT_TRUE(log.loadProblem().has_value());
    log.record(entryNumbered(1));
    EXPECT_THAT(OperationAuditLog(file).entries(), ElementsAre(Field(&OperationAuditLog::Entry::id, "1")));
}

TEST(OperationAttempt, DescribesEveryOutcomeForTheLog) {
    testing::ScriptedRunner runner;
    runner.answer({"mount", "disk4s1"}, std::string("\n"));
    runner.answer({"unmount", "/Volumes/Backup"}, CommandError::failed(16, "Volume Backup failed to unmount"));
    const DiskOperationExecutor executor(runner);
    const auto now = [] { return TimePoint{} + std::chrono::hours(1); };
    auto volume = diskopstest::externalVolume();
    const auto unmounted = diskopstest::with(volume, [](DiskObject& o) { o.mountPoint.reset(); });

    const auto quiet = OperationAttempt::run(executor, {Op::mount, unmounted, {}, {}, {}}, std::nullopt, now);
    EXPECT_TRUE(quiet.succeeded);
    EXPECT_EQ(quiet.outcome, "Mount completed.");
    EXPECT_EQ(quiet.target, "Volume disk4s1 (Backup)");
    EXPECT_EQ(quiet.date, now());

    const auto failed = OperationAttempt::run(executor, {Op::unmount, volume, {}, {}, {}}, std::nullopt, now);
    EXPECT_FALSE(failed.succeeded);
    EXPECT_EQ(failed.outcome, CommandError::failed(16, "Volume Backup failed to unmount").description());
    EXPECT_NE(failed.id, quiet.id);

    testing::TemporaryFolder folder;
    volume.mountPoint = folder.path();
    const PreflightReport writable{Op::createDirectory, volume, {{"Volume writable", {}, "ok"}}, {}, {}};
    const auto made = OperationAttempt::run(executor, writable, "Exports", now);
    EXPECT_TRUE(made.succeeded);
    EXPECT_EQ(made.outcome, "Created " + folder.path("Exports"));
    const auto again = OperationAttempt::run(executor, writable, "Exports", now);
    EXPECT_FALSE(again.succeeded);
    EXPECT_EQ(again.outcome, folder.path("Exports") + " already exists.");
}

TEST(OperationPlan, FormatAndAddVolumePlansBlockWhatIsProtected) {
    const auto external = diskopstest::externalDisk();
    const auto empty = OperationPlan::format(external, {}, "New \"Disk\"", "/usr/local/bin/velmora");
    EXPECT_THAT(empty.blockers, IsEmpty());
    EXPECT_THAT(empty.dataAtRisk, ElementsAre("No mounted volumes found; unmounted partitions may still hold data."));
    EXPECT_EQ(empty.commandForReview, "diskutil eraseDisk APFS \"New Disk\" GPT disk4");

    StorageVolume backup;
    backup.name = "Backup";
    backup.mountPoint = "/Volumes/Backup";
    const auto internal = diskopstest::with(external, [](DiskObject& o) { o.isInternal = o.isBootVolume = true; });
    const auto blocked = OperationPlan::format(internal, {backup}, "X", "/Volumes/Backup/velmora");
    EXPECT_THAT(blocked.blockers, ElementsAre("Internal disk: formatting is permanently blocked.",
                                              "This disk hosts the startup volume.", "Velmora runs from this disk."));
    EXPECT_THAT(blocked.dataAtRisk, ElementsAre(HasSubstr("Backup")));
    EXPECT_EQ(blocked.commandForReview, std::nullopt);
    EXPECT_EQ(OperationPlan::format(external, {}, "X", "", Platform::linux).commandForReview, std::nullopt);

    auto container = diskopstest::with(external, [](DiskObject& o) { o.kind = DiskObjectKind::apfsContainer; });
    EXPECT_EQ(OperationPlan::addAPFSVolume(container, "Scratch").commandForReview,
              "diskutil apfs addVolume disk4 APFS \"Scratch\"");
    container.isInternal = true;
    const auto protectedPlan = OperationPlan::addAPFSVolume(container, "Scratch");
    EXPECT_THAT(protectedPlan.blockers, ElementsAre("Internal startup container is protected."));
    EXPECT_EQ(protectedPlan.commandForReview, std::nullopt);
}

}  // namespace
}  // namespace corvel
