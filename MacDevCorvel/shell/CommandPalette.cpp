#include "shell/CommandPalette.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace corvel::desktop {

std::vector<std::size_t> PaletteSearch::matches(const std::vector<PaletteEntry>& entries, const QString& query) {
    const QString wanted = query.simplified();
    const auto words = wanted.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    struct Ranked {
        int group;
        std::size_t index;
    };
    std::vector<Ranked> found;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto& entry = entries[i];
        const QString haystack = entry.kind + QLatin1Char(' ') + entry.title;
        const bool all = std::all_of(words.begin(), words.end(),
                                     [&](const QString& word) { return haystack.contains(word, Qt::CaseInsensitive); });
        if (!all) continue;
        int group = 2;
        if (!wanted.isEmpty() && entry.title.startsWith(wanted, Qt::CaseInsensitive))
            group = 0;
        else if (!wanted.isEmpty() && entry.title.contains(wanted, Qt::CaseInsensitive))
            group = 1;
        found.push_back({group, i});
    }
    std::stable_sort(found.begin(), found.end(), [](const Ranked& a, const Ranked& b) { return a.group < b.group; });
    std::vector<std::size_t> indices;
    for (const auto& ranked : found) indices.push_back(ranked.index);
    return indices;
}

CommandPalette::CommandPalette(QWidget* parent) : QDialog(parent), field_(new QLineEdit), list_(new QListWidget) {
    setWindowTitle(QStringLiteral("Go to"));
    setModal(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    field_->setPlaceholderText(QStringLiteral("Type a screen, disk, volume or action"));
    field_->setAccessibleName(QStringLiteral("Search"));
    field_->setClearButtonEnabled(true);
    layout->addWidget(field_);
    list_->setAccessibleName(QStringLiteral("Results"));
    list_->setUniformItemSizes(true);
    layout->addWidget(list_);
    resize(520, 360);
    field_->installEventFilter(this);
    connect(field_, &QLineEdit::textChanged, this, &CommandPalette::filter);
    connect(field_, &QLineEdit::returnPressed, this, &CommandPalette::activate);
    connect(list_, &QListWidget::itemActivated, this, &CommandPalette::activate);
}

void CommandPalette::present(std::vector<PaletteEntry> entries) {
    entries_ = std::move(entries);
    field_->clear();
    filter();
    if (auto* owner = parentWidget()) move(owner->geometry().center() - QPoint(width() / 2, owner->height() / 3));
    show();
    activateWindow();
    field_->setFocus();
}

void CommandPalette::filter() {
    shown_ = PaletteSearch::matches(entries_, field_->text());
    list_->clear();
    for (const auto index : shown_) {
        const auto& entry = entries_[index];
        list_->addItem(entry.title + QStringLiteral("  —  ") + entry.kind);
    }
    if (list_->count() > 0) list_->setCurrentRow(0);
}

void CommandPalette::activate() {
    const int row = list_->currentRow();
    if (row < 0 || row >= static_cast<int>(shown_.size())) return;
    // Closed first: what the entry opens may itself take the focus.
    auto chosen = entries_[shown_[static_cast<std::size_t>(row)]].open;
    accept();
    if (chosen) chosen();
}

bool CommandPalette::eventFilter(QObject* watched, QEvent* event) {
    if (watched == field_ && event->type() == QEvent::KeyPress) {
        const auto key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Up || key == Qt::Key_PageDown || key == Qt::Key_PageUp) {
            QCoreApplication::sendEvent(list_, event);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

}  // namespace corvel::desktop
