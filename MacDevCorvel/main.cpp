// velmora-desktop: the desktop application. Reads its options before any window exists, so that
// the agent's start flags and bad options answer with one line and no display.
#include "agent/AgentSetup.h"
#include "common/Text.h"
#include "consent/ConsentGate.h"
#include "consent/ConsentLedger.h"
#include "machine/Machine.h"
#include "settings/ConsentModel.h"
#include "settings/ConsentSheet.h"
#include "shell/AppOptions.h"
#include "shell/CoreSession.h"
#include "shell/MainWindow.h"
#include "shell/Refresher.h"
#include "shell/Screenshots.h"
#include "shell/ToolScreens.h"
#include "space/SpaceModel.h"
#include "tray/TrayItem.h"
#include "widgets/BrandIcon.h"

#include <QApplication>
#include <QSystemTrayIcon>
#include <iostream>

using namespace corvel;
using namespace corvel::desktop;

namespace {

// The start flags answer with one line and status 0, whatever the service says, as the command
// line's do.
int changeAgent(Machine& machine, bool registering) {
    const char* verb = registering ? "register" : "unregister";
    try {
        // Stopping the agent never needs permission; starting it at login does.
        const auto ledger = ConsentLedger::load(ConsentLedger::defaultURL(machine.dataFolder()));
        if (const auto refusal = ConsentGate::refusal(ledger, ConsentScope::backgroundAgent); refusal && registering) {
            std::cerr << "agent: could not " << verb << ": " << terminalSafe(*refusal) << '\n';
            return 0;
        }
        const auto self = AgentSetup::runningProgram();
        const auto velmora = AgentSetup::commandLineBeside(self);
        if (!velmora) {
            std::cerr << "agent: could not " << verb << ": no velmora command line beside " << terminalSafe(self)
                      << '\n';
            return 0;
        }
        std::cout << terminalSafe(AgentSetup::change(machine, *velmora, registering).line) << std::endl;
    } catch (const std::exception& error) {
        std::cerr << "agent: could not " << verb << ": " << terminalSafe(error.what()) << '\n';
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const auto parsed = AppOptions::parse(std::vector<std::string>(argv + 1, argv + argc));
    if (parsed.error) {
        std::cerr << "velmora-desktop: " << terminalSafe(*parsed.error) << '\n';
        return 2;
    }
    const auto& options = parsed.options;
    if (options.help) {
        std::cout << AppOptions::usage();
        return 0;
    }
    MachineOptions machineOptions;
    if (options.replay) machineOptions.replay = *options.replay;
    machineOptions.now = options.now;
    if (options.dataDir) machineOptions.dataFolder = *options.dataDir;
    std::optional<Machine> machine;
    try {
        machine.emplace(Machine::open(machineOptions));
    } catch (const MachineError& error) {
        std::cerr << "velmora-desktop: " << terminalSafe(error.what()) << '\n';
        return 2;
    }
    if (options.agent != AppOptions::AgentChange::none)
        return changeAgent(*machine, options.agent == AppOptions::AgentChange::registerAgent);

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Velmora"));
    QApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));
    QApplication::setWindowIcon(BrandIcon::application());
    CoreSession session(std::move(*machine));
    MainWindow window(session);
    if (options.spaceFolder) {
        window.space().setFolder(*options.spaceFolder);
        window.space().start();
    }
    window.show();
    window.refresher().refresh();

    TrayItem tray(window.tools().tray());
    QObject::connect(&tray, &TrayItem::openRequested, &window, [&window] {
        window.showNormal();
        window.raise();
        window.activateWindow();
    });
    QObject::connect(&tray, &TrayItem::refreshRequested, &window.refresher(), &Refresher::refresh);
    QObject::connect(&tray, &TrayItem::quitRequested, &app, &QApplication::quit);
    if (QSystemTrayIcon::isSystemTrayAvailable()) tray.show();

    // First start (or changed terms, or a withdrawal): the person decides before anything acts.
    // Pictures of the screens are taken without one.
    if (window.tools().consent().needsDecision() && !options.screenshots) {
        auto* sheet = new ConsentSheet(window.tools().consent(), &window);
        sheet->setAttribute(Qt::WA_DeleteOnClose);
        QObject::connect(sheet, &ConsentSheet::declined, &app, &QApplication::quit, Qt::QueuedConnection);
        sheet->open();
    }
    int status = 0;
    if (options.screenshots) {
        Screenshots::whenReady(window, QString::fromStdString(*options.screenshots),
                               [&status](const QStringList& files) {
                                   for (const auto& file : files) std::cout << file.toStdString() << '\n';
                                   if (files.isEmpty()) status = 1;
                                   QApplication::quit();
                               });
    }
    const int result = QApplication::exec();
    return result != 0 ? result : status;
}
