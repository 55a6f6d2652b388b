// The detail screen of one disk or one volume, chosen from the dashboard, the command palette or
// the list at its top. A disk shows its facts, SMART and NVMe health, partitions and volumes; a
// volume its space, file system, forecast and disk; both the findings about them. Links between a
// disk and its volumes open the other's details. Reads only its model.
#pragma once

#include <QWidget>

class QComboBox;
class QScrollArea;

namespace corvel::desktop {

class DetailsModel;

class DetailsView : public QWidget {
    Q_OBJECT
public:
    explicit DetailsView(DetailsModel& model, QWidget* parent = nullptr);

    QComboBox* chooser() const { return chooser_; }

private:
    void rebuild();
    void fillChooser();
    void openLink(const QString& link);

    DetailsModel& model_;
    QComboBox* chooser_;
    QScrollArea* body_;
};

}  // namespace corvel::desktop
