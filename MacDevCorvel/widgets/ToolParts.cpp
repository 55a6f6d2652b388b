#include "widgets/ToolParts.h"

#include "common/ByteFormat.h"
#include "widgets/Palette.h"
#include "widgets/ScreenParts.h"

#include <QHeaderView>
#include <QScrollArea>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace corvel::desktop::ToolParts {

QString bytes(std::int64_t amount) {
    return QString::fromStdString(ByteFormat::string(amount));
}

QString memory(std::int64_t amount) {
    return amount > 0 ? bytes(amount) : QStringLiteral("—");
}

QString date(TimePoint when) {
    return QString::fromStdString(ISO8601::format(when));
}

QVBoxLayout* page(QWidget* screen, const QString& title) {
    auto* layout = new QVBoxLayout(screen);
    layout->setContentsMargins(20, 16, 20, 16);
    layout->addWidget(ScreenParts::title(title));
    return layout;
}

QVBoxLayout* refill(QScrollArea* area) {
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 8, 0);
    // Later: the rebuild often runs inside a click on a button of the old content.
    if (auto* old = area->takeWidget()) old->deleteLater();
    area->setWidget(content);
    return layout;
}

QTreeWidget* table(const QStringList& headers) {
    auto* tree = new QTreeWidget;
    tree->setColumnCount(static_cast<int>(headers.size()));
    tree->setHeaderLabels(headers);
    tree->setRootIsDecorated(false);
    tree->setUniformRowHeights(true);
    tree->setSelectionMode(QAbstractItemView::NoSelection);
    tree->setFocusPolicy(Qt::NoFocus);
    tree->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    tree->setFrameShape(QFrame::NoFrame);
    tree->header()->setStretchLastSection(true);
    return tree;
}

QTreeWidgetItem* addRow(QTreeWidget* table, const QStringList& cells) {
    auto* item = new QTreeWidgetItem(table, cells);
    for (int i = 0; i < cells.size(); ++i) item->setToolTip(i, cells[i]);
    return item;
}

void fit(QTreeWidget* table) {
    for (int i = 0; i + 1 < table->columnCount(); ++i) table->resizeColumnToContents(i);
    const int rows = table->topLevelItemCount();
    const int rowHeight = rows > 0 ? table->sizeHintForRow(0) : 0;
    table->setFixedHeight(table->header()->sizeHint().height() + rows * rowHeight + 2 * table->frameWidth() + 4);
}

QLabel* toned(Tone tone, const QString& text) {
    auto* label = ScreenParts::wrapped(text);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, Palette::tone(tone));
    label->setPalette(palette);
    return label;
}

}  // namespace corvel::desktop::ToolParts
