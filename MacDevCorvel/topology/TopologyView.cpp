#include "topology/TopologyView.h"

#include "common/EnumTable.h"
#include "common/Text.h"
#include "diagnostics/LinkTransport.h"
#include "topology/TopologyAssembly.h"
#include "topology/TopologyModel.h"
#include "widgets/FindingCard.h"
#include "widgets/ListTable.h"
#include "widgets/Palette.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QVBoxLayout>
#include <algorithm>

namespace corvel::desktop {
namespace {

using ScreenParts::note;
using ScreenParts::text;

QString diskHeading(const TopologyModel& model, const DeviceTopology& topology) {
    const auto name = model.diskName(topology.diskID);
    QString heading = text(name);
    if (name != topology.diskID) heading += QStringLiteral(" (%1)").arg(text(topology.diskID));
    QStringList facts;
    if (topology.transport) {
        const auto transport = enumFromRaw<LinkTransport>(*topology.transport);
        facts << (transport ? text(label(*transport)) : text(*topology.transport));
    }
    if (topology.effectiveLinkBitsPerSecond)
        facts << text(linkSpeedText(*topology.effectiveLinkBitsPerSecond)) + QStringLiteral(" effective");
    if (!topology.isInspected()) facts << QStringLiteral("not inspected");
    if (!facts.isEmpty()) heading += QStringLiteral(" · ") + facts.join(QStringLiteral(" · "));
    return heading;
}

QString notesOf(const TopologyNode& node) {
    // PCIe nodes already name what they support among their qualifiers.
    const bool named = std::any_of(node.qualifiers.begin(), node.qualifiers.end(),
                                   [](const std::string& q) { return startsWith(q, "supports "); });
    QStringList notes;
    if (!named) {
        const auto capability = TopologyAssembly::capabilityText(node);
        if (!capability.empty()) notes << text(capability);
    }
    for (const auto& qualifier : node.qualifiers) notes << text(qualifier);
    return notes.join(QStringLiteral(", "));
}

QWidget* pathTree(const DeviceTopology& topology) {
    auto* tree = ListTable::make(
        {QStringLiteral("Device"), QStringLiteral("Kind"), QStringLiteral("Link"), QStringLiteral("Notes")}, 3);
    tree->setRootIsDecorated(true);
    tree->setAlternatingRowColors(false);
    QTreeWidgetItem* parent = nullptr;
    for (std::size_t hop = 0; hop < topology.path.size(); ++hop) {
        const auto& node = topology.path[hop];
        auto* item = ListTable::addRow(
            tree, {text(node.label), text(node.kind), text(TopologyAssembly::linkText(topology, hop)), notesOf(node)},
            parent);
        if (parent) parent->setExpanded(true);
        parent = item;
    }
    ListTable::fitHeight(tree);
    return tree;
}

}  // namespace

TopologyView::TopologyView(TopologyModel& model, QWidget* parent) : QScrollArea(parent), model_(model) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    connect(&model_, &TopologyModel::changed, this, &TopologyView::rebuild);
    rebuild();
}

void TopologyView::rebuild() {
    auto* content = new QWidget;
    auto* page = ToolParts::page(content, QStringLiteral("Topology"));
    if (!model_.isLoaded()) {
        page->addWidget(note(QStringLiteral("Reading the connections…")));
        page->addStretch(1);
        setWidget(content);
        return;
    }
    const auto& reading = model_.reading();
    if (reading.topologies.empty()) page->addWidget(note(QStringLiteral("No physical disks.")));
    for (const auto& topology : reading.topologies) {
        page->addWidget(ScreenParts::heading(diskHeading(model_, topology)));
        if (topology.path.empty())
            page->addWidget(note(QStringLiteral("Path not found.")));
        else
            page->addWidget(pathTree(topology));
        for (const auto& other : topology.branches)
            page->addWidget(note(QStringLiteral("Shares the path with: ") + text(other.label)));
    }
    page->addWidget(ScreenParts::heading(QStringLiteral("Findings")));
    bool any = false;
    for (const auto& topology : reading.topologies)
        for (const auto& finding : topology.findings) {
            page->addWidget(FindingCard::make(finding));
            any = true;
        }
    if (!any) page->addWidget(note(QStringLiteral("No link findings.")));
    if (!reading.warnings.empty()) {
        page->addWidget(ScreenParts::heading(QStringLiteral("Warnings")));
        for (const auto& warning : reading.warnings) page->addWidget(ScreenParts::wrapped(text(warning)));
    }
    page->addStretch(1);
    setWidget(content);
}

}  // namespace corvel::desktop
