#include "space/SpaceView.h"

#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "space/SpaceModel.h"
#include "widgets/Palette.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"
#include "widgets/TreemapWidget.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::text;

QString bytes(std::int64_t amount) {
    return QString::fromStdString(ByteFormat::string(amount));
}

QString nodeName(const SpaceNode& node) {
    return node.isAggregate() ? nodeDisplayName(node) : text(node.name);
}

const SpaceNode* nodeOf(const QTreeWidgetItem* item) {
    return item ? reinterpret_cast<const SpaceNode*>(item->data(0, Qt::UserRole).value<quintptr>()) : nullptr;
}

}  // namespace

SpaceView::SpaceView(SpaceModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      folder_(new QLineEdit),
      choose_(new QPushButton(QStringLiteral("Choose…"))),
      scan_(new QPushButton(QStringLiteral("Scan"))),
      cancel_(new QPushButton(QStringLiteral("Cancel"))),
      busy_(new QProgressBar),
      status_(new QLabel),
      tree_(new QTreeWidget),
      place_(new QLabel),
      up_(new QPushButton(QStringLiteral("Up"))),
      simulate_(new QPushButton(QStringLiteral("Simulate cleanup"))),
      treemap_(new TreemapWidget) {
    auto* page = ToolParts::page(this, QStringLiteral("Space"));

    auto* bar = new QHBoxLayout;
    folder_->setAccessibleName(QStringLiteral("Folder"));
    folder_->setPlaceholderText(QStringLiteral("Folder to scan"));
    bar->addWidget(folder_, 1);
    bar->addWidget(choose_);
    scan_->setDefault(true);
    bar->addWidget(scan_);
    bar->addWidget(cancel_);
    page->addLayout(bar);

    auto* progress = new QHBoxLayout;
    busy_->setRange(0, 0);
    busy_->setMaximumWidth(120);
    busy_->setTextVisible(false);
    progress->addWidget(busy_);
    status_->setTextFormat(Qt::PlainText);
    status_->setMinimumWidth(100);
    progress->addWidget(status_, 1);
    page->addLayout(progress);

    tree_->setHeaderLabels({QStringLiteral("Name"), QStringLiteral("Size"), QStringLiteral("Category")});
    tree_->setUniformRowHeights(true);
    tree_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tree_->header()->setStretchLastSection(false);
    tree_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    tree_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    tree_->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);

    auto* right = new QWidget;
    auto* rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    auto* placeBar = new QHBoxLayout;
    place_->setTextFormat(Qt::PlainText);
    place_->setMinimumWidth(50);
    placeBar->addWidget(place_, 1);
    placeBar->addWidget(up_);
    simulate_->setToolTip(
        QStringLiteral("Work out what removing the items selected in the tree would free; nothing "
                       "is deleted"));
    simulate_->setEnabled(false);
    placeBar->addWidget(simulate_);
    rightLayout->addLayout(placeBar);
    rightLayout->addWidget(treemap_, 1);

    auto* split = new QSplitter;
    split->addWidget(tree_);
    split->addWidget(right);
    split->setStretchFactor(0, 2);
    split->setStretchFactor(1, 3);
    // Room for folder names: a narrow tree showed only their first letters.
    split->setSizes({380, 520});
    page->addWidget(split, 1);

    folder_->setText(text(model_.folder()));
    connect(folder_, &QLineEdit::editingFinished, this, [this] { model_.setFolder(folder_->text().toStdString()); });
    connect(folder_, &QLineEdit::returnPressed, this, [this] { model_.start(); });
    connect(choose_, &QPushButton::clicked, this, &SpaceView::chooseFolder);
    connect(scan_, &QPushButton::clicked, this, [this] {
        model_.setFolder(folder_->text().toStdString());
        model_.start();
    });
    connect(cancel_, &QPushButton::clicked, &model_, &SpaceModel::cancel);
    connect(up_, &QPushButton::clicked, this, [this] {
        if (auto* item = tree_->currentItem(); item && item->parent()) tree_->setCurrentItem(item->parent());
    });
    connect(tree_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        treemap_->setNode(nodeOf(item));
        place_->setText(item ? text(nodeOf(item)->path) : QString());
        up_->setEnabled(item && item->parent());
    });
    connect(tree_, &QTreeWidget::itemSelectionChanged, this,
            [this] { simulate_->setEnabled(!selectedPaths().empty()); });
    connect(simulate_, &QPushButton::clicked, this, [this] {
        if (auto paths = selectedPaths(); !paths.empty() && simulateHandler_) simulateHandler_(std::move(paths));
    });
    connect(treemap_, &TreemapWidget::folderActivated, this, &SpaceView::showFolder);
    connect(&model_, &SpaceModel::stateChanged, this, &SpaceView::stateChanged);
    connect(&model_, &SpaceModel::progressChanged, this, &SpaceView::progressChanged);
    stateChanged();
}

