#include "DesktopTests.h"
#include "agent/AgentRecords.h"
#include "common/JSONHistory.h"
#include "consent/ConsentGate.h"
#include "dashboard/DashboardModel.h"
#include "diagnostics/DiagnosticsModel.h"
#include "machine/RefreshCycle.h"
#include "settings/ConsentModel.h"
#include "settings/ConsentSheet.h"
#include "settings/SettingsView.h"
#include "shell/CoreSession.h"
#include "shell/Refresher.h"
#include "tray/TrayItem.h"
#include "tray/TrayModel.h"
#include "widgets/Palette.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>

namespace corvel::desktop::testing {
namespace {

ConsentLedger ledgerOnDisk(Machine& machine) {
    return ConsentLedger::load(ConsentLedger::defaultURL(machine.dataFolder()));
}

std::vector<ConsentScope> granted(const ConsentLedger& ledger) {
    std::vector<ConsentScope> result;
    for (const auto scope : allCases<ConsentScope>())
        if (ledger.isGranted(scope)) result.push_back(scope);
    return result;
}

QPushButton* button(QWidget& parent, const QString& text) {
    for (auto* candidate : parent.findChildren<QPushButton*>())
        if (candidate->text() == text) return candidate;
    return nullptr;
}

}  // namespace

class ConsentTrayTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Every decision lands in the ledger on disk, which is what the core's gate reads.
    void consentDecisionsAreRecorded() {
        QTemporaryDir data;
        auto machine = recordedMachine("macbook-air-m2", data);
        ConsentModel model(machine);
        QVERIFY(model.needsDecision());
        QVERIFY(consentRefusal(machine, ConsentScope::benchmark));

        using S = ConsentScope;
        QVERIFY(model.accept({S::benchmark}));
        QVERIFY(!model.needsDecision());
        QVERIFY((granted(ledgerOnDisk(machine)) == std::vector{S::readStorage, S::benchmark}));
        QVERIFY(!consentRefusal(machine, S::benchmark));
        QVERIFY(model.setScope(S::diskOperations, true));
        QVERIFY(model.setScope(S::benchmark, false));
        QVERIFY(ledgerOnDisk(machine).isGranted(S::diskOperations));
        QVERIFY(!ledgerOnDisk(machine).isGranted(S::benchmark));
        // Reading storage is required: switching it off alone is refused and changes nothing.
        QVERIFY(!model.setScope(S::readStorage, false));
        QVERIFY(!model.error().empty());
        QVERIFY(ledgerOnDisk(machine).isGranted(S::readStorage));

        QVERIFY(model.withdrawAll());
        QVERIFY(model.needsDecision());
        const auto ledger = ledgerOnDisk(machine);
        QCOMPARE(ledger.state(), ConsentState::withdrawn);
        QCOMPARE(ledger.records.size(), std::size_t(4));
        QVERIFY(granted(ledger).empty());
    }

    void sheetAndSettingsRecordWhatThePersonChose() {
        QTemporaryDir data;
        auto machine = recordedMachine("macbook-air-m2", data);
        ConsentModel model(machine);
        ConsentSheet sheet(model);
        QVERIFY(sheet.box(ConsentScope::readStorage)->isChecked());
        QVERIFY(!sheet.box(ConsentScope::readStorage)->isEnabled());
        for (const auto scope : allCases<ConsentScope>())
            if (!isRequired(scope)) QVERIFY(!sheet.box(scope)->isChecked());
        sheet.box(ConsentScope::processControl)->setChecked(true);
        QSignalSpy declined(&sheet, &ConsentSheet::declined);
        QTest::mouseClick(button(sheet, "Accept"), Qt::LeftButton);
        QCOMPARE(sheet.result(), int(QDialog::Accepted));
        QCOMPARE(declined.count(), 0);
        QVERIFY(ledgerOnDisk(machine).isGranted(ConsentScope::processControl));
        QVERIFY(!ledgerOnDisk(machine).isGranted(ConsentScope::benchmark));

        SettingsView settings(model);
        QVERIFY(settings.box(ConsentScope::processControl)->isChecked());
        settings.box(ConsentScope::benchmark)->click();
        QVERIFY(ledgerOnDisk(machine).isGranted(ConsentScope::benchmark));
        QStringList asked;
        bool answer = false;
        settings.setConfirmation([&](QWidget*, const QString& question) {
            asked << question;
            return answer;
        });
        QTest::mouseClick(settings.withdrawButton(), Qt::LeftButton);  // declined: nothing changes
        QCOMPARE(asked.size(), 1);
        QCOMPARE(ledgerOnDisk(machine).state(), ConsentState::accepted);
        answer = true;
        QTest::mouseClick(settings.withdrawButton(), Qt::LeftButton);
        QCOMPARE(ledgerOnDisk(machine).state(), ConsentState::withdrawn);
        for (const auto scope : allCases<ConsentScope>()) QVERIFY(!settings.box(scope)->isChecked());
        QVERIFY(!settings.withdrawButton()->isEnabled());

        ConsentSheet again(model);
        QSignalSpy quit(&again, &ConsentSheet::declined);
        QTest::mouseClick(button(again, "Quit"), Qt::LeftButton);
        QCOMPARE(quit.count(), 1);
        QCOMPARE(ledgerOnDisk(machine).records.size(), std::size_t(3));  // quitting records nothing
    }

