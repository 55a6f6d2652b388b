// Whether a volume may be measured, decided before any byte is written: not read-only, not a
// network volume unless the person allows it, room for the file plus a margin, and no other
// Velmora benchmark already measuring it. The facts come from BenchmarkVolume; the decision is
// pure so that every refusal is tested without the volume.
//
//   if (auto refusal = BenchmarkPreflight::check(facts, options, isBusy)) fail(refusal->message);
#pragma once

#include "benchmark/BenchmarkOptions.h"
#include "common/EnumTable.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvel {

// What the platform says about the volume holding a folder.
struct BenchmarkVolumeFacts {
    std::string mountPoint;
    std::string fileSystemType;  // "ext4", "nfs4", "apfs", "smbfs"
    std::string deviceID;        // stable while mounted: names the lock that keeps two runs apart
    bool isReadOnly = false;
    std::int64_t totalBytes = 0;
    std::int64_t availableBytes = 0;

    bool operator==(const BenchmarkVolumeFacts&) const = default;
};

enum class BenchmarkRefusalReason { readOnly, network, noSpace, busy };

template <>
struct EnumTable<BenchmarkRefusalReason> {
    static constexpr std::array<EnumEntry<BenchmarkRefusalReason>, 4> entries{{
        {BenchmarkRefusalReason::readOnly, "readOnly", "Read-only"},
        {BenchmarkRefusalReason::network, "network", "Network volume"},
        {BenchmarkRefusalReason::noSpace, "noSpace", "Not enough free space"},
        {BenchmarkRefusalReason::busy, "busy", "Already being measured"},
    }};
};
CORVEL_ENUM_JSON(BenchmarkRefusalReason)

struct BenchmarkRefusal {
    BenchmarkRefusalReason reason;
    std::string message;  // one line naming the volume

    bool operator==(const BenchmarkRefusal&) const = default;
};

namespace BenchmarkPreflight {

// Free space kept beyond the file, so that a benchmark never fills a volume others are using.
inline constexpr std::int64_t spaceMargin = std::int64_t{256} << 20;

// File system types whose figures would measure a network rather than a disk.
bool isNetworkFileSystem(std::string_view type);

std::optional<BenchmarkRefusal> check(const BenchmarkVolumeFacts& facts, const BenchmarkOptions& options, bool isBusy);

}  // namespace BenchmarkPreflight
}  // namespace corvel
