// A squarified treemap of one folder of a scan: a tile per child, its area the child's allocated
// bytes, its colour the child's category, its name and size written in when they fit. Double
// clicking a folder's tile asks to zoom into it; the view decides what that means.
//
//   auto* map = new TreemapWidget(parent);
//   map->setNode(&model.root());
//   connect(map, &TreemapWidget::folderActivated, view, &SpaceView::showFolder);
#pragma once

#include "space/SpaceNode.h"
#include "widgets/TreemapLayout.h"

#include <QWidget>
#include <vector>

namespace corvel::desktop {

// A node's name as a tile and the folder tree show it: "12 smaller items" for what was folded.
QString nodeDisplayName(const SpaceNode& node);

class TreemapWidget : public QWidget {
    Q_OBJECT
public:
    explicit TreemapWidget(QWidget* parent = nullptr);

    // The folder shown; null shows the empty state. The node must outlive the widget's use of it.
    void setNode(const SpaceNode* node);
    const SpaceNode* node() const { return node_; }
    // The tiles as last laid out, one per child of the node, in the node's order. In a folder of
    // more items than the widget has room for (one per 8 x 8 pixels), only the largest get a
    // tile and the others share one last tile, so that a redraw costs what can be seen.
    const std::vector<TreemapRect>& tiles() const { return tiles_; }

    QSize sizeHint() const override;

Q_SIGNALS:
    void folderActivated(const corvel::SpaceNode* folder);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    bool event(QEvent* event) override;

private:
    void layOut();
    int tileAt(QPointF point) const;

    // The child a tile shows, or absent for the shared tile of the smallest children.
    const SpaceNode* childOf(int tile) const;

    const SpaceNode* node_ = nullptr;
    std::vector<TreemapRect> tiles_;
    std::vector<std::size_t> tileChildren_;  // child index per tile; the shared tile has none
    std::vector<std::size_t> bySize_;        // child indices, largest first (large folders only)
    std::int64_t childrenBytes_ = 0;
    std::size_t smallItems_ = 0;  // children in the shared tile
    std::int64_t smallBytes_ = 0;
};

}  // namespace corvel::desktop
