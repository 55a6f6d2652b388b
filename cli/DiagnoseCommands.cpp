// `velmora diagnose` (the findings of this machine, most serious first) and `velmora health` (the
// five health dimensions as traffic lights with the evidence behind each).
#include "DiagnoseCommands.h"

#include "Commands.h"
#include "SettingsCommands.h"
#include "common/EnumTable.h"
#include "common/Text.h"
#include "diagnostics/DiagnosticEngine.h"
#include "diagnostics/HealthAssessment.h"
#include "storage/MachineStorage.h"

#include <algorithm>
#include <fmt/format.h>

namespace corvel::cli {
namespace {

// Discovery's runner time-out, as for `status`.
constexpr double discoveryTimeoutSeconds = 20;

StorageSnapshot takeSnapshot(CliContext& context) {
    return MachineStorage::snapshot(context.runner(discoveryTimeoutSeconds), context.recording(), context.now());
}

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

std::size_t severityWidth() { return widestLabel<Severity>(); }

// `width` pads the label so that titles after it line up.
std::string severityText(Severity severity, const Style& style, std::size_t width = 0) {
    std::string text(label(severity));
    if (text.size() < width) text.append(width - text.size(), ' ');
    switch (severity) {
        case Severity::critical: return style.red(style.bold(text));
        case Severity::warning: return style.yellow(text);
        case Severity::info: return style.blue(text);
        case Severity::ok: return style.green(text);
    }
    return text;
}

// A traffic light: the dot carries the colour, the word carries the meaning without colour.
std::string lightText(HealthStatus status, const Style& style) {
    const std::string dot = "\u25CF";
    switch (status) {
        case HealthStatus::critical: return style.red(dot);
        case HealthStatus::attention: return style.yellow(dot);
        case HealthStatus::normal: return style.green(dot);
        case HealthStatus::unknown: return style.dim(dot);
    }
    return dot;
}

// Disks are known by their device id as well; a volume's id is a UUID nobody wants to read.
std::string subjectText(const Finding& finding) {
    if (finding.subject.kind == FindingSubject::Kind::disk) return finding.subjectName + " (" + finding.subject.payload + ")";
    return finding.subjectName;
}

// Severity, subject, title: "Critical  Macintosh HD: Almost out of space".
std::string headline(const Finding& finding, const Style& style) {
    return severityText(finding.severity, style, severityWidth()) + "  " + subjectText(finding) + ": " +
           style.bold(finding.title);
}

void printSource(CliContext& context, const StorageSnapshot& snapshot) {
    if (const auto* machine = context.recording()) {
        context.out() << context.style().dim("Recorded machine: " + machine->name + " (" +
                                             ISO8601::format(snapshot.capturedAt) + ")")
                      << "\n\n";
    }
}

std::string overallText(const DiagnosticReport& report, const Style& style) {
    std::vector<std::string> counts;
    // "critical" and "info" read as adjectives; only warnings take a plural.
    for (const auto severity : {Severity::critical, Severity::warning, Severity::info}) {
        if (const auto n = report.count(severity))
            counts.push_back(fmt::format("{} {}{}", n, toLower(std::string(label(severity))),
                                         severity == Severity::warning && n != 1 ? "s" : ""));
    }
    return fmt::format("Overall: {} \u00B7 health score {}/100 \u00B7 {}", severityText(report.overallSeverity(), style),
                       report.healthScore(), counts.empty() ? std::string("no findings") : join(counts, ", "));
}

void printFinding(CliContext& context, const Finding& finding) {
    const auto& style = context.style();
    auto& out = context.out();
    out << "  " << headline(finding, style) << '\n';
    out << "    " << finding.detail << '\n';
    if (finding.recommendation) out << "    " << style.dim("Recommendation:") << ' ' << *finding.recommendation << '\n';
    if (finding.evidence) out << "    " << style.dim("Evidence:") << ' ' << *finding.evidence << '\n';
    if (finding.impact) out << "    " << style.dim("Impact:") << ' ' << *finding.impact << '\n';
}

void printReport(CliContext& context, const DiagnosticReport& report) {
    context.out() << context.style().bold("Findings") << '\n';
    if (report.findings.empty()) context.out() << "  " << context.style().dim("Nothing to report.") << '\n';
    for (std::size_t i = 0; i < report.findings.size(); ++i) {
        if (i) context.out() << '\n';
        printFinding(context, report.findings[i]);
    }
    context.out() << '\n' << overallText(report, context.style()) << '\n';
}

void printDimensions(CliContext& context, const std::vector<DimensionAssessment>& health, bool withDetails) {
    const auto& style = context.style();
    const auto nameWidth = widestLabel<HealthDimension>();
    const auto statusWidth = widestLabel<HealthStatus>();
    for (const auto& assessment : health) {
        context.out() << "  " << lightText(assessment.status, style) << ' '
                      << style.bold(padded(label(assessment.dimension), nameWidth)) << "  "
                      << padded(label(assessment.status), statusWidth) << "  " << assessment.summary << '\n';
        if (!withDetails) continue;
        for (const auto& evidence : assessment.evidence) context.out() << "      " << style.dim(evidence) << '\n';
        for (const auto& finding : assessment.findings)
            context.out() << "      " << headline(finding, style) << '\n';
    }
}

}  // namespace

Diagnosis diagnose(CliContext& context, const StorageSnapshot& snapshot) {
    const CorvelSettings settings = loadSettings(context);
    Diagnosis diagnosis;
    diagnosis.report = DiagnosticEngine(settings.thresholds).evaluate(snapshot);
    diagnosis.health = HealthAssessment::assess(snapshot, diagnosis.report, {}, settings.expectedVolumes,
                                                settings.verifiedVolumes);
    return diagnosis;
}

void printHealthSummary(CliContext& context, const Diagnosis& diagnosis) {
    const auto& style = context.style();
    context.out() << style.bold("Health") << '\n';
    context.out() << "  " << overallText(diagnosis.report, style) << '\n';
    printDimensions(context, diagnosis.health, false);
    std::vector<const Finding*> actionable;
    for (const auto& finding : diagnosis.report.findings)
        if (isActionable(finding.severity)) actionable.push_back(&finding);
    if (actionable.empty()) return;
    context.out() << '\n' << style.bold("Needs attention") << '\n';
    for (const auto* finding : actionable)
        context.out() << "  " << headline(*finding, style) << '\n';
}

void addDiagnosisJson(Json& document, const Diagnosis& diagnosis) {
    document["report"] = diagnosis.report;
    document["health"] = diagnosis.health;
}

void registerDiagnoseCommands(CLI::App& app, CliContext& context) {
    auto* diagnoseCommand = app.add_subcommand("diagnose", "List the findings about this machine's disks and volumes");
    diagnoseCommand->callback([&context] {
        const auto snapshot = takeSnapshot(context);
        const auto diagnosis = diagnose(context, snapshot);
        if (context.json()) {
            context.printJson(diagnosis.report);
            return;
        }
        printSource(context, snapshot);
        printReport(context, diagnosis.report);
    });

    auto* health = app.add_subcommand("health", "Show the five health dimensions with their evidence");
    health->callback([&context] {
        const auto snapshot = takeSnapshot(context);
        const auto diagnosis = diagnose(context, snapshot);
        if (context.json()) {
            context.printJson(diagnosis.health);
            return;
        }
        printSource(context, snapshot);
        context.out() << context.style().bold("Health") << '\n';
        printDimensions(context, diagnosis.health, true);
    });
}

}  // namespace corvel::cli
