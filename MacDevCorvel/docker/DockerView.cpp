#include "docker/DockerView.h"

#include "common/Text.h"
#include "docker/DockerModel.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QScrollArea>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::heading;
using ScreenParts::note;
using ScreenParts::text;
using ToolParts::bytes;

// Anonymous volumes are named by a 64-digit hash; its start is enough to recognise one.
QString volumeName(const std::string& name) {
    return name.size() > 24 ? text(name.substr(0, 12)) + QStringLiteral("…") : text(name);
}

void addTable(QVBoxLayout* page, QTreeWidget* table) {
    ToolParts::fit(table);
    page->addWidget(table);
}

void engine(QVBoxLayout* page, const DockerReading& reading, const DockerInventory& inventory) {
    if (inventory.isReachable()) {
        QString line = QStringLiteral("Engine running · ") + text(*inventory.serverVersion);
        if (inventory.operatingSystem) line += QStringLiteral(" (") + text(*inventory.operatingSystem) + ")";
        page->addWidget(ToolParts::toned(Tone::good, line));
        page->addWidget(
            note(QStringLiteral("%1 containers, %2 images, %3 volumes, %4 Compose projects · build cache %5")
                     .arg(inventory.containers.size())
                     .arg(inventory.images.size())
                     .arg(inventory.volumes.size())
                     .arg(inventory.composeProjects.size())
                     .arg(bytes(inventory.buildCacheBytes))));
    } else {
        page->addWidget(ToolParts::toned(Tone::caution, text(DockerReading::engineNotRunningTitle())));
        page->addWidget(
            note(text(DockerReading::engineNotRunningHint(reading.platform, inventory.diskImage.has_value()))));
    }
    page->addWidget(note(QStringLiteral("Program: ") + text(*reading.executable)));
    page->addWidget(heading(QStringLiteral("Disk image")));
    if (const auto& image = inventory.diskImage) {
        page->addWidget(ScreenParts::wrapped(text(image->path)));
        QString cost = bytes(image->allocatedBytes) + QStringLiteral(" allocated of ") + bytes(image->apparentBytes) +
                       QStringLiteral(" apparent");
        if (image->volumeMountPoint) cost += QStringLiteral(", on ") + text(*image->volumeMountPoint);
        page->addWidget(note(cost + QStringLiteral(" (") + text(image->source) + ")"));
    } else {
        page->addWidget(note(QStringLiteral("Not found.")));
    }
}

void lists(QVBoxLayout* page, const DockerInventory& inventory) {
    page->addWidget(heading(QStringLiteral("Projects")));
    const auto projects = inventory.projectUsage();
    if (projects.empty())
        page->addWidget(note(QStringLiteral("No containers.")));
    else {
        auto* table = ToolParts::table({"Project", "Containers", "Running", "Images", "Volumes", "Size", "Folder"});
        for (const auto& project : projects)
            ToolParts::addRow(table, {text(project.name), QString::number(project.containers),
                                      QString::number(project.runningContainers),
                                      QString::number(project.imageIDs.size()), QString::number(project.volumes),
                                      bytes(project.totalBytes()), text(project.workingDirectory.value_or(""))});
        addTable(page, table);
    }

    page->addWidget(heading(QStringLiteral("Volumes")));
    if (inventory.volumes.empty())
        page->addWidget(note(QStringLiteral("No volumes.")));
    else {
        auto* table = ToolParts::table({"Volume", "Project", "Used by", "Size"});
        for (const auto& volume : inventory.volumes)
            ToolParts::addRow(table, {volumeName(volume.name), text(volume.composeProject.value_or("")),
                                      volume.links ? QString::number(*volume.links) : QStringLiteral("–"),
                                      volume.sizeBytes ? bytes(*volume.sizeBytes) : QStringLiteral("–")});
        addTable(page, table);
    }

    page->addWidget(heading(QStringLiteral("Databases")));
    const auto databases = inventory.databases();
    if (databases.empty())
        page->addWidget(note(QStringLiteral("No database containers.")));
    else {
        auto* table = ToolParts::table({"Container", "Engine", "State", "Data", "Volumes"});
        for (const auto& database : databases) {
            QStringList volumes;
            for (const auto& name : database.volumeNames) volumes << volumeName(name);
            ToolParts::addRow(table, {text(database.container.name), text(database.engine),
                                      text(database.container.state), bytes(database.volumeBytes),
                                      volumes.isEmpty() ? QStringLiteral("no volume: data lives in the container")
                                                        : volumes.join(QStringLiteral(", "))});
        }
        addTable(page, table);
    }

    page->addWidget(heading(QStringLiteral("Bind mounts")));
    const auto binds = inventory.bindMounts();
    if (binds.empty())
        page->addWidget(note(QStringLiteral("No bind mounts.")));
    else {
        auto* table = ToolParts::table({"Container", "Host folder", "In container", "Mode"});
        for (const auto& bind : binds)
            ToolParts::addRow(table, {text(bind.container.name), text(bind.mount.source), text(bind.mount.destination),
                                      bind.mount.readWrite ? QStringLiteral("rw") : QStringLiteral("ro")});
        addTable(page, table);
    }
    if (const auto reclaimable = inventory.reclaimableBytes(); reclaimable && *reclaimable > 0)
        page->addWidget(
            note(QStringLiteral("The engine calls %1 reclaimable. Review it in Docker; Velmora never prunes.")
                     .arg(bytes(*reclaimable))));
    if (!inventory.errors.empty() && inventory.isReachable()) {
        page->addWidget(heading(QStringLiteral("Could not read")));
        for (const auto& error : inventory.errors) page->addWidget(ToolParts::toned(Tone::caution, text(error)));
    }
}

}  // namespace

DockerView::DockerView(DockerModel& model, QWidget* parent)
    : QWidget(parent), model_(model), content_(new QScrollArea) {
    auto* layout = ToolParts::page(this, QStringLiteral("Docker"));
    content_->setWidgetResizable(true);
    content_->setFrameShape(QFrame::NoFrame);
    layout->addWidget(content_, 1);
    connect(&model_, &DockerModel::changed, this, &DockerView::rebuild);
    rebuild();
}

void DockerView::rebuild() {
    auto* page = ToolParts::refill(content_);
    const auto& reading = model_.reading();
    if (!model_.error().empty()) {
        page->addWidget(ToolParts::toned(Tone::bad, text(model_.error())));
    } else if (!reading) {
        page->addWidget(note(QStringLiteral("Reading Docker…")));
    } else if (!reading->executable) {
        page->addWidget(note(QStringLiteral("Docker CLI not found")));
    } else if (reading->inventory) {
        engine(page, *reading, *reading->inventory);
        if (reading->inventory->isReachable()) lists(page, *reading->inventory);
    }
    page->addStretch(1);
}

}  // namespace corvel::desktop
