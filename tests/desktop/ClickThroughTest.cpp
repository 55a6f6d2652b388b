#include "DesktopTests.h"
#include "cleanup/CleanupModel.h"
#include "dashboard/DashboardModel.h"
#include "details/DetailsModel.h"
#include "diagnostics/DiagnosticsModel.h"
#include "diagnostics/DiagnosticsView.h"
#include "diskops/DiskOpsModel.h"
#include "diskops/DiskOpsView.h"
#include "shell/CommandPalette.h"
#include "shell/CoreSession.h"
#include "shell/MainWindow.h"
#include "shell/Refresher.h"
#include "shell/Screenshots.h"
#include "shell/StorageScreens.h"
#include "shell/ToolScreens.h"
#include "space/SpaceModel.h"
#include "space/SpaceView.h"
#include "widgets/TreemapWidget.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeWidget>

namespace corvel::desktop::testing {

class ClickThroughTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyScreenOpensWithoutAWarning() {
        WarningCollector warnings;
        QTemporaryDir data;
        QTemporaryDir folder;
        for (const char* name : {"a/one.bin", "b/two.bin"}) writeFile(folder.filePath(name), QByteArray(200000, 'x'));
        CoreSession session(recordedMachine("mac-studio-external-usb", data));
        MainWindow window(session);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QSignalSpy refreshed(&window.refresher(), &Refresher::finished);
        window.refresher().refresh();
        QVERIFY(refreshed.wait(20000));

        auto* sidebar = window.sidebar();
        const QStringList tools{"Disk Operations", "Docker",   "Processes", "Migration",
                                "Performance",     "Settings", "About"};
        const QStringList names =
            QStringList{"Dashboard", "Diagnostics", "Space",  "Developer storage", "Cleanup", "Monitoring",
                        "Topology",  "This Mac",    "Details"} +
            tools;
        QCOMPARE(window.screenNames(), names);
        QSignalSpy toolsChanged(&window.tools().diskOps(), &DiskOpsModel::changed);
        while (window.tools().isBusy()) QVERIFY(toolsChanged.wait(20000));
        for (int i = sidebar->count() - 1; i >= 0; --i) {
            const QRect row = sidebar->visualItemRect(sidebar->item(i));
            QTest::mouseClick(sidebar->viewport(), Qt::LeftButton, {}, row.center());
            QCOMPARE(window.currentScreen(), i);
            QVERIFY(window.screen(i)->isVisible());
        }
        QTest::keyClick(&window, Qt::Key_3, Qt::ControlModifier);
        QCOMPARE(window.currentScreen(), 2);

        // An insight's action goes to the screen that deals with it.
        window.showScreen(0);
        const auto buttons = window.screen(0)->findChildren<QPushButton*>();
        const auto action = std::find_if(buttons.begin(), buttons.end(), [](auto* b) { return b->isEnabled(); });
        if (action != buttons.end()) {
            QTest::mouseClick(*action, Qt::LeftButton);
            QVERIFY(window.currentScreen() != 0);
        }

        window.showScreen(1);
        auto* diagnosticsView = dynamic_cast<DiagnosticsView*>(window.screen(1));
        QVERIFY(diagnosticsView);
        diagnosticsView->severityFilter()->setCurrentIndex(2);  // the second most serious
        QCOMPARE(window.diagnostics().severityFilter(), std::optional<Severity>(Severity::warning));

        window.showScreen(2);
        auto* spaceView = dynamic_cast<SpaceView*>(window.screen(2));
        QVERIFY(spaceView);
        window.space().setFolder(folder.path().toStdString());
        QSignalSpy state(&window.space(), &SpaceModel::stateChanged);
        QTest::mouseClick(spaceView->scanButton(), Qt::LeftButton);
        while (window.space().state() == SpaceModel::State::scanning) QVERIFY(state.wait(20000));
        QCOMPARE(window.space().state(), SpaceModel::State::finished);
        QVERIFY(spaceView->tree()->topLevelItemCount() == 1);
        QCOMPARE(spaceView->treemap()->node(), &window.space().root());
        QCOMPARE(spaceView->treemap()->tiles().size(), window.space().root().children.size());

