// The screen models, each on a recorded machine (or a temporary home) against what the core
// computes for the same input.
#include "DesktopTests.h"
#include "agent/AgentRecords.h"
#include "cleanup/CleanupHistory.h"
#include "cleanup/CleanupModel.h"
#include "common/JSONHistory.h"
#include "dashboard/DashboardModel.h"
#include "details/DetailsModel.h"
#include "developer/DeveloperModel.h"
#include "diagnostics/DiagnosticsModel.h"
#include "hardware/HardwareModel.h"
#include "insights/InsightEngine.h"
#include "machine/CleanupReading.h"
#include "machine/MachineDiagnosis.h"
#include "machine/MachineHardware.h"
#include "machine/MachineInsights.h"
#include "machine/MachineTopology.h"
#include "machine/RefreshCycle.h"
#include "monitoring/CapacityForecast.h"
#include "monitoring/HistoryStore.h"
#include "monitoring/MonitoringModel.h"
#include "shell/CoreSession.h"
#include "shell/Refresher.h"
#include "space/DirectorySizer.h"
#include "space/ScanReporting.h"
#include "space/SpaceModel.h"
#include "space/SpaceScanner.h"
#include "topology/TopologyModel.h"

#include <algorithm>

namespace corvel::desktop::testing {
namespace {

TimePoint at(const char* iso) {
    return *ISO8601::parse(iso);
}

}  // namespace

// Each test gets a fresh data folder, and a session on the recording it names.
class ScreenModelsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> data_;
    std::unique_ptr<CoreSession> session_;

    CoreSession& session(const QString& machine) {
        session_ = std::make_unique<CoreSession>(recordedMachine(machine.toStdString(), *data_));
        return *session_;
    }
    // The same recording opened again, for the core to compute what the model should hold.
    Machine recording(const QString& machine) { return recordedMachine(machine.toStdString(), *data_); }

private Q_SLOTS:
    void init() { data_ = std::make_unique<QTemporaryDir>(); }
    void cleanup() {
        session_.reset();
        data_.reset();
    }

    // The models must hold what the core computes for the same recording, not a reading of it.
    void refreshFillsModelsWithTheCoresValues_data() {
        QTest::addColumn<QString>("machine");
        for (const char* name :
             {"mac-studio-external-usb", "macbook-air-m2", "mac-docker-running", "linux-workstation"})
            QTest::newRow(name) << name;
    }

    void refreshFillsModelsWithTheCoresValues() {
        QFETCH(QString, machine);
        DashboardModel dashboard;
        DiagnosticsModel diagnostics;
        Refresher refresher(session(machine), dashboard, diagnostics);
        QSignalSpy finished(&refresher, &Refresher::finished);
        QSignalSpy changed(&dashboard, &DashboardModel::changed);
        refresher.refresh();
        refresher.refresh();  // while one runs, asking again does nothing
        QVERIFY(finished.wait(20000));
        QCOMPARE(changed.count(), 1);

        auto expectedMachine = recording(machine);
        const auto settings = expectedMachine.settings().settings;
        HistoryStore history(HistoryStore::defaultURL(expectedMachine.dataFolder()));
        const auto expected = RefreshCycle::run(expectedMachine, settings, {.history = &history});
        const auto insights = MachineInsights::of(expectedMachine, expected.snapshot, expected.diagnosis.report,
                                                  InsightEngine::defaultMinimumBytes);

        QVERIFY(dashboard.isLoaded());
        QVERIFY(!dashboard.snapshot().volumes.empty());
        QVERIFY(dashboard.snapshot() == expected.snapshot);
        QVERIFY(dashboard.values().diagnosis == expected.diagnosis);
        QCOMPARE(dashboard.health().size(), std::size_t(5));
        QVERIFY(dashboard.overall() == expected.diagnosis.overall());
        QVERIFY(dashboard.values().insights == insights.insights);
        const auto top = dashboard.topInsights();
        QCOMPARE(top.size(), std::min(insights.insights.size(), DashboardModel::topInsightCount));
        QVERIFY(std::equal(top.begin(), top.end(), insights.insights.begin()));
        for (const auto& warning : expected.snapshot.warnings)
            QVERIFY(std::count(dashboard.values().warnings.begin(), dashboard.values().warnings.end(), warning) == 1);

        QVERIFY(diagnostics.isLoaded());
        QVERIFY(diagnostics.visibleFindings() == expected.diagnosis.report.findings);
    }

