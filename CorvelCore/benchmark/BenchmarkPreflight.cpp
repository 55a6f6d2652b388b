#include "benchmark/BenchmarkPreflight.h"

#include "common/ByteFormat.h"
#include "common/CheckedArithmetic.h"

#include <fmt/format.h>
#include <algorithm>
#include <array>

namespace corvel::BenchmarkPreflight {

bool isNetworkFileSystem(std::string_view type) {
    // Linux mount table names and macOS f_fstypename values; FUSE file systems say what they are
    // after the dot ("fuse.sshfs").
    static constexpr std::array<std::string_view, 17> network{
        "nfs",  "nfs4",       "cifs",  "smb",       "smb3",           "smbfs", "afpfs",  "webdav",     "9p",
        "ceph", "fuse.sshfs", "sshfs", "glusterfs", "fuse.glusterfs", "afs",   "lustre", "fuse.rclone"};
    return std::find(network.begin(), network.end(), type) != network.end();
}

std::optional<BenchmarkRefusal> check(const BenchmarkVolumeFacts& facts, const BenchmarkOptions& options, bool isBusy) {
    const std::string& volume = facts.mountPoint;
    if (facts.isReadOnly)
        return BenchmarkRefusal{BenchmarkRefusalReason::readOnly,
                                fmt::format("{} is read-only: the benchmark has to write its file there", volume)};
    if (!options.allowNetwork && isNetworkFileSystem(facts.fileSystemType))
        return BenchmarkRefusal{
            BenchmarkRefusalReason::network,
            fmt::format("{} is a network volume ({}): its figures would measure the network, not a disk", volume,
                        facts.fileSystemType)};
    const std::int64_t needed = checkedAdd(options.usableFileBytes(), spaceMargin);
    if (facts.availableBytes < needed)
        return BenchmarkRefusal{
            BenchmarkRefusalReason::noSpace,
            fmt::format("{} has {} free; the benchmark needs {} for its file plus {} to spare", volume,
                        ByteFormat::string(facts.availableBytes), ByteFormat::string(options.usableFileBytes()),
                        ByteFormat::string(spaceMargin))};
    if (isBusy)
        return BenchmarkRefusal{BenchmarkRefusalReason::busy,
                                fmt::format("{} is already being measured by another Velmora benchmark", volume)};
    return std::nullopt;
}

}  // namespace corvel::BenchmarkPreflight
