#include "widgets/ListTable.h"

#include <QHeaderView>
#include <QScrollBar>

#include <algorithm>

namespace corvel::desktop::ListTable {
namespace {

const char* const alignedProperty = "rightAlignedColumns";

}  // namespace

QTreeWidget* make(const QStringList& headers, int stretch, const QList<int>& rightAligned) {
    auto* table = new QTreeWidget;
    table->setHeaderLabels(headers);
    table->setRootIsDecorated(false);
    table->setUniformRowHeights(true);
    table->setAlternatingRowColors(true);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setProperty(alignedProperty, QVariant::fromValue(rightAligned));
    auto* header = table->header();
    header->setStretchLastSection(false);
    for (int column = 0; column < headers.size(); ++column)
        header->setSectionResizeMode(column, column == stretch ? QHeaderView::Stretch : QHeaderView::ResizeToContents);
    for (const int column : rightAligned)
        table->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    return table;
}

QTreeWidgetItem* addRow(QTreeWidget* table, const QStringList& cells, QTreeWidgetItem* parent) {
    auto* item = parent ? new QTreeWidgetItem(parent, cells) : new QTreeWidgetItem(table, cells);
    const auto aligned = table->property(alignedProperty).value<QList<int>>();
    for (const int column : aligned) item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    for (int column = 0; column < cells.size(); ++column) item->setToolTip(column, cells[column]);
    return item;
}

void fitHeight(QTreeWidget* table) {
    table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    int rows = 0;
    for (QTreeWidgetItemIterator it(table); *it; ++it) ++rows;
    const int rowHeight = table->sizeHintForRow(0) > 0 ? table->sizeHintForRow(0) : table->fontMetrics().height() + 6;
    const int height = table->header()->sizeHint().height() + rowHeight * std::max(rows, 1) + 2 * table->frameWidth() +
                       table->horizontalScrollBar()->sizeHint().height();
    table->setFixedHeight(height);
}

}  // namespace corvel::desktop::ListTable