    void severityFilterShowsOneSeverity() {
        auto machine = recording("mac-studio-external-usb");
        const auto diagnosis = MachineDiagnosis::of(machine.snapshot(), machine.settings().settings);
        QVERIFY2(diagnosis.report.findings.size() >= 2, "the recording should have findings of several severities");
        DiagnosticsModel model;
        model.setDiagnosis(diagnosis);
        QSignalSpy changed(&model, &DiagnosticsModel::changed);
        for (const auto severity : allCases<Severity>()) {
            model.setSeverityFilter(severity);
            const auto visible = model.visibleFindings();
            QCOMPARE(visible.size(), diagnosis.report.count(severity));
            for (const auto& finding : visible) QCOMPARE(finding.severity, severity);
        }
        model.setSeverityFilter(std::nullopt);
        QVERIFY(model.visibleFindings() == diagnosis.report.findings);
        const auto signals = changed.count();
        model.setSeverityFilter(std::nullopt);
        QCOMPARE(changed.count(), signals);  // no change, no rebuild
    }

    void spaceScanHoldsTheCoresTree() {
        QTemporaryDir folder;
        writeFile(folder.filePath("big/movie.mov"), QByteArray(900000, 'v'));
        writeFile(folder.filePath("big/deeper/archive.zip"), QByteArray(400000, 'v'));
        writeFile(folder.filePath("small/note.txt"), QByteArray(3000, 'v'));
        SpaceModel model(session("linux-workstation"));
        model.setFolder(folder.path().toStdString());
        model.start();
        QCOMPARE(model.state(), SpaceModel::State::scanning);
        QVERIFY(waitOut(model, SpaceModel::State::scanning));
        QCOMPARE(model.state(), SpaceModel::State::finished);
        QVERIFY(model.progress().finished);
        QVERIFY(model.report());

        ScanProgress progress;
        const auto tree = SpaceScanner::scan(folder.path().toStdString(), {}, progress, [] { return false; });
        const auto report = ScanReporting::report(tree, session_->machine().catalog());
        QCOMPARE(model.report()->allocatedBytes, report.allocatedBytes);
        QCOMPARE(model.report()->fileCount, std::int64_t(3));
        const auto& root = model.root();
        QCOMPARE(root.allocatedBytes, report.allocatedBytes);
        QStringList names;
        for (const auto& child : root.children) names << QString::fromStdString(child.name);
        QVERIFY2(names.contains("big") && names.contains("small"), qPrintable(names.join(",")));
        // Largest first, which is what the treemap and the tree show first.
        QCOMPARE(names.first(), QStringLiteral("big"));
        QCOMPARE(root.children.front().children.size(), std::size_t(2));
    }

