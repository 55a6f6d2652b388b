// The topology screen: per physical disk, its connection path as a tree (each hop inside the one
// before it) with the negotiated link speed into each hop and its notes, the devices sharing the
// path, then the link findings and what could not be read. Reads only its model.
#pragma once

#include <QScrollArea>

namespace corvel::desktop {

class TopologyModel;

class TopologyView : public QScrollArea {
    Q_OBJECT
public:
    explicit TopologyView(TopologyModel& model, QWidget* parent = nullptr);

private:
    void rebuild();

    TopologyModel& model_;
};

}  // namespace corvel::desktop
