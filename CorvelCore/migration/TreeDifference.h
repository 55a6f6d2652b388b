// What a verification of a copied tree found: one entry per path that is not the same on both
// sides, and the whole comparison with its verdict.
//
//   TreeDifference{"src/main.c", DifferenceKind::contentDiffers, "SHA-256 3f2a… against 9b1c…"}
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace corvel {

enum class DifferenceKind {
    missing,
    extra,
    typeDiffers,
    sizeDiffers,
    contentDiffers,
    linkTargetDiffers,
    modeDiffers,
    unreadable,
};

template <>
struct EnumTable<DifferenceKind> {
    static constexpr std::array<EnumEntry<DifferenceKind>, 8> entries{{
        {DifferenceKind::missing, "missing", "missing", Tone::bad},
        {DifferenceKind::extra, "extra", "extra", Tone::caution},
        {DifferenceKind::typeDiffers, "typeDiffers", "type differs", Tone::bad},
        {DifferenceKind::sizeDiffers, "sizeDiffers", "size differs", Tone::bad},
        {DifferenceKind::contentDiffers, "contentDiffers", "content differs", Tone::bad},
        {DifferenceKind::linkTargetDiffers, "linkTargetDiffers", "link target differs", Tone::bad},
        {DifferenceKind::modeDiffers, "modeDiffers", "mode differs", Tone::caution},
        {DifferenceKind::unreadable, "unreadable", "unreadable", Tone::caution},
    }};
};
CORVEL_ENUM_JSON(DifferenceKind)

struct TreeDifference {
    std::string path;  // relative to both roots; "" for a root itself
    DifferenceKind kind = DifferenceKind::missing;
    std::string detail;

    bool operator==(const TreeDifference&) const = default;
};
CORVEL_JSON_RECORD(TreeDifference, path, kind, detail)

struct TreeComparison {
    std::string source;
    std::string copy;
    std::int64_t entriesCompared = 0;         // paths present on both sides
    std::int64_t filesHashed = 0;             // regular files whose contents were compared
    std::int64_t bytesHashed = 0;             // on both sides together
    std::vector<TreeDifference> differences;  // sorted by path
    std::vector<std::string> skipped;         // FIFOs, sockets and devices: listed, never opened
    bool wasCancelled = false;
    bool isIdentical = false;  // nothing differs, nothing unreadable, not cancelled

    bool operator==(const TreeComparison&) const = default;
};
CORVEL_JSON_RECORD(TreeComparison, source, copy, entriesCompared, filesHashed, bytesHashed, differences, skipped,
                   wasCancelled, isIdentical)

}  // namespace corvel
