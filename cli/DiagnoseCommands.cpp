// `velmora diagnose` (the findings of this machine, most serious first) and `velmora health` (the
// five health dimensions as traffic lights with the evidence behind each).
#include "DiagnoseCommands.h"

#include "Commands.h"
#include "ScreenCommands.h"
#include "SettingsCommands.h"
#include "common/EnumTable.h"
#include "common/Text.h"
#include "machine/MachineTopology.h"

#include <fmt/format.h>
#include <algorithm>

namespace corvel::cli {
namespace {

template <class E>
std::size_t widestLabel() {
    std::size_t widest = 0;
    for (const auto& entry : allEntries<E>()) widest = std::max(widest, displayWidth(entry.label));
    return widest;
}

std::string padded(std::string_view text, std::size_t width) {
    std::string result(text);
    result.append(width > displayWidth(text) ? width - displayWidth(text) : 0, ' ');
    return result;
}

std::size_t severityWidth() {
    return widestLabel<Severity>();
}

// `width` pads the label so that titles after it line up.
std::string severityText(Severity severity, const Style& style, std::size_t width = 0) {
    return style.tone(toneOf(severity), padded(label(severity), width));
}

// A traffic light: the dot carries the colour, the word carries the meaning without colour.
std::string lightText(HealthStatus status, const Style& style) {
    return style.tone(toneOf(status), "\u25CF");
}

// Disks are known by their device id as well; a volume's id is a UUID nobody wants to read.
std::string subjectText(const Finding& finding) {
    if (finding.subject.kind == FindingSubject::Kind::disk)
        return finding.subjectName + " (" + finding.subject.payload + ")";
    return finding.subjectName;
}

// Severity, subject, title: "Critical  Macintosh HD: Almost out of space".
std::string headline(const Finding& finding, const Style& style) {
    return severityText(finding.severity, style, severityWidth()) + "  " + subjectText(finding) + ": " +
           style.bold(finding.title);
}

std::string overallText(const MachineDiagnosis& diagnosis, const Style& style) {
    const auto& report = diagnosis.report;
    const auto overall = diagnosis.overall();
    std::string judgement = severityText(overall.severity, style);
    if (overall.worstDimension) judgement += " (" + std::string(label(*overall.worstDimension)) + ")";
    std::vector<std::string> counts;
    // "critical" and "info" read as adjectives; only warnings take a plural.
    for (const auto severity : {Severity::critical, Severity::warning, Severity::info}) {
        if (const auto n = report.count(severity))
            counts.push_back(fmt::format("{} {}{}", n, toLower(std::string(label(severity))),
                                         severity == Severity::warning && n != 1 ? "s" : ""));
    }
    return fmt::format("Overall: {} \u00B7 health score {}/100 \u00B7 {}", judgement, report.healthScore(),
                       counts.empty() ? std::string("no findings") : join(counts, ", "));
}

void printReport(CliContext& context, const MachineDiagnosis& diagnosis) {
    const auto& report = diagnosis.report;
    context.out() << context.style().bold("Findings") << '\n';
    if (report.findings.empty()) context.out() << "  " << context.style().dim("Nothing to report.") << '\n';
    for (std::size_t i = 0; i < report.findings.size(); ++i) {
        if (i) context.out() << '\n';
        printFinding(context, report.findings[i]);
    }
    context.out() << '\n' << overallText(diagnosis, context.style()) << '\n';
}

void printDimensions(CliContext& context, const std::vector<DimensionAssessment>& health, bool withDetails) {
    const auto& style = context.style();
    const auto nameWidth = widestLabel<HealthDimension>();
    const auto statusWidth = widestLabel<HealthStatus>();
    for (const auto& assessment : health) {
        context.out() << "  " << lightText(assessment.status, style) << ' '
                      << style.bold(padded(label(assessment.dimension), nameWidth)) << "  "
                      << padded(label(assessment.status), statusWidth) << "  " << withCommandHints(assessment.summary)
                      << '\n';
        if (!withDetails) continue;
        for (const auto& evidence : assessment.evidence) context.out() << "      " << style.dim(evidence) << '\n';
        for (const auto& finding : assessment.findings) context.out() << "      " << headline(finding, style) << '\n';
    }
}

}  // namespace

void printFinding(CliContext& context, const Finding& finding) {
    const auto& style = context.style();
    auto& out = context.out();
    out << "  " << headline(finding, style) << '\n';
    out << "    " << finding.detail << '\n';
    if (finding.recommendation) out << "    " << style.dim("Recommendation:") << ' ' << *finding.recommendation << '\n';
    if (finding.evidence) out << "    " << style.dim("Evidence:") << ' ' << *finding.evidence << '\n';
    if (finding.impact) out << "    " << style.dim("Impact:") << ' ' << *finding.impact << '\n';
}

MachineDiagnosis diagnose(CliContext& context, const StorageSnapshot& snapshot,
                          const std::vector<DeviceTopology>& topologies) {
    return MachineDiagnosis::of(snapshot, loadSettings(context), topologies);
}

void printHealthSummary(CliContext& context, const MachineDiagnosis& diagnosis) {
    const auto& style = context.style();
    context.out() << style.bold("Health") << '\n';
    context.out() << "  " << overallText(diagnosis, style) << '\n';
    printDimensions(context, diagnosis.health, false);
    std::vector<const Finding*> actionable;
    for (const auto& finding : diagnosis.report.findings)
        if (isActionable(finding.severity)) actionable.push_back(&finding);
    if (actionable.empty()) return;
    context.out() << '\n' << style.bold("Needs attention") << '\n';
    for (const auto* finding : actionable) context.out() << "  " << headline(*finding, style) << '\n';
}

void addDiagnosisJson(Json& document, const MachineDiagnosis& diagnosis) {
    document["report"] = diagnosis.report;
    document["health"] = diagnosis.health;
}

void registerDiagnoseCommands(CLI::App& app, CliContext& context) {
    auto* diagnoseCommand = app.add_subcommand("diagnose", "List the findings about this machine's disks and volumes");
    diagnoseCommand->callback([&context] {
        const auto snapshot = context.machine().snapshot();
        const auto diagnosis = diagnose(context, snapshot);
        if (context.json()) {
            context.printJson(diagnosis.report);
            return;
        }
        context.printSource();
        printReport(context, diagnosis);
    });

    auto* health = app.add_subcommand("health", "Show the five health dimensions with their evidence");
    health->callback([&context] {
        const auto snapshot = context.machine().snapshot();
        const auto topology = MachineTopology::read(context.machine(), snapshot);
        const auto diagnosis = diagnose(context, snapshot, topology.topologies);
        if (context.json()) {
            context.printJson(diagnosis.health);
            return;
        }
        context.printSource();
        context.out() << context.style().bold("Health") << '\n';
        printDimensions(context, diagnosis.health, true);
    });
}

}  // namespace corvel::cli
