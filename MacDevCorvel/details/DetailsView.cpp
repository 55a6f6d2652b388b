#include "details/DetailsView.h"

#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "details/DetailsModel.h"
#include "monitoring/CapacityForecast.h"
#include "widgets/FindingCard.h"
#include "widgets/ListTable.h"
#include "widgets/Palette.h"
#include "widgets/ScreenParts.h"
#include "widgets/TrafficLight.h"
#include "widgets/UsageBar.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLocale>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::note;
using ScreenParts::text;

// Links and the chooser name an object as "disk:ID" or "volume:ID".
QString diskLink() {
    return QStringLiteral("disk:");
}

QString volumeLink() {
    return QStringLiteral("volume:");
}

QString bytes(std::int64_t amount) {
    return QString::fromStdString(ByteFormat::string(amount));
}

QString yesNo(bool value) {
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString yesNo(const std::optional<bool>& value) {
    return value ? yesNo(*value) : QStringLiteral("unknown");
}

QLabel* value(const QString& content) {
    auto* label = ScreenParts::wrapped(content);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

// A link to another object's details, e.g. a volume of this disk.
QLabel* link(const QString& target, const QString& name) {
    auto* label = new QLabel(QStringLiteral("<a href=\"%1\">%2</a>").arg(target.toHtmlEscaped(), name.toHtmlEscaped()));
    label->setTextFormat(Qt::RichText);
    label->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    return label;
}

QFormLayout* form(QVBoxLayout* page) {
    auto* layout = new QFormLayout;
    layout->setHorizontalSpacing(24);
    layout->setLabelAlignment(Qt::AlignLeft);
    page->addLayout(layout);
    return layout;
}

void addNVMe(QVBoxLayout* page, const NVMeHealth& nvme) {
    page->addWidget(ScreenParts::heading(QStringLiteral("NVMe health")));
    auto* facts = form(page);
    const auto number = [](std::int64_t n) { return QLocale().toString(static_cast<qlonglong>(n)); };
    if (nvme.percentageUsed)
        facts->addRow(QStringLiteral("Wear"), value(QStringLiteral("%1% used").arg(*nvme.percentageUsed)));
    if (nvme.availableSpare)
        facts->addRow(QStringLiteral("Available spare"), value(QStringLiteral("%1% (threshold %2%)")
                                                                   .arg(*nvme.availableSpare)
                                                                   .arg(nvme.availableSpareThreshold.value_or(0))));
    if (nvme.temperatureCelsius)
        facts->addRow(QStringLiteral("Temperature"),
                      value(QStringLiteral("%1 °C").arg(*nvme.temperatureCelsius, 0, 'f', 0)));
    if (nvme.mediaErrors) facts->addRow(QStringLiteral("Media errors"), value(number(*nvme.mediaErrors)));
    if (nvme.powerOnHours) facts->addRow(QStringLiteral("Power-on hours"), value(number(*nvme.powerOnHours)));
    if (nvme.unsafeShutdowns) facts->addRow(QStringLiteral("Unsafe shutdowns"), value(number(*nvme.unsafeShutdowns)));
    if (nvme.dataUnitsWritten)
        facts->addRow(QStringLiteral("Written"), value(bytes(*nvme.dataUnitsWritten * NVMeHealth::bytesPerDataUnit)));
}

}  // namespace

DetailsView::DetailsView(DetailsModel& model, QWidget* parent)
    : QWidget(parent), model_(model), chooser_(new QComboBox), body_(new QScrollArea) {
    auto* page = new QVBoxLayout(this);
    page->setContentsMargins(20, 16, 20, 16);
    auto* bar = new QHBoxLayout;
    bar->addWidget(ScreenParts::title(QStringLiteral("Details")), 1);
    chooser_->setAccessibleName(QStringLiteral("Disk or volume"));
    chooser_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    bar->addWidget(chooser_);
    page->addLayout(bar);
    body_->setWidgetResizable(true);
    body_->setFrameShape(QFrame::NoFrame);
    page->addWidget(body_, 1);
    connect(chooser_, &QComboBox::activated, this, [this] { openLink(chooser_->currentData().toString()); });
    connect(&model_, &DetailsModel::changed, this, &DetailsView::rebuild);
    rebuild();
}

void DetailsView::openLink(const QString& target) {
    if (target.startsWith(diskLink())) model_.showDisk(target.mid(diskLink().size()).toStdString());
    if (target.startsWith(volumeLink())) model_.showVolume(target.mid(volumeLink().size()).toStdString());
}

void DetailsView::fillChooser() {
    const QSignalBlocker blocker(chooser_);
    chooser_->clear();
    const auto& snapshot = model_.snapshot();
    for (const auto& disk : snapshot.disks)
        chooser_->addItem(QStringLiteral("Disk: ") + text(disk.displayName()),
                          diskLink() + QString::fromStdString(disk.id));
    for (const auto& volume : snapshot.volumes)
        chooser_->addItem(QStringLiteral("Volume: ") + text(volume.name),
                          volumeLink() + QString::fromStdString(volume.id));
    chooser_->setVisible(chooser_->count() > 0);
    if (const auto& subject = model_.subject()) {
        const auto key = (subject->kind == FindingSubject::Kind::disk ? diskLink() : volumeLink()) +
                         QString::fromStdString(subject->payload);
        chooser_->setCurrentIndex(chooser_->findData(key));
    }
}

void DetailsView::rebuild() {
    fillChooser();
    auto* content = new QWidget;
    auto* page = new QVBoxLayout(content);
    page->setContentsMargins(0, 0, 0, 0);
    const auto opener = [this](QLabel* label) {
        connect(label, &QLabel::linkActivated, this, &DetailsView::openLink);
        return label;
    };
    if (const auto disk = model_.disk()) {
        auto* heading = new QHBoxLayout;
        heading->addWidget(
            new TrafficLight(toneOf(disk->smartStatus), QStringLiteral("SMART: ") + text(label(disk->smartStatus))));
        heading->addWidget(ScreenParts::heading(text(disk->displayName())), 1);
        page->addLayout(heading);
        auto* facts = form(page);
        facts->addRow(QStringLiteral("Identifier"), value(text(disk->id)));
        facts->addRow(QStringLiteral("Size"), value(bytes(disk->sizeBytes)));
        facts->addRow(QStringLiteral("Connection"), value(text(disk->connectionLabel())));
        facts->addRow(QStringLiteral("Solid state"), value(yesNo(disk->isSolidState)));
        facts->addRow(QStringLiteral("Ejectable"), value(yesNo(disk->isEjectable)));
        if (disk->partitionScheme)
            facts->addRow(QStringLiteral("Partition scheme"), value(text(*disk->partitionScheme)));
        if (disk->blockSize) facts->addRow(QStringLiteral("Block size"), value(bytes(*disk->blockSize)));
        facts->addRow(QStringLiteral("SMART"), value(text(label(disk->smartStatus))));
        if (disk->nvme) addNVMe(page, *disk->nvme);
        page->addWidget(ScreenParts::heading(QStringLiteral("Partitions")));
        if (disk->partitions.empty())
            page->addWidget(note(QStringLiteral("None reported.")));
        else {
            auto* table = ListTable::make({QStringLiteral("Identifier"), QStringLiteral("Content"),
                                           QStringLiteral("Size"), QStringLiteral("Volume")},
                                          3, {2});
            for (const auto& partition : disk->partitions)
                ListTable::addRow(table, {text(partition.id), text(partition.content), bytes(partition.sizeBytes),
                                          text(partition.volumeName.value_or(""))});
            ListTable::fitHeight(table);
            page->addWidget(table);
        }
        page->addWidget(ScreenParts::heading(QStringLiteral("Volumes")));
        const auto volumes = model_.volumesOnDisk();
        if (volumes.empty()) page->addWidget(note(QStringLiteral("No mounted volume on this disk.")));
        for (const auto& volume : volumes)
            page->addWidget(opener(link(volumeLink() + QString::fromStdString(volume.id),
                                        text(volume.name) + QStringLiteral(" — ") + text(volume.mountPoint))));
    } else if (const auto volume = model_.volume()) {
        page->addWidget(ScreenParts::heading(text(volume->name)));
        if (volume->totalBytes > 0) {
            const auto used = volume->usedFraction();
            page->addWidget(new UsageBar(used, QStringLiteral("%1% used").arg(static_cast<int>(used * 100 + 0.5))));
        }
        auto* facts = form(page);
        facts->addRow(QStringLiteral("Mount point"), value(text(volume->mountPoint)));
        facts->addRow(QStringLiteral("File system"), value(text(volume->fileSystemLabel())));
        facts->addRow(QStringLiteral("Size"), value(bytes(volume->totalBytes)));
        facts->addRow(QStringLiteral("Used"), value(bytes(volume->usedBytes())));
        facts->addRow(QStringLiteral("Available"), value(bytes(volume->availableBytes)));
        if (volume->reservedBytes) facts->addRow(QStringLiteral("Reserved"), value(bytes(*volume->reservedBytes)));
        if (const auto days = model_.daysUntilFull()) {
            auto* forecast = value(text(CapacityForecast::describeBriefly(*days)));
            forecast->setStyleSheet(QStringLiteral("color: %1").arg(Palette::tone(Tone::caution).name()));
            facts->addRow(QStringLiteral("Forecast"), forecast);
        } else {
            facts->addRow(QStringLiteral("Forecast"),
                          value(QStringLiteral("none (not enough history, or not filling)")));
        }
        facts->addRow(QStringLiteral("Internal"), value(yesNo(volume->isInternal)));
        facts->addRow(QStringLiteral("Read-only"), value(yesNo(volume->isReadOnly)));
        facts->addRow(QStringLiteral("Network"), value(yesNo(volume->isNetwork)));
        facts->addRow(QStringLiteral("Encrypted"), value(yesNo(volume->isEncrypted)));
        if (volume->bsdName) facts->addRow(QStringLiteral("Device"), value(text(*volume->bsdName)));
        if (const auto holder = model_.diskOfVolume())
            facts->addRow(QStringLiteral("Disk"),
                          opener(link(diskLink() + QString::fromStdString(holder->id), text(holder->displayName()))));
    } else {
        page->addWidget(note(model_.subject() ? QStringLiteral("This disk or volume is not in the last reading.")
                                              : QStringLiteral("Choose a disk or volume above, or on the dashboard.")));
    }
    if (model_.subject() && (model_.disk() || model_.volume())) {
        page->addWidget(ScreenParts::heading(QStringLiteral("Findings")));
        const auto findings = model_.findings();
        if (findings.empty()) page->addWidget(note(QStringLiteral("Nothing to report.")));
        for (const auto& finding : findings) page->addWidget(FindingCard::make(finding));
    }
    page->addStretch(1);
    body_->setWidget(content);
}

}  // namespace corvel::desktop