    void spaceScanOfAMissingFolderSaysWhich() {
        SpaceModel model(session("linux-workstation"));
        model.setFolder(data_->filePath("gone").toStdString());
        model.start();
        QVERIFY(waitOut(model, SpaceModel::State::scanning));
        QCOMPARE(model.state(), SpaceModel::State::failed);
        QVERIFY2(QString::fromStdString(model.error()).contains(data_->filePath("gone")), model.error().c_str());
        QVERIFY(model.root().children.empty());
    }
    void developerRowsAreTheCoresLocationsAndSizes() {
        QTemporaryDir home;
        writeFile(home.filePath(".npm/_cacache/one"), QByteArray(120000, 'd'));
        writeFile(home.filePath(".npm/_cacache/two"), QByteArray(5000, 'd'));
        writeFile(home.filePath(".cargo/registry/index"), QByteArray(64000, 'd'));
        session_ = std::make_unique<CoreSession>(machineWithHome(home, *data_));
        DeveloperModel model(*session_);
        model.start();
        QCOMPARE(model.state(), DeveloperModel::State::measuring);
        QVERIFY(waitOut(model, DeveloperModel::State::measuring));
        QCOMPARE(model.state(), DeveloperModel::State::finished);

        auto& machine = session_->machine();
        const auto locations = FootprintLocation::defaults(machine.home(), machine.platform());
        QCOMPARE(model.rows().size(), locations.size());
        std::int64_t total = 0;
        int present = 0;
        for (std::size_t i = 0; i < locations.size(); ++i) {
            const auto& row = model.rows()[i];
            QVERIFY(row.location == locations[i]);
            ScanProgress progress;
            const auto expected =
                DirectorySizer::measure(locations[i].path, machine.now(), progress, [] { return false; });
            QCOMPARE(row.measurement.has_value(), expected.has_value());
            if (!expected) continue;
            QCOMPARE(row.measurement->allocatedBytes, expected->allocatedBytes);
            QCOMPARE(row.measurement->fileCount, expected->fileCount);
            total += expected->allocatedBytes;
            ++present;
        }
        QCOMPARE(present, 2);
        QCOMPARE(model.presentCount(), 2);
        QCOMPARE(model.totalBytes(), total);
        QVERIFY(total >= 120000 + 5000 + 64000);
    }

    void developerRowsOfARecordedMacAreAllAbsent() {
        DeveloperModel model(session("mac-studio-external-usb"));
        model.start();
        QVERIFY(waitOut(model, DeveloperModel::State::measuring));
        const auto locations = FootprintLocation::defaults("/Users/sam", Platform::macos);
        QCOMPARE(model.rows().size(), locations.size());
        for (const auto& row : model.rows()) QVERIFY2(!row.measurement, row.location.path.c_str());
        QCOMPARE(model.totalBytes(), std::int64_t(0));
    }

    void cleanupSimulatesSavesAndShowsTheHistory() {
        QTemporaryDir folder;
        writeFile(folder.filePath("cache/blob"), QByteArray(300000, 'd'));
        writeFile(folder.filePath("keep/.ssh/id_ed25519"), QByteArray(400, 'd'));
        CleanupModel model(session("linux-workstation"));
        QSignalSpy history(&model, &CleanupModel::historyChanged);
        const std::vector<std::string> paths{folder.filePath("cache").toStdString(),
                                             folder.filePath("keep").toStdString()};
        model.simulate(paths);
        QCOMPARE(model.state(), CleanupModel::State::simulating);
        QVERIFY(waitOut(model, CleanupModel::State::simulating));
        QCOMPARE(model.state(), CleanupModel::State::finished);
        QVERIFY(model.shown() && model.result());

        auto& machine = session_->machine();
        ScanProgress progress;
        const auto expected = CleanupRun::simulatePaths(
            paths, cleanupSources(machine, machine.settings().settings.projectRoots), progress, [] { return false; });
        const auto& simulation = *model.shown();
        QVERIFY(simulation.eligible == expected.simulation.eligible);
        QVERIFY(simulation.excluded == expected.simulation.excluded);
        QVERIFY(simulation.checks == expected.simulation.checks);
        QCOMPARE(simulation.volumeName, expected.simulation.volumeName);
        QCOMPARE(simulation.eligible.size() + simulation.excluded.size(), std::size_t(2));

        while (model.history().empty()) QVERIFY(history.wait(20000));
        QCOMPARE(model.history().size(), std::size_t(1));
        QCOMPARE(model.history().front().id, simulation.id);
        auto saved = CleanupHistory::open(machine.dataFolder()).all();
        QCOMPARE(saved.size(), std::size_t(1));
        QCOMPARE(saved.front().id, simulation.id);

        model.simulate({folder.filePath("cache").toStdString()});
        QVERIFY(waitOut(model, CleanupModel::State::simulating));
        while (model.history().size() < 2) QVERIFY(history.wait(20000));
        QCOMPARE(model.shown()->eligible.size() + model.shown()->excluded.size(), std::size_t(1));
        model.showSaved(1);  // newest first: the first simulation is the older one
        QCOMPARE(model.shown()->id, simulation.id);
    }

