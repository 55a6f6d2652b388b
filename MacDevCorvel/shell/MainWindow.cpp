#include "shell/MainWindow.h"

#include "common/ISO8601.h"
#include "dashboard/DashboardModel.h"
#include "dashboard/DashboardView.h"
#include "diagnostics/DiagnosticsModel.h"
#include "diagnostics/DiagnosticsView.h"
#include "shell/CommandPalette.h"
#include "shell/CoreSession.h"
#include "shell/Refresher.h"
#include "shell/StorageScreens.h"
#include "shell/ToolScreens.h"
#include "space/SpaceModel.h"
#include "space/SpaceView.h"
#include "widgets/ScreenParts.h"

#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace corvel::desktop {

MainWindow::MainWindow(CoreSession& session, QWidget* parent)
    : QMainWindow(parent),
      session_(session),
      dashboard_(new DashboardModel(this)),
      diagnostics_(new DiagnosticsModel(this)),
      space_(new SpaceModel(session, this)),
      refresher_(new Refresher(session, *dashboard_, *diagnostics_, this)),
      tools_(new ToolScreens(session, *dashboard_, this)),
      sidebar_(new QListWidget),
      stack_(new QStackedWidget),
      refresh_(new QPushButton(QStringLiteral("Refresh"))),
      source_(new QLabel) {
    setWindowTitle(QStringLiteral("Velmora"));
    resize(1100, 760);

    auto* central = new QWidget;
    auto* columns = new QHBoxLayout(central);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(0);

    auto* side = new QWidget;
    side->setFixedWidth(190);
    side->setBackgroundRole(QPalette::AlternateBase);
    side->setAutoFillBackground(true);
    auto* sideLayout = new QVBoxLayout(side);
    sideLayout->setContentsMargins(10, 14, 10, 12);
    auto* brand = ScreenParts::title(QStringLiteral("Velmora"));
    sideLayout->addWidget(brand);
    sidebar_->setFrameShape(QFrame::NoFrame);
    sidebar_->setAccessibleName(QStringLiteral("Screens"));
    sidebar_->setBackgroundRole(QPalette::AlternateBase);
    sidebar_->setSpacing(2);
    sideLayout->addWidget(sidebar_, 1);
    source_->setWordWrap(true);
    source_->setTextFormat(Qt::PlainText);
    source_->setForegroundRole(QPalette::PlaceholderText);
    sideLayout->addWidget(source_);
    refresh_->setToolTip(QStringLiteral("Read the machine again (Ctrl+R)"));
    sideLayout->addWidget(refresh_);

    columns->addWidget(side);
    columns->addWidget(stack_, 1);
    setCentralWidget(central);

    auto* dashboardView = new DashboardView(
        *dashboard_, [this](Insight::Destination destination) { return screenFor(destination) >= 0; });
    addScreen(QStringLiteral("Dashboard"), dashboardView);
    addScreen(QStringLiteral("Diagnostics"), new DiagnosticsView(*diagnostics_));
    auto* spaceView = new SpaceView(*space_);
    addScreen(QStringLiteral("Space"), spaceView);
    storage_ = new StorageScreens(session, *dashboard_,
                                  {[this](const QString& name, QWidget* view) { addScreen(name, view); },
                                   [this](QWidget* view) { showScreen(stack_->indexOf(view)); }},
                                  this);
    spaceView->onSimulate([this](std::vector<std::string> paths) { storage_->simulateCleanup(std::move(paths)); });
    connect(dashboardView, &DashboardView::detailsRequested, this, [this](const QString& target) {
        const auto id = target.section(QLatin1Char(':'), 1).toStdString();
        target.startsWith(QLatin1String("disk:")) ? storage_->showDisk(id) : storage_->showVolume(id);
    });
    palette_ = new CommandPalette(this);
    auto* paletteKey = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_K), this);
    connect(paletteKey, &QShortcut::activated, this, &MainWindow::openPalette);
    tools_->addScreens([this](const QString& name, QWidget* view) { addScreen(name, view); });

    connect(sidebar_, &QListWidget::currentRowChanged, stack_, &QStackedWidget::setCurrentIndex);
    connect(dashboardView, &DashboardView::insightActionRequested, this,
            [this](Insight::Destination destination) { showScreen(screenFor(destination)); });
    connect(refresh_, &QPushButton::clicked, refresher_, &Refresher::refresh);
    connect(refresher_, &Refresher::started, this, [this] {
        refresh_->setEnabled(false);
        source_->setText(QStringLiteral("Reading the machine…"));
    });
    connect(refresher_, &Refresher::finished, this, &MainWindow::refreshed);
    connect(refresher_, &Refresher::finished, storage_, &StorageScreens::refreshed);
    auto* refreshKey = new QShortcut(QKeySequence::Refresh, this);
    connect(refreshKey, &QShortcut::activated, refresher_, &Refresher::refresh);
    auto* ctrlR = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_R), this);
    connect(ctrlR, &QShortcut::activated, refresher_, &Refresher::refresh);
    for (int i = 0; i < stack_->count() && i < 9; ++i) {
        auto* key = new QShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + i)), this);
        connect(key, &QShortcut::activated, this, [this, i] { showScreen(i); });
    }
    showScreen(0);
    space_->setFolder(session_.machine().home());
}

void MainWindow::addScreen(const QString& name, QWidget* view) {
    view->setObjectName(name);
    sidebar_->addItem(name);
    stack_->addWidget(view);
}

QStringList MainWindow::screenNames() const {
    QStringList names;
    for (int i = 0; i < sidebar_->count(); ++i) names << sidebar_->item(i)->text();
    return names;
}

void MainWindow::showScreen(int index) {
    if (index < 0 || index >= stack_->count()) return;
    sidebar_->setCurrentRow(index);
}

int MainWindow::currentScreen() const {
    return stack_->currentIndex();
}

QWidget* MainWindow::screen(int index) const {
    return stack_->widget(index);
}

int MainWindow::screenFor(Insight::Destination destination) const {
    switch (destination) {
        case Insight::Destination::space:
            return static_cast<int>(screenNames().indexOf(QStringLiteral("Space")));
        case Insight::Destination::health:
            return static_cast<int>(screenNames().indexOf(QStringLiteral("Diagnostics")));
        case Insight::Destination::cleanup:
            return static_cast<int>(screenNames().indexOf(QStringLiteral("Cleanup")));
        case Insight::Destination::topology:
            return static_cast<int>(screenNames().indexOf(QStringLiteral("Topology")));
        default:
            return -1;
    }
}

void MainWindow::openPalette() {
    std::vector<PaletteEntry> entries;
    const auto names = screenNames();
    for (int i = 0; i < names.size(); ++i)
        entries.push_back({QStringLiteral("Screen"), names[i], [this, i] { showScreen(i); }});
    entries.push_back({QStringLiteral("Action"), QStringLiteral("Refresh"), [this] { refresher_->refresh(); }});
    for (auto& entry : storage_->paletteEntries()) entries.push_back(std::move(entry));
    palette_->present(std::move(entries));
}

void MainWindow::refreshed() {
    refresh_->setEnabled(true);
    auto& machine = session_.machine();
    const QString when = QString::fromStdString(ISO8601::format(dashboard_->snapshot().capturedAt));
    const QString what = machine.recording()
                             ? QStringLiteral("Recorded: ") + ScreenParts::text(machine.recording()->name)
                             : QStringLiteral("This machine");
    source_->setText(what + QStringLiteral("\nRead ") + when);
}

}  // namespace corvel::desktop
