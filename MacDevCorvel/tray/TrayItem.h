// The menu-bar item (a system tray icon where the desktop has one): the one-colour logo in the
// colour of the worst severity; its menu lists the volumes' free space and the last alerts, then "Open Velmora"
// and "Refresh". The menu exists without a tray, so that it can be looked at and tested anywhere.
//
//   TrayItem tray(model);
//   connect(&tray, &TrayItem::openRequested, &window, [&] { window.show(); window.raise(); });
//   if (QSystemTrayIcon::isSystemTrayAvailable()) tray.show();
#pragma once

#include <QIcon>
#include <QObject>
#include <memory>

class QMenu;
class QSystemTrayIcon;

namespace corvel::desktop {

class TrayModel;

class TrayItem : public QObject {
    Q_OBJECT
public:
    explicit TrayItem(TrayModel& model, QObject* parent = nullptr);
    ~TrayItem() override;

    QMenu* menu() const { return menu_.get(); }
    QIcon icon() const { return icon_; }
    void show();

Q_SIGNALS:
    void openRequested();
    void refreshRequested();
    void quitRequested();

private:
    void rebuild();

    TrayModel& model_;
    std::unique_ptr<QMenu> menu_;
    QSystemTrayIcon* tray_ = nullptr;
    QIcon icon_;
};

}  // namespace corvel::desktop