void SpaceView::chooseFolder() {
    const auto chosen =
        QFileDialog::getExistingDirectory(this, QStringLiteral("Choose a folder to scan"), folder_->text());
    if (chosen.isEmpty()) return;
    folder_->setText(chosen);
    model_.setFolder(chosen.toStdString());
}

void SpaceView::stateChanged() {
    using State = SpaceModel::State;
    const auto state = model_.state();
    const bool scanning = state == State::scanning;
    if (folder_->text().toStdString() != model_.folder()) folder_->setText(text(model_.folder()));
    scan_->setEnabled(!scanning);
    choose_->setEnabled(!scanning);
    folder_->setEnabled(!scanning);
    cancel_->setEnabled(scanning);
    busy_->setVisible(scanning);
    switch (state) {
        case State::idle:
            status_->setText(QStringLiteral("Choose a folder and press Scan."));
            break;
        case State::scanning:
            progressChanged();
            break;
        case State::failed:
            status_->setText(text(model_.error()));
            break;
        case State::finished:
        case State::cancelled: {
            const auto& report = *model_.report();
            QString line = QStringLiteral("%1 in %2 files and %3 folders")
                               .arg(bytes(report.allocatedBytes))
                               .arg(report.fileCount)
                               .arg(report.directoryCount);
            if (report.deniedDirectories > 0)
                line += QStringLiteral(" · %1 folders could not be read").arg(report.deniedDirectories);
            if (state == State::cancelled)
                line = QStringLiteral("Cancelled: ") + line + QStringLiteral(" measured so far");
            status_->setText(line);
            break;
        }
    }
    if (!scanning) fillTree();
}

void SpaceView::progressChanged() {
    if (model_.state() != SpaceModel::State::scanning) return;
    const auto& now = model_.progress();
    status_->setText(QStringLiteral("Scanning… %1 files · %2 · %3")
                         .arg(now.files)
                         .arg(bytes(now.allocatedBytes))
                         .arg(text(now.currentFolder)));
}

void SpaceView::fillTree() {
    tree_->clear();
    items_.clear();
    treemap_->setNode(nullptr);
    place_->clear();
    up_->setEnabled(false);
    const auto& root = model_.root();
    if (root.path.empty()) return;
    auto add = [this](auto& self, const SpaceNode& node, QTreeWidgetItem* item) -> void {
        item->setText(0, nodeName(node));
        item->setText(1, bytes(node.allocatedBytes));
        item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        item->setText(2, text(label(node.classification.category)));
        item->setData(0, Qt::DecorationRole, Palette::category(node.classification.category));
        item->setData(0, Qt::UserRole, QVariant::fromValue(reinterpret_cast<quintptr>(&node)));
        items_.insert(&node, item);
        for (const auto& child : node.children) self(self, child, new QTreeWidgetItem(item));
    };
    auto* top = new QTreeWidgetItem(tree_);
    add(add, root, top);
    top->setText(0, text(root.path));
    top->setExpanded(true);
    tree_->setCurrentItem(top);
}

std::vector<std::string> SpaceView::selectedPaths() const {
    std::vector<std::string> paths;
    // The tree's "smaller items" tiles stand for several paths; they cannot be simulated as one.
    for (const auto* item : tree_->selectedItems())
        if (const auto* node = nodeOf(item); node && !node->isAggregate() && !node->path.empty())
            paths.push_back(node->path);
    return paths;
}

void SpaceView::showFolder(const SpaceNode* node) {
    if (auto* item = items_.value(node)) {
        tree_->setCurrentItem(item);
        item->setExpanded(true);
    }
}

}  // namespace corvel::desktop
