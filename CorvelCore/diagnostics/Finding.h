// One rule that fired for one disk or volume: what is wrong, why we think so (evidence), what it
// costs if ignored (impact) and what to do about it. Findings are plain values so reports can be
// stored, compared and sent to the agent unchanged.
//
//   auto finding = Finding::make("volume.readOnly", Severity::warning, FindingSubject::volume(id),
//                                "Backup", "Mounted read-only", "…");
//   finding.dimension == HealthDimension::fileSystem;  finding.id() == "volume.readOnly|volume:" + id
#pragma once

#include "common/Json.h"
#include "diagnostics/FindingSubject.h"
#include "diagnostics/HealthDimension.h"
#include "diagnostics/Severity.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace corvel {

struct Finding {
    std::string ruleID;  // stable, dotted: "disk.smart", "volume.freeSpace", "topology.linkSpeed"
    Severity severity = Severity::ok;
    FindingSubject subject;
    std::string subjectName;  // the disk's display name or the volume's name
    std::string title;
    std::string detail;
    std::optional<std::string> recommendation;
    HealthDimension dimension = HealthDimension::fileSystem;
    std::optional<std::string> evidence;
    std::optional<std::string> impact;

    // Builds a finding whose dimension is inferred from its rule id, which is how every rule of
    // this code base creates one, so that a rule cannot land in the wrong dimension by mistake.
    static Finding make(std::string ruleID, Severity severity, FindingSubject subject, std::string subjectName,
                        std::string title, std::string detail, std::optional<std::string> recommendation = {},
                        std::optional<std::string> evidence = {}, std::optional<std::string> impact = {});

    // ruleID + "|" + subject id: the identity used to de-duplicate and to track alerts.
    std::string id() const;

    bool operator==(const Finding&) const = default;
};

CORVEL_JSON_RECORD(Finding, ruleID, severity, subject, subjectName, title, detail, recommendation, dimension, evidence, impact)

}  // namespace corvel

template <>
struct std::hash<corvel::Finding> {
    std::size_t operator()(const corvel::Finding& finding) const noexcept;
};
