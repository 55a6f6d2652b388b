#include "accounting/AccountingSources.h"
#include "platform/linux/ProcMountTable.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace corvel {
namespace {

class ProcAccountingSources : public AccountingSources {
public:
    std::string mountInfo() override { return mountTable_.mountInfo(); }
    StatvfsFigures statvfs(const std::string& mountPoint) override { return mountTable_.statvfs(mountPoint); }

    std::string swaps() override {
        std::ifstream file("/proc/swaps");
        if (!file) throw std::runtime_error("cannot open /proc/swaps");
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

private:
    ProcMountTable mountTable_;
};

}  // namespace

std::unique_ptr<AccountingSources> liveAccountingSources() {
    return std::make_unique<ProcAccountingSources>();
}

}  // namespace corvel
