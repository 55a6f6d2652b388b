#include "DesktopTests.h"
#include "common/JSONHistory.h"
#include "diskops/DiskOperationPolicy.h"
#include "diskops/DiskOperationPreflight.h"
#include "diskops/DiskOpsModel.h"
#include "docker/DockerModel.h"
#include "machine/DiskOperationTargets.h"
#include "machine/MachineOpenFiles.h"
#include "machine/MigrationReading.h"
#include "migration/MigrationModel.h"
#include "migration/MigrationPlanner.h"
#include "migration/TreeVerifier.h"
#include "performance/PerformanceModel.h"
#include "processes/CurrentProcess.h"
#include "processes/ProcessesModel.h"
#include "settings/ConsentModel.h"
#include "shell/CoreSession.h"

#include <unistd.h>
#include <QSignalSpy>
#include <algorithm>

namespace corvel::desktop::testing {
namespace {

// This machine, looked at with a temporary data folder: nothing of ours is read or written.
Machine liveMachine(const QTemporaryDir& data) {
    MachineOptions options;
    options.dataFolder = data.path().toStdString();
    return Machine::open(options);
}

// Waits for the model's changes until `done()` holds.
template <class Model, class Condition>
bool settle(Model& model, Condition done) {
    return waitWhile(model, &Model::changed, [&] { return !done(); });
}

int indexOf(const DiskOpsModel& model, const std::string& name) {
    const auto& targets = model.targets();
    const auto found =
        std::find_if(targets.begin(), targets.end(), [&](const auto& target) { return target.object.name == name; });
    return found == targets.end() ? -1 : static_cast<int>(found - targets.begin());
}

}  // namespace

class ToolModelsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The recording has Finder holding files on Elements and nothing open on Projects; its
    // commands answer in place of the disk tool, so nothing of this machine is touched.
    void diskOperationsFollowTheCore() {
        QTemporaryDir data;
        CoreSession session(recordedMachine("mac-studio-disk-actions", data));
        auto& machine = session.machine();
        const auto snapshot = machine.snapshot();
        DiskOpsModel model(session);
        model.setSnapshot(snapshot);
        QVERIFY(settle(model, [&] { return model.isLoaded(); }));

        const auto sources = DiskOperationTargets::gather(machine, snapshot);
        std::vector<std::string> expected;
        for (const auto& volume : snapshot.volumes)
            if (auto target = DiskOperationTargets::resolve(sources, volume.mountPoint))
                expected.push_back(target->object.id());
        QVERIFY(model.targets().size() >= expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) QCOMPARE(model.targets()[i].object.id(), expected[i]);

        const auto app = currentExecutablePath().value_or("");
        struct Case {
            const char* volume;
            bool canProceed;
        };
        for (const Case& row : {Case{"Elements", false}, Case{"Projects", true}}) {
            const int index = indexOf(model, row.volume);
            QVERIFY2(index >= 0, row.volume);
            model.select(index);
            const auto& target = *model.target();
            auto offered = DiskOperationPolicy::all(target.object, app, machine.platform());
            std::erase_if(offered, [](const auto& one) { return !one.isApplicable; });
            QVERIFY(model.availability() == offered);

            model.preflight(DiskOperation::unmount);
            QVERIFY(model.isBusy());
            QVERIFY(settle(model, [&] { return !model.isBusy(); }));
            const auto lister = MachineOpenFiles::lister(machine);
            const DiskOperationPreflight preflight(machine.runner(ToolTimeout::inspection), *lister, app,
                                                   machine.platform());
            const auto report =
                preflight.run(DiskOperation::unmount, target.object, target.volumesOnDisk, machine.now());
            QVERIFY(model.report());
            QVERIFY(model.report()->checks == report.checks);
            QVERIFY(model.report()->processes == report.processes);
            QCOMPARE(model.report()->canProceed(), row.canProceed);
            QVERIFY(model.confirmationText().contains(
                QString::fromStdString(OperationAuditLog::targetText(target.object))));
        }

        // Projects can go ahead, but not before the person allowed disk operations.
        const auto refusal = model.runRefusal();
        QVERIFY(refusal);
        QVERIFY2(QString::fromStdString(*refusal).contains("diskOperations"), refusal->c_str());
        model.run();
        QVERIFY(!model.isBusy());
        QVERIFY(model.log().empty());

        ConsentModel consent(machine);
        QVERIFY(consent.accept({ConsentScope::diskOperations}));
        QVERIFY(!model.runRefusal());
        model.run();
        QVERIFY(settle(model, [&] { return !model.isBusy(); }));
        QVERIFY(model.outcome());
        QVERIFY2(model.outcome()->succeeded, model.outcome()->outcome.c_str());
        QCOMPARE(model.outcome()->operation, DiskOperation::unmount);
        QCOMPARE(model.log().size(), std::size_t(1));
        QVERIFY(model.log().front() == *model.outcome());
        // The report was used up: a second run needs a fresh preflight.
        QVERIFY(!model.report());
        QVERIFY(model.runRefusal());
    }

