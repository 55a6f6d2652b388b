#include "widgets/TreemapWidget.h"

#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "widgets/Palette.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>

namespace corvel::desktop {
namespace {

// The fewest tiles a widget offers before the smallest children share one.
constexpr std::size_t minimumRoom = 256;

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
    // Which children are largest is sorted out once per folder, not at every resize.
    bySize_.clear();
    childrenBytes_ = 0;
    if (node_ && node_->children.size() > minimumRoom) {
        const auto& children = node_->children;
        bySize_.resize(children.size());
        for (std::size_t i = 0; i < children.size(); ++i) {
            bySize_[i] = i;
            childrenBytes_ += children[i].allocatedBytes;
        }
        std::stable_sort(bySize_.begin(), bySize_.end(), [&](std::size_t a, std::size_t b) {
            return children[a].allocatedBytes > children[b].allocatedBytes;
        });
    }
    layOut();
    update();
}

void TreemapWidget::layOut() {
    tiles_.clear();
    tileChildren_.clear();
    smallItems_ = 0;
    smallBytes_ = 0;
    if (!node_) return;
    const auto& children = node_->children;
    // A tile needs a few pixels to say anything: at most one per 8 x 8 pixels, the largest
    // children; the rest share the last tile, so that a redraw costs what can be seen.
    const auto pixels =
        static_cast<std::size_t>(std::max(0, width())) * static_cast<std::size_t>(std::max(0, height()));
    const std::size_t room = std::max<std::size_t>(pixels / 64, minimumRoom);
    if (children.size() <= room) {
        tileChildren_.resize(children.size());
        for (std::size_t i = 0; i < children.size(); ++i) tileChildren_[i] = i;
    } else {
        tileChildren_.assign(bySize_.begin(), bySize_.begin() + static_cast<std::ptrdiff_t>(room));
        std::sort(tileChildren_.begin(), tileChildren_.end());  // back in the node's order
        smallItems_ = children.size() - room;
        smallBytes_ = childrenBytes_;
    }
    std::vector<double> weights;
    weights.reserve(tileChildren_.size() + 1);
    for (const auto index : tileChildren_) {
        weights.push_back(static_cast<double>(children[index].allocatedBytes));
        if (smallItems_ > 0) smallBytes_ -= children[index].allocatedBytes;
    }
    if (smallItems_ > 0) weights.push_back(static_cast<double>(std::max<std::int64_t>(smallBytes_, 0)));
    tiles_ = TreemapLayout::squarify(weights, {0, 0, static_cast<double>(width()), static_cast<double>(height())});
}

const SpaceNode* TreemapWidget::childOf(int tile) const {
    if (!node_ || tile < 0 || static_cast<std::size_t>(tile) >= tileChildren_.size()) return nullptr;
    return &node_->children[tileChildren_[static_cast<std::size_t>(tile)]];
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
        const auto* shown = childOf(static_cast<int>(i));
        if (!shown) {  // the smallest children together
            painter.fillRect(tile, palette().color(QPalette::Mid));
            continue;
        }
        const auto& child = *shown;
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
    const auto* child = childOf(tileAt(event->position()));
    if (child && child->isDirectory && !child->children.empty()) Q_EMIT folderActivated(child);
}

bool TreemapWidget::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const int index = tileAt(help->pos());
        if (index < 0) {
            QToolTip::hideText();
        } else if (const auto* shown = childOf(index); !shown) {
            QToolTip::showText(help->globalPos(),
                               QStringLiteral("%1 smaller items · %2")
                                   .arg(smallItems_)
                                   .arg(QString::fromStdString(ByteFormat::string(smallBytes_))),
                               this);
        } else {
            const auto& child = *shown;
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
