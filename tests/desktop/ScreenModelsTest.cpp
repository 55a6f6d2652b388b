#include "DesktopTests.h"
#include "dashboard/DashboardModel.h"
#include "diagnostics/DiagnosticsModel.h"
#include "insights/InsightEngine.h"
#include "machine/MachineInsights.h"
#include "machine/RefreshCycle.h"
#include "monitoring/HistoryStore.h"
#include "shell/CoreSession.h"
#include "shell/Refresher.h"
#include "space/ScanReporting.h"
#include "space/SpaceModel.h"
#include "space/SpaceScanner.h"

#include <QFile>
#include <QSignalSpy>
#include <algorithm>

namespace corvel::desktop::testing {
namespace {

void writeFile(const QString& path, qint64 size) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write(QByteArray(size, 'v')) == size);
}

bool waitFor(SpaceModel& model) {
    QSignalSpy spy(&model, &SpaceModel::stateChanged);
    while (model.state() == SpaceModel::State::scanning)
        if (!spy.wait(20000)) return false;
    return true;
}

}  // namespace

class ScreenModelsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The models must hold what the core computes for the same recording, not a reading of it.
    void refreshFillsModelsWithTheCoresValues_data() {
        QTest::addColumn<QString>("machine");
        for (const char* name :
             {"mac-studio-external-usb", "macbook-air-m2", "mac-docker-running", "linux-workstation"})
            QTest::newRow(name) << name;
    }

    void refreshFillsModelsWithTheCoresValues() {
        QFETCH(QString, machine);
        QTemporaryDir data;
        CoreSession session(recordedMachine(machine.toStdString(), data));
        DashboardModel dashboard;
        DiagnosticsModel diagnostics;
        Refresher refresher(session, dashboard, diagnostics);
        QSignalSpy finished(&refresher, &Refresher::finished);
        QSignalSpy changed(&dashboard, &DashboardModel::changed);
        refresher.refresh();
        refresher.refresh();  // while one runs, asking again does nothing
        QVERIFY(finished.wait(20000));
        QCOMPARE(changed.count(), 1);

        auto expectedMachine = recordedMachine(machine.toStdString(), data);
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
        QTemporaryDir data;
        auto machine = recordedMachine("mac-studio-external-usb", data);
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
        QTemporaryDir data;
        QTemporaryDir folder;
        writeFile(folder.filePath("big/movie.mov"), 900000);
        writeFile(folder.filePath("big/deeper/archive.zip"), 400000);
        writeFile(folder.filePath("small/note.txt"), 3000);
        CoreSession session(recordedMachine("linux-workstation", data));
        SpaceModel model(session);
        model.setFolder(folder.path().toStdString());
        model.start();
        QCOMPARE(model.state(), SpaceModel::State::scanning);
        QVERIFY(waitFor(model));
        QCOMPARE(model.state(), SpaceModel::State::finished);
        QVERIFY(model.progress().finished);
        QVERIFY(model.report());

        ScanProgress progress;
        const auto tree = SpaceScanner::scan(folder.path().toStdString(), {}, progress, [] { return false; });
        const auto report = ScanReporting::report(tree, session.machine().catalog());
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
        QTemporaryDir data;
        CoreSession session(recordedMachine("linux-workstation", data));
        SpaceModel model(session);
        model.setFolder(data.filePath("gone").toStdString());
        model.start();
        QVERIFY(waitFor(model));
        QCOMPARE(model.state(), SpaceModel::State::failed);
        QVERIFY2(QString::fromStdString(model.error()).contains(data.filePath("gone")), model.error().c_str());
        QVERIFY(model.root().children.empty());
    }
};

std::unique_ptr<QObject> makeScreenModelsTest() {
    return std::make_unique<ScreenModelsTest>();
}

}  // namespace corvel::desktop::testing

#include "ScreenModelsTest.moc"
