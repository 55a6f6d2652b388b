#include "report/TreemapHtml.h"

#include "common/ByteFormat.h"
#include "report/HtmlText.h"
#include "report/ReportPalette.h"
#include "report/Treemap.h"

#include <fmt/format.h>

#include <optional>
#include <unordered_map>
#include <vector>

namespace corvel::TreemapHtml {
namespace {

// A panel to draw: a folder with children, and the panels above it for the breadcrumb.
struct Panel {
    const SpaceNode* node = nullptr;
    std::vector<std::size_t> ancestors;  // panel numbers, root first
};

// Numbers every drawable folder in depth-first order: the root is 0.
void collectPanels(const SpaceNode& node, std::vector<std::size_t> ancestors, std::vector<Panel>& panels) {
    const std::size_t number = panels.size();
    panels.push_back({&node, ancestors});
    ancestors.push_back(number);
    for (const auto& child : node.children) {
        if (!child.children.empty()) collectPanels(child, ancestors, panels);
    }
}

// Short enough to fit a tile of this width at the label's size (about 7 units a character).
std::string fittedLabel(const std::string& name, double tileWidth) {
    const auto room = static_cast<std::size_t>(std::max(0.0, (tileWidth - 8) / 7));
    if (room < 3) return {};
    // Count characters, not bytes, so a multi-byte name is cut on a character boundary.
    std::size_t characters = 0;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if ((static_cast<unsigned char>(name[i]) & 0xC0) != 0x80) {
            if (characters == room - 1 && i + 1 < name.size()) {
                std::size_t rest = 0;
                for (std::size_t j = i; j < name.size(); ++j)
                    if ((static_cast<unsigned char>(name[j]) & 0xC0) != 0x80) ++rest;
                if (rest > 1) return name.substr(0, i) + "…";
            }
            ++characters;
        }
    }
    return name;
}

std::string tile(const SpaceNode& node, const TreemapRect& rect, std::optional<std::size_t> zoomPanel) {
    std::string out;
    const std::string details = HtmlText::escape(tileDetails(node));
    if (zoomPanel) out += fmt::format("<a href=\"#tm-{}\">", *zoomPanel);
    out += fmt::format(
        "<rect class=\"tile{}\" x=\"{:.2f}\" y=\"{:.2f}\" width=\"{:.2f}\" height=\"{:.2f}\" fill=\"{}\" "
        "data-bytes=\"{}\" data-path=\"{}\"><title>{}</title></rect>",
        node.isAggregate() ? " folded" : "", rect.x, rect.y, rect.width, rect.height,
        ReportPalette::categoryColour(node.classification.category), node.allocatedBytes, HtmlText::escape(node.path),
        details);
    const std::string name = node.isAggregate() ? "(" + node.name + ")" : node.name;
    const std::string label = rect.height >= 16 ? fittedLabel(name, rect.width) : std::string();
    if (!label.empty()) {
        out +=
            fmt::format("<text x=\"{:.2f}\" y=\"{:.2f}\">{}</text>", rect.x + 4, rect.y + 13, HtmlText::escape(label));
    }
    if (zoomPanel) out += "</a>";
    return out;
}

std::string breadcrumb(const Panel& panel, const std::vector<Panel>& panels) {
    std::string out = "<nav class=\"crumbs\" aria-label=\"Treemap position\">";
    for (const std::size_t above : panel.ancestors) {
        out += fmt::format("<a href=\"#tm-{}\">{}</a> › ", above, HtmlText::escape(panels[above].node->name));
    }
    out += "<strong>" + HtmlText::escape(panel.node->name) + "</strong> " +
           HtmlText::escape(ByteFormat::string(panel.node->allocatedBytes)) + "</nav>";
    return out;
}

std::string panelHtml(std::size_t number, const std::vector<Panel>& panels,
                      const std::vector<std::size_t>& panelOfChild) {
    const Panel& panel = panels[number];
    const SpaceNode& node = *panel.node;
    std::vector<std::int64_t> sizes;
    sizes.reserve(node.children.size());
    for (const auto& child : node.children) sizes.push_back(child.allocatedBytes);
    const auto rects = Treemap::layout(sizes, {0, 0, width, height, 0});

    std::string out = fmt::format("<div class=\"tm-panel{}\" id=\"tm-{}\">", number == 0 ? " tm-root" : "", number);
    out += breadcrumb(panel, panels);
    out += fmt::format(
        "<svg class=\"treemap\" viewBox=\"0 0 {} {}\" role=\"img\" aria-label=\"Treemap of {}\" "
        "preserveAspectRatio=\"xMidYMid meet\">",
        width, height, HtmlText::escape(node.path));
    for (const auto& rect : rects) {
        const SpaceNode& child = node.children[rect.index];
        const std::size_t childPanel = panelOfChild[rect.index];
        out += tile(child, rect, childPanel == 0 ? std::nullopt : std::optional<std::size_t>(childPanel));
    }
    if (rects.empty()) out += "<text x=\"12\" y=\"24\">Nothing measured here.</text>";
    out += "</svg></div>\n";
    return out;
}

}  // namespace

std::string tileDetails(const SpaceNode& node) {
    std::string text = node.isAggregate() ? node.name + " in " + node.path : node.path;
    text += "\nAllocated: " + ByteFormat::string(node.allocatedBytes);
    text += "\nExclusive: " + ByteFormat::string(node.exclusiveBytes);
    text += "\nCategory: " + std::string(label(node.classification.category));
    text += "\nRisk: " + std::string(label(node.classification.risk));
    if (node.accessDenied) text += "\nCould not be read completely";
    return text;
}

std::string render(const SpaceNode& tree) {
    std::vector<Panel> panels;
    collectPanels(tree, {}, panels);
    std::unordered_map<const SpaceNode*, std::size_t> panelOf;
    for (std::size_t number = 0; number < panels.size(); ++number) panelOf[panels[number].node] = number;
    std::vector<std::string> rendered(panels.size());
    for (std::size_t number = 0; number < panels.size(); ++number) {
        const SpaceNode& node = *panels[number].node;
        // 0 for a child without a panel of its own: the root's panel is never a child's.
        std::vector<std::size_t> panelOfChild(node.children.size(), 0);
        for (std::size_t i = 0; i < node.children.size(); ++i) {
            if (auto found = panelOf.find(&node.children[i]); found != panelOf.end()) panelOfChild[i] = found->second;
        }
        rendered[number] = panelHtml(number, panels, panelOfChild);
    }
    std::string out = "<div class=\"tm-panels\">\n";
    for (std::size_t number = 1; number < rendered.size(); ++number) out += rendered[number];
    out += rendered[0];
    out += "</div>\n";
    return out;
}

}  // namespace corvel::TreemapHtml
