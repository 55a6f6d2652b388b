#include "details/DetailsModel.h"

#include "dashboard/DashboardModel.h"

namespace corvel::desktop {

DetailsModel::DetailsModel(const DashboardModel& dashboard, QObject* parent) : QObject(parent), dashboard_(dashboard) {
    connect(&dashboard_, &DashboardModel::changed, this, &DetailsModel::changed);
}

void DetailsModel::showDisk(const std::string& id) {
    choose(FindingSubject::disk(id));
}

void DetailsModel::showVolume(const std::string& id) {
    choose(FindingSubject::volume(id));
}

void DetailsModel::choose(FindingSubject subject) {
    if (subject_ == subject) return;
    subject_ = std::move(subject);
    Q_EMIT changed();
}

const StorageSnapshot& DetailsModel::snapshot() const {
    return dashboard_.snapshot();
}

std::optional<PhysicalDisk> DetailsModel::disk() const {
    if (!subject_ || subject_->kind != FindingSubject::Kind::disk) return std::nullopt;
    return snapshot().disk(subject_->payload);
}

std::optional<StorageVolume> DetailsModel::volume() const {
    if (!subject_ || subject_->kind != FindingSubject::Kind::volume) return std::nullopt;
    return snapshot().volume(subject_->payload);
}

std::vector<StorageVolume> DetailsModel::volumesOnDisk() const {
    const auto chosen = disk();
    return chosen ? snapshot().volumesOn(*chosen) : std::vector<StorageVolume>{};
}

std::optional<PhysicalDisk> DetailsModel::diskOfVolume() const {
    const auto chosen = volume();
    if (!chosen || !chosen->physicalDiskID) return std::nullopt;
    return snapshot().disk(*chosen->physicalDiskID);
}

std::vector<Finding> DetailsModel::findings() const {
    if (!subject_) return {};
    return dashboard_.values().diagnosis.report.findingsFor(*subject_);
}

std::optional<double> DetailsModel::daysUntilFull() const {
    const auto chosen = volume();
    return chosen ? dashboard_.forecastFor(chosen->id) : std::nullopt;
}

}  // namespace corvel::desktop
