#include "widgets/TreemapWidget.h"

#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "widgets/Palette.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

namespace corvel::desktop {
namespace {

QRectF toQt(const TreemapRect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

QString sizeText(const SpaceNode& child) {
    return QString::fromStdString(ByteFormat::string(child.allocatedBytes));
}

}  // namespace

QString nodeDisplayName(const SpaceNode& node) {
    if (!node.isAggregate()) return QString::fromStdString(node.name);
    return node.aggregatedItems == 1 ? QStringLiteral("1 smaller item")
                                     : QStringLiteral("%1 smaller items").arg(node.aggregatedItems);
}

TreemapWidget::TreemapWidget(QWidget* parent) : QWidget(parent) {
    setMinimumSize(200, 150);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAccessibleName(QStringLiteral("Treemap"));
}

QSize TreemapWidget::sizeHint() const {
    return {520, 400};
}

void TreemapWidget::setNode(const SpaceNode* node) {
    node_ = node;
    layOut();
    update();
}

void TreemapWidget::layOut() {
    tiles_.clear();
    if (!node_) return;
    std::vector<double> weights;
    weights.reserve(node_->children.size());
    for (const auto& child : node_->children) weights.push_back(static_cast<double>(child.allocatedBytes));
    tiles_ = TreemapLayout::squarify(weights, {0, 0, static_cast<double>(width()), static_cast<double>(height())});
}

void TreemapWidget::resizeEvent(QResizeEvent*) {
    layOut();
}

int TreemapWidget::tileAt(QPointF point) const {
    for (std::size_t i = 0; i < tiles_.size(); ++i)
        if (toQt(tiles_[i]).contains(point)) return static_cast<int>(i);
    return -1;
}

void TreemapWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QColor separator = palette().color(QPalette::Window);
    if (!node_ || tiles_.empty() || node_->allocatedBytes <= 0) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect(), Qt::AlignCenter,
                         node_ ? QStringLiteral("This folder is empty.")
                               : QStringLiteral("Scan a folder to see where its space goes."));
        return;
    }
    for (std::size_t i = 0; i < tiles_.size(); ++i) {
        const QRectF tile = toQt(tiles_[i]);
        if (tile.width() < 1 || tile.height() < 1) continue;
        const auto& child = node_->children[i];
        QColor fill = Palette::category(child.classification.category);
        if (child.isAggregate()) fill = fill.lighter(130);
        painter.fillRect(tile, fill);
        painter.setPen(separator);
        painter.drawRect(tile.adjusted(0, 0, -1, -1));
        const QRectF textArea = tile.adjusted(4, 3, -4, -3);
        if (textArea.width() < 48 || textArea.height() < 30) continue;
        // The category colours are mid-tones chosen for the brand's dark ink, in either theme.
        painter.setPen(Palette::colour(BrandPalette::surfaces(Theme::light).ink));
        const auto& metrics = painter.fontMetrics();
        const int width = static_cast<int>(textArea.width());
        painter.drawText(textArea, Qt::AlignLeft | Qt::AlignTop,
                         metrics.elidedText(nodeDisplayName(child), Qt::ElideMiddle, width) + QStringLiteral("\n") +
                             sizeText(child));
    }
}

void TreemapWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    const int index = tileAt(event->position());
    if (index < 0) return;
    const auto& child = node_->children[static_cast<std::size_t>(index)];
    if (child.isDirectory && !child.children.empty()) Q_EMIT folderActivated(&child);
}

bool TreemapWidget::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const int index = tileAt(help->pos());
        if (index < 0) {
            QToolTip::hideText();
        } else {
            const auto& child = node_->children[static_cast<std::size_t>(index)];
            QToolTip::showText(help->globalPos(),
                               QStringLiteral("%1 · %2 · %3")
                                   .arg(nodeDisplayName(child), sizeText(child),
                                        QString::fromStdString(std::string(label(child.classification.category)))),
                               this);
        }
        return true;
    }
    return QWidget::event(event);
}

}  // namespace corvel::desktop
