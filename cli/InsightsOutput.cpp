#include "InsightsOutput.h"

#include "ScreenCommands.h"
#include "common/ByteFormat.h"
#include "common/EnumTable.h"

namespace corvel::cli {
namespace {

// Enough for a glance; `velmora insights` lists them all.
constexpr std::size_t topInsightCount = 3;

}  // namespace

void printTopInsights(CliContext& context, const MachineInsights& insights) {
    context.out() << '\n' << context.style().bold("Insights") << '\n';
    printInsights(context, insights.insights, topInsightCount, "  ");
    for (const auto& note : insights.notes) context.out() << "  " << context.style().yellow("! ") << note << '\n';
}

void printInsights(CliContext& context, const std::vector<Insight>& insights, std::size_t limit,
                   const std::string& indent) {
    const auto& style = context.style();
    std::size_t shown = 0;
    for (const auto& insight : insights) {
        if (shown == limit) break;
        ++shown;
        auto& out = context.out();
        out << indent << style.tone(toneOf(insight.severity), label(insight.severity)) << "  "
            << style.bold(insight.title);
        // Most titles already name their amount; say it only when one does not.
        if (insight.bytes && insight.title.find(ByteFormat::string(*insight.bytes)) == std::string::npos)
            out << "  " << style.dim(ByteFormat::string(*insight.bytes));
        out << '\n' << indent << "  " << insight.detail << '\n';
        out << indent << "  ";
        if (insight.risk) out << style.dim("Risk: " + std::string(label(*insight.risk)) + " · ");
        out << style.dim("Action: ") << insight.actionTitle
            << style.dim(" \u2192 " + std::string(label(insight.destination)) + " (" +
                         commandFor(insight.destination) + ")")
            << '\n';
    }
    if (insights.size() > shown)
        context.out() << indent << style.dim(std::to_string(insights.size() - shown) + " more: velmora insights")
                      << '\n';
}

}  // namespace corvel::cli
