// Small pieces every screen builds with: a section heading, a muted note, and text from the core
// made safe to show (names and paths may hold control characters or invalid UTF-8).
//
//   layout->addWidget(ScreenParts::heading("Volumes"));
//   layout->addWidget(ScreenParts::note("No mounted volumes found."));
#pragma once

#include <QLabel>
#include <QString>
#include <string_view>

namespace corvel::desktop::ScreenParts {

QString text(std::string_view core);
QLabel* heading(const QString& title);
QLabel* note(const QString& note);
QLabel* title(const QString& title);  // a screen's own title, larger than a heading
QLabel* wrapped(const QString& text);

}  // namespace corvel::desktop::ScreenParts
