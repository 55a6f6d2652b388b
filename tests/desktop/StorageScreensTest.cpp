// The models of the screens after Space, each on a recorded machine (or a temporary home) against
// what the core computes for the same input.
#include "DesktopTests.h"
#include "agent/AgentRecords.h"
#include "cleanup/CleanupHistory.h"
#include "cleanup/CleanupModel.h"
#include "common/JSONHistory.h"
#include "dashboard/DashboardModel.h"
#include "details/DetailsModel.h"
#include "developer/DeveloperModel.h"
#include "hardware/HardwareModel.h"
#include "machine/CleanupReading.h"
#include "machine/MachineDiagnosis.h"
#include "machine/MachineHardware.h"
#include "machine/MachineTopology.h"
#include "monitoring/CapacityForecast.h"
#include "monitoring/HistoryStore.h"
#include "monitoring/MonitoringModel.h"
#include "shell/CoreSession.h"
#include "space/DirectorySizer.h"
#include "topology/TopologyModel.h"

#include <QFile>
#include <QSignalSpy>
#include <algorithm>

namespace corvel::desktop::testing {
namespace {

void writeFile(const QString& path, qint64 size) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write(QByteArray(size, 'd')) == size);
}

// This machine, with `home` as the person's home: nothing of the real home is read or written.
Machine machineWithHome(const QTemporaryDir& home, const QTemporaryDir& data, const char* replay = nullptr) {
    MachineOptions options;
    if (replay) options.replay = fixtureMachine(replay);
    options.dataFolder = data.path().toStdString();
    options.environment = {{"HOME", home.path().toStdString()}, {"PATH", "/usr/bin:/bin"}};
    return Machine::open(options);
}

template <class Model, class Busy>
bool waitUntil(Model& model, void (Model::*signal)(), Busy busy) {
    QSignalSpy spy(&model, signal);
    while (busy())
        if (!spy.wait(20000)) return false;
    return true;
}

TimePoint at(const char* iso) {
    return *ISO8601::parse(iso);
}

}  // namespace

class StorageScreensTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void developerRowsAreTheCoresLocationsAndSizes() {
        QTemporaryDir home;
        QTemporaryDir data;
        writeFile(home.filePath(".npm/_cacache/one"), 120000);
        writeFile(home.filePath(".npm/_cacache/two"), 5000);
        writeFile(home.filePath(".cargo/registry/index"), 64000);
        CoreSession session(machineWithHome(home, data));
        DeveloperModel model(session);
        model.start();
        QCOMPARE(model.state(), DeveloperModel::State::measuring);
        QVERIFY(waitUntil(model, &DeveloperModel::stateChanged,
                          [&] { return model.state() == DeveloperModel::State::measuring; }));
        QCOMPARE(model.state(), DeveloperModel::State::finished);

        auto& machine = session.machine();
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
        QTemporaryDir data;
        CoreSession session(recordedMachine("mac-studio-external-usb", data));
        DeveloperModel model(session);
        model.start();
        QVERIFY(waitUntil(model, &DeveloperModel::stateChanged,
                          [&] { return model.state() == DeveloperModel::State::measuring; }));
        const auto locations = FootprintLocation::defaults("/Users/sam", Platform::macos);
        QCOMPARE(model.rows().size(), locations.size());
        for (const auto& row : model.rows()) QVERIFY2(!row.measurement, row.location.path.c_str());
        QCOMPARE(model.totalBytes(), std::int64_t(0));
    }

    void cleanupSimulatesSavesAndShowsTheHistory() {
        QTemporaryDir data;
        QTemporaryDir folder;
        writeFile(folder.filePath("cache/blob"), 300000);
        writeFile(folder.filePath("keep/.ssh/id_ed25519"), 400);
        CoreSession session(recordedMachine("linux-workstation", data));
        CleanupModel model(session);
        QSignalSpy history(&model, &CleanupModel::historyChanged);
        const std::vector<std::string> paths{folder.filePath("cache").toStdString(),
                                             folder.filePath("keep").toStdString()};
        model.simulate(paths);
        QCOMPARE(model.state(), CleanupModel::State::simulating);
        QVERIFY(waitUntil(model, &CleanupModel::stateChanged,
                          [&] { return model.state() == CleanupModel::State::simulating; }));
        QCOMPARE(model.state(), CleanupModel::State::finished);
        QVERIFY(model.shown() && model.result());

        auto& machine = session.machine();
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
        QVERIFY(waitUntil(model, &CleanupModel::stateChanged,
                          [&] { return model.state() == CleanupModel::State::simulating; }));
        while (model.history().size() < 2) QVERIFY(history.wait(20000));
        QCOMPARE(model.shown()->eligible.size() + model.shown()->excluded.size(), std::size_t(1));
        model.showSaved(1);  // newest first: the first simulation is the older one
        QCOMPARE(model.shown()->id, simulation.id);
    }

    void cleanupOfNothingMeasurableSaysWhichPath() {
        QTemporaryDir data;
        CoreSession session(recordedMachine("linux-workstation", data));
        CleanupModel model(session);
        const auto gone = data.filePath("gone").toStdString();
        model.simulate({gone});
        QVERIFY(waitUntil(model, &CleanupModel::stateChanged,
                          [&] { return model.state() == CleanupModel::State::simulating; }));
        QCOMPARE(model.state(), CleanupModel::State::failed);
        QVERIFY(!model.shown());
        QVERIFY(std::any_of(model.problems().begin(), model.problems().end(),
                            [&](const std::string& problem) { return problem.find(gone) != std::string::npos; }));
    }

    void monitoringHoldsTheCoresHistoryEventsAndAgent() {
        QTemporaryDir home;
        QTemporaryDir data;
        auto machine = machineWithHome(home, data, "mac-studio-external-usb");
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

        CoreSession session(std::move(machine));
        MonitoringModel model(session);
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
        QTemporaryDir data;
        CoreSession session(recordedMachine(machine.toStdString(), data));
        const auto snapshot = session.machine().snapshot();
        TopologyModel topology(session);
        HardwareModel hardware(session);
        QSignalSpy topologyRead(&topology, &TopologyModel::changed);
        QSignalSpy hardwareRead(&hardware, &HardwareModel::changed);
        topology.load(snapshot);
        hardware.load(snapshot);
        QVERIFY(topology.isLoading());
        QVERIFY(topologyRead.count() > 0 || topologyRead.wait(20000));
        QVERIFY(hardwareRead.count() > 0 || hardwareRead.wait(20000));

        auto expectedMachine = recordedMachine(machine.toStdString(), data);
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
        QTemporaryDir data;
        auto machine = recordedMachine("mac-studio-external-usb", data);
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

std::unique_ptr<QObject> makeStorageScreensTest() {
    return std::make_unique<StorageScreensTest>();
}

}  // namespace corvel::desktop::testing

#include "StorageScreensTest.moc"