    void trayShowsWorstSeverityVolumesAndLastAlerts() {
        QTemporaryDir data;
        // Seven events by the agent: the tray keeps the five newest alerts, newest first.
        JSONHistory<MonitorEvent> events(AgentFiles(data.path().toStdString()).events(), AgentFiles::eventLimit);
        for (int i = 0; i < 7; ++i) {
            MonitorEvent event;
            event.timestamp = ISO8601::parse("2026-03-0" + std::to_string(i + 1) + "T08:00:00Z").value();
            event.kind = i == 3 ? MonitorEventKind::mounted : MonitorEventKind::alert;
            event.subjectName = "Volume " + std::to_string(i);
            event.title = "Title " + std::to_string(i);
            events.append(event);
        }
        CoreSession session(recordedMachine("mac-studio-external-usb", data));
        DashboardModel dashboard;
        DiagnosticsModel diagnostics;
        TrayModel model(dashboard, session.machine());
        TrayItem item(model);
        QVERIFY(!model.isLoaded());
        QCOMPARE(item.icon().pixmap(32).toImage().pixelColor(24, 7), Palette::tone(Tone::muted));  // on the ring
        Refresher refresher(session, dashboard, diagnostics);
        QSignalSpy finished(&refresher, &Refresher::finished);
        refresher.refresh();
        QVERIFY(finished.wait(20000));

        QVERIFY(model.severity() == dashboard.overall().severity);
        QCOMPARE(model.volumeLines().size(), static_cast<qsizetype>(dashboard.snapshot().volumes.size()));
        QVERIFY(
            model.volumeLines().first().contains(QString::fromStdString(dashboard.snapshot().volumes.front().name)));
        QStringList subjects;
        for (const auto& alert : model.alerts()) subjects << QString::fromStdString(alert.subjectName);
        QCOMPARE(subjects, (QStringList{"Volume 6", "Volume 5", "Volume 4", "Volume 2", "Volume 1"}));

        QStringList menu;
        for (auto* action : item.menu()->actions())
            if (!action->isSeparator()) menu << action->text();
        for (const auto& line : model.volumeLines() + model.alertLines() + QStringList{"Open Velmora", "Refresh"})
            QVERIFY2(menu.contains(line), qPrintable(line));
        QSignalSpy refresh(&item, &TrayItem::refreshRequested);
        QSignalSpy open(&item, &TrayItem::openRequested);
        for (auto* action : item.menu()->actions()) {
            if (action->text() == "Refresh" || action->text() == "Open Velmora") action->trigger();
        }
        QCOMPARE(refresh.count(), 1);
        QCOMPARE(open.count(), 1);
        // The mark is redrawn in the worst severity's colour once the machine is read.
        QCOMPARE(item.icon().pixmap(32).toImage().pixelColor(24, 7), Palette::tone(toneOf(model.severity())));
    }
};

std::unique_ptr<QObject> makeConsentTrayTest() {
    return std::make_unique<ConsentTrayTest>();
}

}  // namespace corvel::desktop::testing

#include "ConsentTrayTest.moc"
