// The Docker screen: the engine and its disk image, then projects, volumes, databases and bind
// mounts as the core reads them. Velmora never prunes; the screen says so where the engine
// reports reclaimable space.
#pragma once

#include <QWidget>

class QScrollArea;

namespace corvel::desktop {

class DockerModel;

class DockerView : public QWidget {
public:
    explicit DockerView(DockerModel& model, QWidget* parent = nullptr);

private:
    void rebuild();

    DockerModel& model_;
    QScrollArea* content_;
};

}  // namespace corvel::desktop
