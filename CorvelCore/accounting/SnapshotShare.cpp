#include "accounting/SnapshotShare.h"

#include <algorithm>

namespace corvel {
namespace {

// 5 %: below this, snapshots are the ordinary cost of having them.
constexpr std::int64_t noticeableDivisor = 20;

}  // namespace

bool SnapshotShare::isNoticeable() const {
    if (bytes <= 0 || capacityBytes <= 0) return false;
    // bytes·20 > capacity without a product that could overflow: with capacity = 20·q + r and
    // 0 ≤ r < 20, bytes = q gives at most capacity and bytes = q + 1 always more.
    return bytes > capacityBytes / noticeableDivisor;
}

double SnapshotShare::fraction() const {
    if (capacityBytes <= 0) return 0.0;
    return std::clamp(static_cast<double>(bytes) / static_cast<double>(capacityBytes), 0.0, 1.0);
}

std::optional<SnapshotShare> SnapshotShare::of(const StorageAccount& account) {
    const auto row = std::find_if(account.rows.begin(), account.rows.end(), [](const AccountingRow& candidate) {
        return candidate.part == AccountingPart::snapshots;
    });
    if (row == account.rows.end() || !row->bytes || *row->bytes <= 0 || account.snapshots.empty()) return std::nullopt;
    return SnapshotShare{account.mountPoint, account.snapshots.front().kind, account.snapshots.size(), *row->bytes,
                         account.capacityBytes};
}

}  // namespace corvel
