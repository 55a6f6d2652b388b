#include "accounting/AccountingSources.h"
#include "accounting/ContainerAccounting.h"
#include "platform/macos/FileManagerVolumeProvider.h"

#include <stdexcept>

namespace corvel {
namespace {

// A Mac's volumes are accounted from their APFS container; the Linux kernel tables do not exist
// here, and every question about them says so rather than guessing.
class MacAccountingSources : public AccountingSources {
public:
    std::string mountInfo() override { throw std::runtime_error("no mount table on macOS"); }
    StatvfsFigures statvfs(const std::string&) override { throw std::runtime_error("not read on macOS"); }
    std::string swaps() override { throw std::runtime_error("no /proc/swaps on macOS"); }

    std::optional<std::int64_t> purgeableBytes(const std::string& mountPoint) override {
        for (const auto& record : FileManagerVolumeProvider().mountedVolumes())
            if (record.path == mountPoint) return ContainerAccounting::purgeableOf(record);
        return std::nullopt;
    }
};

}  // namespace

std::unique_ptr<AccountingSources> liveAccountingSources() {
    return std::make_unique<MacAccountingSources>();
}

}  // namespace corvel
