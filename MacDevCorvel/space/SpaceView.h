// The space screen: choose a folder, scan it with live progress and Cancel, then read the folder
// tree beside a squarified treemap of the selected folder. Selecting a folder in the tree shows it
// in the treemap; double clicking a tile selects that folder; Up goes back out.
#pragma once

#include <QHash>
#include <QWidget>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace corvel {
struct SpaceNode;
}

namespace corvel::desktop {

class SpaceModel;
class TreemapWidget;

class SpaceView : public QWidget {
public:
    explicit SpaceView(SpaceModel& model, QWidget* parent = nullptr);

    QPushButton* scanButton() const { return scan_; }
    QPushButton* cancelButton() const { return cancel_; }
    QTreeWidget* tree() const { return tree_; }
    TreemapWidget* treemap() const { return treemap_; }

private:
    void chooseFolder();
    void stateChanged();
    void progressChanged();
    void fillTree();
    void showFolder(const SpaceNode* node);

    SpaceModel& model_;
    QLineEdit* folder_;
    QPushButton* choose_;
    QPushButton* scan_;
    QPushButton* cancel_;
    QProgressBar* busy_;
    QLabel* status_;
    QTreeWidget* tree_;
    QLabel* place_;
    QPushButton* up_;
    TreemapWidget* treemap_;
    QHash<const SpaceNode*, QTreeWidgetItem*> items_;
};

}  // namespace corvel::desktop