    void dockerHoldsTheCoresReading_data() {
        QTest::addColumn<QString>("machine");
        for (const char* name : {"mac-docker-running", "mac-docker-stopped", "linux-docker-engine", "macbook-air-m2"})
            QTest::newRow(name) << name;
    }

    void dockerHoldsTheCoresReading() {
        QFETCH(QString, machine);
        QTemporaryDir data;
        CoreSession session(recordedMachine(machine.toStdString(), data));
        const auto snapshot = session.machine().snapshot();
        DockerModel model(session);
        model.setSnapshot(snapshot);
        QVERIFY(model.isBusy());
        QVERIFY(settle(model, [&] { return !model.isBusy(); }));
        auto expectedMachine = recordedMachine(machine.toStdString(), data);
        const auto expected = DockerReading::read(expectedMachine, snapshot);
        QVERIFY(model.error().empty());
        QVERIFY(model.reading());
        QVERIFY(model.reading()->executable == expected.executable);
        QCOMPARE(model.reading()->inventory.has_value(), expected.inventory.has_value());
        if (expected.inventory) {
            auto held = *model.reading()->inventory;
            held.capturedAt = expected.inventory->capturedAt;
            QVERIFY(held == *expected.inventory);
        }
    }

    void processesNeedALiveMachineConsentAndThePolicy() {
        QTemporaryDir data;
        {
            CoreSession recorded(recordedMachine("macbook-air-m2", data));
            ProcessesModel model(recorded);
            QVERIFY(model.unavailable() == std::optional<std::string>(MachineProcesses::replayText()));
            model.load();
            QVERIFY(!model.isBusy());
        }
        CoreSession session(liveMachine(data));
        ProcessesModel model(session);
        QVERIFY(!model.unavailable());
        model.load();
        QVERIFY(settle(model, [&] { return model.isLoaded() && !model.isBusy(); }));
        QVERIFY2(model.error().empty(), model.error().c_str());
        model.setShowAll(true);
        const auto groups = model.groups();
        QVERIFY(!groups.empty());
        for (std::size_t i = 1; i < groups.size(); ++i) QVERIFY(groups[i - 1].cpuPercent >= groups[i].cpuPercent);
        const auto own = std::find_if(groups.begin(), groups.end(), [](const ProcessGroup& group) {
            return std::count(group.pids.begin(), group.pids.end(), static_cast<std::int32_t>(getpid())) == 1;
        });
        QVERIFY(own != groups.end());
        QVERIFY(model.confirmationText(ProcessAction::quit, *own).contains(QString::number(getpid())));
        // Our own group: the policy says no whatever the consent, so nothing here can end a process.
        QVERIFY(!model.decide(ProcessAction::forceQuit, *own).allowed);
        const auto refusal = model.actionRefusal(ProcessAction::forceQuit, *own);
        QVERIFY(refusal);
        QVERIFY2(QString::fromStdString(*refusal).contains("processControl"), refusal->c_str());
        ConsentModel consent(session.machine());
        QVERIFY(consent.accept({ConsentScope::processControl}));
        QVERIFY(model.actionRefusal(ProcessAction::forceQuit, *own) ==
                model.decide(ProcessAction::forceQuit, *own).reason);
        model.act(ProcessAction::forceQuit, *own);
        QVERIFY(!model.isBusy());
        QVERIFY(QString::fromStdString(model.lastOutcome())
                    .contains(QString::fromStdString(*model.decide(ProcessAction::forceQuit, *own).reason)));
        QVERIFY(model.records().empty());
    }

