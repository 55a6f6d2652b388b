// One check of a preflight: what was checked, whether it passed, and the detail people read.
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"

#include <string>

namespace corvel {

struct PreflightCheck {
    // The preflight produces pass and fail; warning is kept for checks that advise only.
    enum class Status { pass, warning, fail };

    std::string title;
    Status status = Status::pass;
    std::string detail;

    bool operator==(const PreflightCheck&) const = default;
};

template <>
struct EnumTable<PreflightCheck::Status> {
    static constexpr std::array<EnumEntry<PreflightCheck::Status>, 3> entries{{
        {PreflightCheck::Status::pass, "pass", "pass", Tone::good},
        {PreflightCheck::Status::warning, "warning", "warning", Tone::caution},
        {PreflightCheck::Status::fail, "fail", "fail", Tone::bad},
    }};
};
CORVEL_ENUM_JSON(PreflightCheck::Status)
CORVEL_JSON_RECORD(PreflightCheck, title, status, detail)

}  // namespace corvel
