#include "diagnostics/Finding.h"

#include <utility>

namespace corvel {

Finding Finding::make(std::string ruleID, Severity severity, FindingSubject subject, std::string subjectName,
                      std::string title, std::string detail, std::optional<std::string> recommendation,
                      std::optional<std::string> evidence, std::optional<std::string> impact) {
    const auto dimension = inferredHealthDimension(ruleID);
    return Finding{std::move(ruleID),      severity,           std::move(subject), std::move(subjectName),
                   std::move(title),       std::move(detail),  std::move(recommendation), dimension,
                   std::move(evidence),    std::move(impact)};
}

std::string Finding::id() const { return ruleID + "|" + subject.id(); }

}  // namespace corvel

namespace {

void combine(std::size_t& seed, std::size_t value) { seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2); }

std::size_t hashOptional(const std::optional<std::string>& text) {
    return text ? std::hash<std::string>{}(*text) : 0x5bd1e995U;
}

}  // namespace

std::size_t std::hash<corvel::Finding>::operator()(const corvel::Finding& finding) const noexcept {
    std::size_t seed = std::hash<std::string>{}(finding.ruleID);
    combine(seed, static_cast<std::size_t>(finding.severity));
    combine(seed, std::hash<corvel::FindingSubject>{}(finding.subject));
    combine(seed, std::hash<std::string>{}(finding.subjectName));
    combine(seed, std::hash<std::string>{}(finding.title));
    combine(seed, std::hash<std::string>{}(finding.detail));
    combine(seed, hashOptional(finding.recommendation));
    combine(seed, static_cast<std::size_t>(finding.dimension));
    combine(seed, hashOptional(finding.evidence));
    combine(seed, hashOptional(finding.impact));
    return seed;
}
