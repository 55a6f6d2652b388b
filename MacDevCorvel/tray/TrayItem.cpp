#include "tray/TrayItem.h"

#include "tray/TrayModel.h"
#include "widgets/BrandIcon.h"
#include "widgets/Palette.h"

#include <QCursor>
#include <QMenu>
#include <QSystemTrayIcon>

namespace corvel::desktop {
namespace {

void addInformation(QMenu& menu, const QString& heading, const QStringList& lines, const QString& none) {
    menu.addSection(heading);
    for (const auto& line : lines.isEmpty() ? QStringList{none} : lines) menu.addAction(line)->setEnabled(false);
}

}  // namespace

TrayItem::TrayItem(TrayModel& model, QObject* parent) : QObject(parent), model_(model), menu_(new QMenu) {
    connect(&model_, &TrayModel::changed, this, &TrayItem::rebuild);
    rebuild();
}

TrayItem::~TrayItem() = default;

void TrayItem::show() {
    if (!tray_) {
        tray_ = new QSystemTrayIcon(this);
        tray_->setContextMenu(menu_.get());
        connect(tray_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger) menu_->popup(QCursor::pos());
        });
    }
    rebuild();
    tray_->show();
}

void TrayItem::rebuild() {
    icon_ = BrandIcon::tinted(Palette::tone(model_.isLoaded() ? toneOf(model_.severity()) : Tone::muted));
    menu_->clear();
    addInformation(*menu_, QStringLiteral("Volumes"), model_.volumeLines(),
                   model_.isLoaded() ? QStringLiteral("No volumes") : QStringLiteral("Reading the machine…"));
    addInformation(*menu_, QStringLiteral("Last alerts"), model_.alertLines(), QStringLiteral("No alerts"));
    menu_->addSeparator();
    connect(menu_->addAction(QStringLiteral("Open Velmora")), &QAction::triggered, this, &TrayItem::openRequested);
    connect(menu_->addAction(QStringLiteral("Refresh")), &QAction::triggered, this, &TrayItem::refreshRequested);
    menu_->addSeparator();
    connect(menu_->addAction(QStringLiteral("Quit Velmora")), &QAction::triggered, this, &TrayItem::quitRequested);
    if (tray_) {
        tray_->setIcon(icon_);
        tray_->setToolTip(model_.toolTip());
    }
}

}  // namespace corvel::desktop
