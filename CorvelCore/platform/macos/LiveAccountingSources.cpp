#include "accounting/AccountingSources.h"

#include <stdexcept>

namespace corvel {
namespace {

// A Mac's volumes are accounted from its APFS container instead; these kernel tables do not
// exist there, and every question says so rather than guessing.
class UnavailableAccountingSources : public AccountingSources {
public:
    std::string mountInfo() override { throw std::runtime_error("no mount table on macOS"); }
    StatvfsFigures statvfs(const std::string&) override { throw std::runtime_error("not read on macOS"); }
    std::string swaps() override { throw std::runtime_error("no /proc/swaps on macOS"); }
};

}  // namespace

std::unique_ptr<AccountingSources> liveAccountingSources() {
    return std::make_unique<UnavailableAccountingSources>();
}

}  // namespace corvel
