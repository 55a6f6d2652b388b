#include "insights/Insight.h"

namespace corvel {

void to_json(Json& j, const Insight& insight) {
    j = Json{{"id", insight.id},
             {"kind", insight.kind},
             {"severity", insight.severity},
             {"title", insight.title},
             {"detail", insight.detail}};
    putOptional(j, "bytes", insight.bytes);
    putOptional(j, "risk", insight.risk);
    j["destination"] = insight.destination;
    j["actionTitle"] = insight.actionTitle;
}

void from_json(const Json& j, Insight& insight) {
    insight.id = required<std::string>(j, "id");
    insight.kind = required<Insight::Kind>(j, "kind");
    insight.severity = required<Severity>(j, "severity");
    insight.title = required<std::string>(j, "title");
    insight.detail = required<std::string>(j, "detail");
    insight.bytes = optionalValue<std::int64_t>(j, "bytes");
    insight.risk = optionalValue<CleanupRisk>(j, "risk");
    insight.destination = required<Insight::Destination>(j, "destination");
    insight.actionTitle = required<std::string>(j, "actionTitle");
}

}  // namespace corvel