    void cleanupOfNothingMeasurableSaysWhichPath() {
        CleanupModel model(session("linux-workstation"));
        const auto gone = data_->filePath("gone").toStdString();
        model.simulate({gone});
        QVERIFY(waitOut(model, CleanupModel::State::simulating));
        QCOMPARE(model.state(), CleanupModel::State::failed);
        QVERIFY(!model.shown());
        QVERIFY(std::any_of(model.problems().begin(), model.problems().end(),
                            [&](const std::string& problem) { return problem.find(gone) != std::string::npos; }));
    }

    void monitoringHoldsTheCoresHistoryEventsAndAgent() {
        QTemporaryDir home;
        auto machine = machineWithHome(home, *data_, "mac-studio-external-usb");
        HistoryStore store(HistoryStore::defaultURL(machine.dataFolder()));
        const auto snapshot = machine.snapshot();
        const auto& volume = snapshot.volumes.front();
        for (int day = 0; day < 5; ++day) {
            auto sample = VolumeSample::of(volume, at("2026-10-28T10:00:00Z") + std::chrono::hours(24 * day));
            sample.availableBytes -= day * 4'000'000'000LL;
            store.record({sample}, sample.timestamp);
        }
        const AgentFiles files(machine.dataFolder());
        JSONHistory<MonitorEvent> events(files.events(), AgentFiles::eventLimit);
        events.append({at("2026-10-30T10:00:00Z"), MonitorEventKind::mounted, "v1", "Elements", "Volume mounted", "m",
                       std::nullopt});
        events.append({at("2026-10-31T10:00:00Z"), MonitorEventKind::alert, "r|s", "Macintosh HD", "Warning: low", "a",
                       Severity::warning});

        session_ = std::make_unique<CoreSession>(std::move(machine));
        MonitoringModel model(*session_);
        QSignalSpy changed(&model, &MonitoringModel::changed);
        model.load();
        QVERIFY(changed.wait(20000));
        QVERIFY(model.isLoaded());
        const auto expected = VolumeHistory::group(store.allSamples(), CapacityForecast::standardMinimumSpan);
        QVERIFY(model.values().volumes == expected);
        QVERIFY(expected.front().daysUntilFull.has_value());  // falling for days: a forecast
        QCOMPARE(model.values().events.size(), std::size_t(2));
        QCOMPARE(model.values().events.front().kind, MonitorEventKind::alert);  // newest first
        QCOMPARE(model.alerts().size(), std::size_t(1));
        QCOMPARE(model.mountEvents().size(), std::size_t(1));
        QCOMPARE(model.mountEvents().front().subjectName, std::string("Elements"));
        QVERIFY(!model.agentRegistered());
        QVERIFY(!model.values().runningPid);

        // Without the person's consent the agent is not registered, and the line says why.
        QSignalSpy answered(&model, &MonitoringModel::agentLineChanged);
        model.setAgentEnabled(true);
        QVERIFY(answered.wait(20000));
        QVERIFY2(QString::fromStdString(model.agentLine()).startsWith("agent: could not register"),
                 model.agentLine().c_str());
        QVERIFY(QDir(home.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).isEmpty());
    }

    void topologyAndHardwareHoldTheCoresReadings_data() {
        QTest::addColumn<QString>("machine");
        for (const char* name : {"mac-studio-external-usb", "macbook-air-m2", "linux-workstation"})
            QTest::newRow(name) << name;
    }