    void migrationPlansAndVerifiesLikeTheCore() {
        QTemporaryDir data;
        QTemporaryDir root;
        const QString workspace = root.filePath("ws");
        writeFile(workspace + "/build.cfg", ("output=" + workspace + "/out\n").toUtf8());
        writeFile(workspace + "/src/main.c", "int main() { return 0; }\n");
        QDir().mkpath(root.filePath("target"));
        const QString copy = root.filePath("copy");
        writeFile(copy + "/build.cfg", ("output=" + workspace + "/out\n").toUtf8());
        writeFile(copy + "/src/main.c", "int main() { return 1; }\n");

        CoreSession session(liveMachine(data));
        MigrationModel model(session);
        model.plan(workspace.toStdString(), root.filePath("target").toStdString());
        QCOMPARE(model.work(), MigrationModel::Work::planning);
        QVERIFY(settle(model, [&] { return model.work() == MigrationModel::Work::none; }));
        QVERIFY2(model.error().empty(), model.error().c_str());
        QVERIFY(model.lastPlan());
        MigrationProgress progress;
        auto expectedMachine = liveMachine(data);
        const auto facts = migrationFacts(expectedMachine, workspace.toStdString(),
                                          root.filePath("target").toStdString(), progress, [] { return false; });
        // The target's free space moves whenever anything on this machine writes; the rest must agree.
        auto planned = *model.lastPlan();
        const auto corePlan = MigrationPlanner::plan(facts);
        QVERIFY(planned.targetAvailableBytes.has_value());
        planned.targetAvailableBytes = corePlan.targetAvailableBytes;
        QVERIFY(planned == corePlan);
        QCOMPARE(model.lastPlan()->source, workspace.toStdString());

        model.verify(workspace.toStdString(), copy.toStdString());
        QVERIFY(settle(model, [&] { return model.work() == MigrationModel::Work::none; }));
        QVERIFY(model.lastComparison());
        const auto expected =
            TreeVerifier::compare(workspace.toStdString(), copy.toStdString(), {}, progress, [] { return false; });
        QVERIFY(*model.lastComparison() == expected);
        QVERIFY(!model.lastComparison()->isIdentical);

        // Bad folders are refused with a line naming them; no work starts.
        struct Case {
            std::string source, target;
            const char* says;
        };
        for (const auto& row : {Case{"", root.filePath("target").toStdString(), "the workspace"},
                                Case{workspace.toStdString(), root.filePath("gone").toStdString(), "gone"},
                                Case{workspace.toStdString(), (workspace + "/src").toStdString(), "inside"}}) {
            model.plan(row.source, row.target);
            QCOMPARE(model.work(), MigrationModel::Work::none);
            QVERIFY2(QString::fromStdString(model.error()).contains(row.says), model.error().c_str());
        }
        model.verify(workspace.toStdString(), workspace.toStdString());
        QVERIFY2(QString::fromStdString(model.error()).contains("same folder"), model.error().c_str());
    }

    void benchmarkIsGatedAndShowsItsHistory() {
        QTemporaryDir data;
        {
            CoreSession recorded(recordedMachine("macbook-air-m2", data));
            PerformanceModel model(recorded);
            QVERIFY(model.startRefusal());
            QVERIFY(QString::fromStdString(*model.startRefusal()).contains("recorded machine"));
        }
        BenchmarkRun older;
        older.mountPoint = "/old";
        older.date = ISO8601::parse("2026-01-01T00:00:00Z").value();
        BenchmarkRun newer = older;
        newer.mountPoint = "/new";
        newer.date = ISO8601::parse("2026-02-01T00:00:00Z").value();
        JSONHistory<BenchmarkRun> history(BenchmarkRun::historyFile(data.path().toStdString()),
                                          BenchmarkRun::historyLimit);
        history.append(older);
        history.append(newer);

        CoreSession session(liveMachine(data));
        PerformanceModel model(session);
        QCOMPARE(model.history().size(), std::size_t(2));
        QCOMPARE(model.history().front().mountPoint, std::string("/new"));
        const auto refusal = model.startRefusal();
        QVERIFY(refusal);
        QVERIFY2(QString::fromStdString(*refusal).contains("benchmark"), refusal->c_str());
        model.start();
        QVERIFY(!model.isRunning());
        ConsentModel consent(session.machine());
        QVERIFY(consent.accept({ConsentScope::benchmark}));
        QVERIFY(!model.startRefusal());
    }
};

std::unique_ptr<QObject> makeToolModelsTest() {
    return std::make_unique<ToolModelsTest>();
}

}  // namespace corvel::desktop::testing

#include "ToolModelsTest.moc"
