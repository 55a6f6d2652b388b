// A flat, sortable-looking list of rows for the screens that show records: one header, columns
// sized to their content, one column taking the room left, numbers aligned right.
//
//   auto* table = ListTable::make({"Location", "Size"}, 0, {1});
//   ListTable::addRow(table, {"npm cache", "1.2 GB"});
#pragma once

#include <QList>
#include <QStringList>
#include <QTreeWidget>

namespace corvel::desktop::ListTable {

// `stretch` takes the width left over; the columns in `rightAligned` hold figures.
QTreeWidget* make(const QStringList& headers, int stretch, const QList<int>& rightAligned = {});
QTreeWidgetItem* addRow(QTreeWidget* table, const QStringList& cells, QTreeWidgetItem* parent = nullptr);
// Tall enough for its rows without a scroll bar, for tables stacked on a scrolling page.
void fitHeight(QTreeWidget* table);

}  // namespace corvel::desktop::ListTable
