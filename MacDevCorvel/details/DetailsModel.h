// The detail screen's state: one disk or one volume of the last refresh, chosen by its id, with
// what the core knows about it: the disk's partitions, volumes and NVMe health, or the volume's
// space and forecast; the findings about it in either case. Follows the dashboard's values, so a
// refresh updates the object shown (or says it is gone).
//
//   DetailsModel model(dashboard);
//   model.showDisk("disk4");            // changed
//   model.disk()->displayName();  model.findings();
#pragma once

#include "diagnostics/Finding.h"
#include "storage/StorageSnapshot.h"

#include <QObject>
#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

class DashboardModel;

class DetailsModel : public QObject {
    Q_OBJECT
public:
    explicit DetailsModel(const DashboardModel& dashboard, QObject* parent = nullptr);

    void showDisk(const std::string& id);
    void showVolume(const std::string& id);

    // What is chosen; absent before anything was.
    const std::optional<FindingSubject>& subject() const { return subject_; }
    // The chosen disk or volume in the last refresh; absent when it is not (or no longer) there.
    std::optional<PhysicalDisk> disk() const;
    std::optional<StorageVolume> volume() const;
    // The disk's volumes, in snapshot order.
    std::vector<StorageVolume> volumesOnDisk() const;
    // The disk holding the chosen volume, when the snapshot knows it.
    std::optional<PhysicalDisk> diskOfVolume() const;
    std::vector<Finding> findings() const;
    std::optional<double> daysUntilFull() const;
    const StorageSnapshot& snapshot() const;

Q_SIGNALS:
    void changed();

private:
    void choose(FindingSubject subject);

    const DashboardModel& dashboard_;
    std::optional<FindingSubject> subject_;
};

}  // namespace corvel::desktop
