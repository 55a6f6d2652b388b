// The space screen: choose a folder, scan it with live progress and Cancel, then read the folder
// tree beside a squarified treemap of the selected folder. Selecting a folder in the tree shows it
// in the treemap; double clicking a tile selects that folder; Up goes back out. Items selected in
// the tree (Ctrl or Shift for several) go to the cleanup simulation with "Simulate cleanup".
#pragma once

#include <QHash>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

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
    QPushButton* simulateButton() const { return simulate_; }
    // Called with the selected items' paths when "Simulate cleanup" is pressed.
    void onSimulate(std::function<void(std::vector<std::string>)> simulate) { simulateHandler_ = std::move(simulate); }
    std::vector<std::string> selectedPaths() const;

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
    QPushButton* simulate_;
    TreemapWidget* treemap_;
    std::function<void(std::vector<std::string>)> simulateHandler_;
    QHash<const SpaceNode*, QTreeWidgetItem*> items_;
};

}  // namespace corvel::desktop
