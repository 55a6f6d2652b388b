// Pictures of every screen, for people reviewing the interface and for the README: waits until
// the first refresh (and a space scan, when one was asked for) is done, shows each screen in turn
// and saves the window as "<number>-<screen>.png".
//
//   Screenshots::whenReady(window, "build/screenshots", [] { QApplication::quit(); });
#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace corvel::desktop {

class MainWindow;

namespace Screenshots {

// Writes every screen now; answers the files written. A file that cannot be written is left out.
QStringList writeAll(MainWindow& window, const QString& folder);

// Calls writeAll once the window's models hold their values, then `done` with the files written.
void whenReady(MainWindow& window, const QString& folder, std::function<void(QStringList)> done);

}  // namespace Screenshots
}  // namespace corvel::desktop
