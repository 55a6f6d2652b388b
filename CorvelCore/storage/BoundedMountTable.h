// A mount table whose capacity questions cannot hang discovery: statvfs on a hard NFS mount whose
// server is gone blocks forever, so each one gets the discovery time-out and then becomes a
// warning ("… did not answer within 20 s") instead of a `velmora status` that never returns.
//
//   auto table = std::make_shared<ProcMountTable>();
//   BoundedMountTable bounded(table, std::chrono::seconds(20));
//   LinuxStorageDiscovery(runner, bounded).snapshot(now);
#pragma once

#include "storage/MountTableReading.h"

#include <chrono>
#include <memory>

namespace corvel {

class BoundedMountTable : public MountTableReading {
public:
    // `inner` is shared because an abandoned call may still be running inside it.
    BoundedMountTable(std::shared_ptr<MountTableReading> inner, std::chrono::milliseconds limit)
        : inner_(std::move(inner)), limit_(limit) {}

    std::string mountInfo() override { return inner_->mountInfo(); }
    // Throws CallTimedOut (a std::runtime_error) when the answer takes longer than the limit.
    StatvfsFigures statvfs(const std::string& mountPoint) override;

private:
    std::shared_ptr<MountTableReading> inner_;
    std::chrono::milliseconds limit_;
};

}  // namespace corvel
