#include "accounting/StorageAccounting.h"

#include "common/CheckedArithmetic.h"
#include "common/PathText.h"

#include <limits>

namespace corvel::StorageAccounting {
namespace {

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

// Both operands are non-negative here, so only the upper bound can be crossed.
bool fitsSum(std::int64_t a, std::int64_t b) {
    return b <= largest - a;
}

}  // namespace

std::optional<std::int64_t> sum(const std::vector<std::optional<std::int64_t>>& sizes) {
    std::int64_t total = 0;
    for (const auto& size : sizes) {
        if (!size || *size < 0 || !fitsSum(total, *size)) return std::nullopt;
        total = checkedAdd(total, *size);
    }
    return total;
}

std::optional<AccountingRow> remainder(std::int64_t usedBytes, const std::vector<AccountingRow>& parts) {
    std::vector<std::optional<std::int64_t>> known;
    for (const auto& part : parts)
        if (part.bytes) known.push_back(part.bytes);
    const auto explained = sum(known);
    if (!explained || usedBytes < 0) return std::nullopt;
    // Both sides are non-negative, so the difference always fits.
    const std::int64_t rest = checkedSubtract(usedBytes, *explained);
    AccountingRow row;
    row.source = "remainder";
    if (rest < 0) {
        row.part = AccountingPart::countedTwice;
        // −(−2^63) does not exist, but a rest this negative cannot arise from non-negative sides.
        row.bytes = checkedSubtract(0, rest);
    } else {
        row.part = AccountingPart::notExplained;
        row.bytes = rest;
    }
    return row;
}

std::optional<std::int64_t> btrfsMetadataBytes(const std::vector<BtrfsSpaceLine>& lines) {
    std::int64_t total = 0;
    for (const auto& line : lines) {
        if (line.type != "Metadata" && line.type != "System") continue;
        const std::int64_t copies = BtrfsParser::profileCopies(line.profile);
        if (line.usedBytes < 0 || line.usedBytes > largest / copies) return std::nullopt;
        const std::int64_t bytes = checkedMultiply(line.usedBytes, copies);
        if (!fitsSum(total, bytes)) return std::nullopt;
        total = checkedAdd(total, bytes);
    }
    return total;
}

std::optional<std::string> mountPointOf(std::string_view path, const std::vector<std::string>& mountPoints) {
    std::optional<std::string> best;
    for (const auto& mountPoint : mountPoints) {
        if (!isWithin(path, mountPoint)) continue;
        if (!best || mountPoint.size() > best->size()) best = mountPoint;
    }
    return best;
}

std::optional<std::string> subvolumeLocation(std::string_view mountPoint, std::string_view mountRoot,
                                             std::string_view subvolumePath) {
    // Both sides as absolute paths within the file system, so that isWithin can compare them.
    const std::string subvolume = normalPath("/" + std::string(subvolumePath));
    const std::string root = normalPath(mountRoot.empty() ? std::string_view("/") : mountRoot);
    if (!isStrictlyWithin(subvolume, root)) return std::nullopt;
    const std::string below = root == "/" ? subvolume.substr(1) : subvolume.substr(root.size() + 1);
    return joinPath(mountPoint, below);
}

}  // namespace corvel::StorageAccounting