    void topologyAndHardwareHoldTheCoresReadings() {
        QFETCH(QString, machine);
        const auto snapshot = session(machine).machine().snapshot();
        TopologyModel topology(*session_);
        HardwareModel hardware(*session_);
        QSignalSpy topologyRead(&topology, &TopologyModel::changed);
        QSignalSpy hardwareRead(&hardware, &HardwareModel::changed);
        topology.load(snapshot);
        hardware.load(snapshot);
        QVERIFY(topology.isLoading());
        QVERIFY(topologyRead.count() > 0 || topologyRead.wait(20000));
        QVERIFY(hardwareRead.count() > 0 || hardwareRead.wait(20000));

        auto expectedMachine = recording(machine);
        const auto reading = MachineTopology::read(expectedMachine, snapshot);
        QVERIFY(topology.reading() == reading);
        QCOMPARE(topology.reading().topologies.size(), snapshot.disks.size());
        for (const auto& disk : snapshot.disks) QCOMPARE(topology.diskName(disk.id), disk.displayName());
        QCOMPARE(topology.diskName("disk99"), std::string("disk99"));
        QVERIFY(hardware.summary() == MachineHardware::read(expectedMachine, snapshot));
        // The recorded Macs hold no hardware listing: the screen says so instead of warning.
        if (machine.startsWith("mac")) QVERIFY(hardware.recordingHoldsNoListing());
        if (hardware.summary().model) QVERIFY(!hardware.recordingHoldsNoListing());
    }

    void detailsFollowTheChosenDiskOrVolume() {
        auto machine = recording("mac-studio-external-usb");
        const auto snapshot = machine.snapshot();
        const auto diagnosis = MachineDiagnosis::of(snapshot, machine.settings().settings);
        DashboardModel dashboard;
        DetailsModel details(dashboard);
        QSignalSpy changed(&details, &DetailsModel::changed);
        dashboard.setValues({snapshot, diagnosis, {{snapshot.volumes.back().id, 12.5}}, {}, {}});
        QCOMPARE(changed.count(), 1);  // a refresh updates what is shown
        QVERIFY(!details.subject());

        QVERIFY(snapshot.disks.size() >= 2);
        for (const auto& disk : snapshot.disks) {
            details.showDisk(disk.id);
            QVERIFY(details.disk() == disk);
            QVERIFY(!details.volume());
            QVERIFY(details.volumesOnDisk() == snapshot.volumesOn(disk));
            QVERIFY(details.findings() == diagnosis.report.findingsFor(FindingSubject::disk(disk.id)));
        }
        for (const auto& volume : snapshot.volumes) {
            details.showVolume(volume.id);
            QVERIFY(details.volume() == volume);
            QVERIFY(!details.disk());
            QVERIFY(details.findings() == diagnosis.report.findingsFor(FindingSubject::volume(volume.id)));
            if (volume.physicalDiskID) QVERIFY(details.diskOfVolume() == snapshot.disk(*volume.physicalDiskID));
        }
        QCOMPARE(details.daysUntilFull(), std::optional<double>(12.5));
        details.showVolume(snapshot.volumes.front().id);
        QCOMPARE(details.daysUntilFull(), std::optional<double>());
        const bool anyFindings = std::any_of(snapshot.volumes.begin(), snapshot.volumes.end(), [&](const auto& v) {
            return !diagnosis.report.findingsFor(FindingSubject::volume(v.id)).empty();
        });
        QVERIFY2(anyFindings, "the recording should have a finding about a volume");

        details.showDisk("disk99");
        QVERIFY(details.subject() && !details.disk());
        QVERIFY(details.findings().empty());
    }
};

std::unique_ptr<QObject> makeScreenModelsTest() {
    return std::make_unique<ScreenModelsTest>();
}

}  // namespace corvel::desktop::testing

#include "ScreenModelsTest.moc"