        // Two items of the scan go to the cleanup simulation.
        spaceView->tree()->clearSelection();
        QVERIFY(!spaceView->simulateButton()->isEnabled());
        auto* top = spaceView->tree()->topLevelItem(0);
        QCOMPARE(top->childCount(), 2);
        top->child(0)->setSelected(true);
        top->child(1)->setSelected(true);
        QVERIFY(spaceView->simulateButton()->isEnabled());
        QSignalSpy simulated(&window.storage().cleanup(), &CleanupModel::stateChanged);
        QTest::mouseClick(spaceView->simulateButton(), Qt::LeftButton);
        QCOMPARE(window.screenNames().at(window.currentScreen()), QStringLiteral("Cleanup"));
        while (window.storage().cleanup().state() == CleanupModel::State::simulating) QVERIFY(simulated.wait(20000));
        QCOMPARE(window.storage().cleanup().state(), CleanupModel::State::finished);
        QCOMPARE(window.storage().cleanup().selection().size(), std::size_t(2));

        // Every screen from the palette, by typing its name and pressing Enter.
        for (int i = 0; i < names.size(); ++i) {
            window.showScreen(i == 0 ? 1 : 0);
            QTest::keyClick(&window, Qt::Key_K, Qt::ControlModifier);
            auto& palette = window.commandPalette();
            QVERIFY(palette.isVisible());
            QTest::keyClicks(palette.field(), names[i]);
            QTest::keyClick(palette.field(), Qt::Key_Return);
            QVERIFY(!palette.isVisible());
            QCOMPARE(window.currentScreen(), i);
        }
        // A disk by its device id opens its details.
        const auto& disk = window.dashboard().snapshot().disks.back();
        window.openPalette();
        QTest::keyClicks(window.commandPalette().field(), QString::fromStdString(disk.id));
        QTest::keyClick(window.commandPalette().field(), Qt::Key_Return);
        QCOMPARE(window.screenNames().at(window.currentScreen()), QStringLiteral("Details"));
        QVERIFY(window.storage().details().disk() == disk);

        // A volume's name on the dashboard opens its details too.
        window.showScreen(0);
        const auto labels = window.screen(0)->findChildren<QLabel*>();
        const auto volumeLink = std::find_if(labels.begin(), labels.end(), [](QLabel* label) {
            return label->text().contains(QStringLiteral("href=\"volume:"));
        });
        QVERIFY(volumeLink != labels.end());
        const QString href = (*volumeLink)->text().section(QLatin1Char('"'), 1, 1);
        Q_EMIT(*volumeLink)->linkActivated(href);
        QCOMPARE(window.screenNames().at(window.currentScreen()), QStringLiteral("Details"));
        QCOMPARE(QString::fromStdString(window.storage().details().volume()->id), href.section(QLatin1Char(':'), 1));

        QTRY_VERIFY_WITH_TIMEOUT(window.storage().isReady(), 20000);
        QTemporaryDir pictures;
        const auto written = Screenshots::writeAll(window, pictures.path());
        QCOMPARE(written.size(), window.screenNames().size());

        // Disk operations: choosing an object and checking an operation shows the preflight; no
        // run is ever asked for here.
        const int disks = static_cast<int>(window.screenNames().indexOf("Disk Operations"));
        window.showScreen(disks);
        auto* diskOps = dynamic_cast<DiskOpsView*>(window.screen(disks));
        QVERIFY(diskOps);
        diskOps->setConfirmation([](QWidget*, const QString&) { return false; });
        QVERIFY(diskOps->objects()->count() > 0);
        diskOps->objects()->setCurrentRow(diskOps->objects()->count() - 1);
        QCOMPARE(window.tools().diskOps().selected(), diskOps->objects()->count() - 1);
        QCoreApplication::processEvents();
        const auto checks = window.screen(disks)->findChildren<QPushButton*>();
        const auto check = std::find_if(checks.begin(), checks.end(), [](auto* b) {
            return b->isEnabled() && b->text().endsWith(QStringLiteral("Check…"));
        });
        if (check != checks.end()) {
            QTest::mouseClick(*check, Qt::LeftButton);
            while (window.tools().diskOps().isBusy()) QVERIFY(toolsChanged.wait(20000));
            QVERIFY(window.tools().diskOps().report());
        }
        QVERIFY(window.tools().diskOps().log().empty());
        QVERIFY2(warnings.warnings().isEmpty(), qPrintable(warnings.warnings().join("\n")));
    }
};

std::unique_ptr<QObject> makeClickThroughTest() {
    return std::make_unique<ClickThroughTest>();
}

}  // namespace corvel::desktop::testing

#include "ClickThroughTest.moc"
