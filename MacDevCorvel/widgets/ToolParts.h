// Pieces the tool screens (disk operations, Docker, processes, migration, performance, about,
// settings) share: a scrolling page with a title, read-only tables sized to their rows, byte
// amounts and dates as people read them, and a line tinted by a tone.
//
//   auto* page = ToolParts::page(this, "Docker", scroll);
//   auto* table = ToolParts::table({"Project", "Size"});
//   ToolParts::addRow(table, {name, ToolParts::bytes(size)});
#pragma once

#include "common/EnumTable.h"
#include "common/ISO8601.h"

#include <QLabel>
#include <QString>
#include <QStringList>
#include <cstdint>

class QScrollArea;
class QTreeWidget;
class QTreeWidgetItem;
class QVBoxLayout;
class QWidget;

namespace corvel::desktop::ToolParts {

QString bytes(std::int64_t amount);
// A process's memory: "—" when none was measured (kernel threads own no memory of their own).
QString memory(std::int64_t amount);
QString date(TimePoint when);
// The screen's own layout: its title on top, then the returned layout (in a scroll area when one
// is given: then the content is rebuilt by replacing the area's widget).
QVBoxLayout* page(QWidget* screen, const QString& title);
// A fresh content widget for `area`, returning its layout; the old content is deleted.
QVBoxLayout* refill(QScrollArea* area);
// A table without a frame that grows with its rows rather than scrolling inside the page.
QTreeWidget* table(const QStringList& headers);
QTreeWidgetItem* addRow(QTreeWidget* table, const QStringList& cells);
// Call once the rows are in: columns fitted to their contents, height to the rows.
void fit(QTreeWidget* table);
// A line in the tone's colour (the meaning is in the words too).
QLabel* toned(Tone tone, const QString& text);

}  // namespace corvel::desktop::ToolParts
