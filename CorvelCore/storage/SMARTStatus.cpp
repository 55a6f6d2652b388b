#include "storage/SMARTStatus.h"

#include "common/Text.h"

namespace corvel {

SMARTStatus smartStatusFromDiskutil(const std::optional<std::string>& text) {
    if (!text) return SMARTStatus::unknown;
    const std::string lower = toLower(*text);
    if (lower == "verified") return SMARTStatus::verified;
    if (lower == "failing" || lower == "about to fail") return SMARTStatus::failing;
    if (lower == "not supported") return SMARTStatus::notSupported;
    return SMARTStatus::unknown;
}

}  // namespace corvel
