#include "MachineInsights.h"

#include "DockerAccess.h"
#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "insights/InsightEngine.h"
#include "space/SpaceSummary.h"

namespace corvel::cli {
namespace {

// Enough for a glance; `velmora insights` lists them all.
constexpr std::size_t topInsightCount = 3;

std::string severityBadge(Severity severity, const Style& style) {
    const std::string text(label(severity));
    switch (severity) {
        case Severity::critical:
            return style.red(style.bold(text));
        case Severity::warning:
            return style.yellow(text);
        default:
            return style.cyan(text);
    }
}

bool isWithin(const std::string& path, const std::string& folder) {
    if (folder.empty()) return false;
    if (path == folder || folder == "/") return true;
    const std::string prefix = folder.back() == '/' ? folder : folder + "/";
    return path.rfind(prefix, 0) == 0;
}

}  // namespace

MachineInsights machineInsights(CliContext& context, const StorageSnapshot& snapshot, const DiagnosticReport& report,
                                std::int64_t minimumBytes) {
    MachineInsights result;
    InsightEngine::Input input;
    input.snapshot = snapshot;
    input.report = report;

    const auto docker = readDocker(context, snapshot);
    if (docker.inventory) input.docker = docker.inventory;

    std::string problem;
    auto summary = SpaceSummary::load(context.dataDir(), &problem);
    // The data folder is this machine's: while replaying another machine, a scan of a folder that
    // is not in the recorded home describes somewhere else and must not rank the recording's space.
    if (const RecordedMachine* machine = context.recording(); summary && machine &&
                                                              !isWithin(summary->root, machine->home)) {
        result.notes.push_back("Last scan summary ignored: it covers " + summary->root +
                               ", which is not on the recorded machine");
        summary.reset();
    }
    if (summary) {
        result.scanSummary = "Space suggestions from the scan of " + summary->root + " at " +
                             ISO8601::format(summary->scannedAt) + (summary->wasCancelled ? " (partial)." : ".");
        input.topConsumers = std::move(summary->topConsumers);
        input.credentialsInTrash = std::move(summary->credentialsInTrash);
    } else if (!problem.empty()) {
        result.notes.push_back("Last scan summary ignored: " + problem);
    }

    result.insights = InsightEngine::insights(input, minimumBytes);
    return result;
}

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
        out << indent << severityBadge(insight.severity, style) << "  " << style.bold(insight.title);
        // Most titles already name their amount; say it only when one does not.
        if (insight.bytes && insight.title.find(ByteFormat::string(*insight.bytes)) == std::string::npos)
            out << "  " << style.dim(ByteFormat::string(*insight.bytes));
        out << '\n' << indent << "  " << insight.detail << '\n';
        out << indent << "  ";
        if (insight.risk) out << style.dim("Risk: " + std::string(label(*insight.risk)) + " · ");
        out << style.dim("Action: ") << insight.actionTitle
            << style.dim(" → " + std::string(label(insight.destination))) << '\n';
    }
    if (insights.size() > shown)
        context.out() << indent << style.dim(std::to_string(insights.size() - shown) + " more: velmora insights")
                      << '\n';
}

}  // namespace corvel::cli
