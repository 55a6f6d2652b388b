// A disk's self-monitoring verdict, as the disk tool (or smartctl on Linux) reports it.
#pragma once

#include "common/EnumTable.h"

#include <optional>
#include <string>

namespace corvel {

enum class SMARTStatus { verified, failing, notSupported, unknown };

template <>
struct EnumTable<SMARTStatus> {
    static constexpr std::array<EnumEntry<SMARTStatus>, 4> entries{{
        {SMARTStatus::verified, "verified", "Verified", Tone::good},
        {SMARTStatus::failing, "failing", "Failing", Tone::bad},
        {SMARTStatus::notSupported, "notSupported", "Not Supported", Tone::muted},
        {SMARTStatus::unknown, "unknown", "Unknown", Tone::muted},
    }};
};

CORVEL_ENUM_JSON(SMARTStatus)

// The disk tool's text: lower-cased without trimming, so " Verified" is not a verdict we trust.
SMARTStatus smartStatusFromDiskutil(const std::optional<std::string>& text);

}  // namespace corvel
