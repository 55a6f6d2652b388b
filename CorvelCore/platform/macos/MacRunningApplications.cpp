// Running applications on macOS: the app bundles of this user's processes, from libproc.
#include "cleanup/RunningApplications.h"

#include <libproc.h>
#include <sys/proc_info.h>
#include <unistd.h>

#include <vector>

namespace corvel {
namespace {

class LibprocRunningApplications final : public RunningApplications {
public:
    std::set<std::string> names() override {
        std::set<std::string> result;
        const int needed = ::proc_listpids(PROC_UID_ONLY, ::getuid(), nullptr, 0);
        if (needed <= 0) return result;
        // Room for processes started between the two calls.
        std::vector<pid_t> pids(static_cast<std::size_t>(needed) / sizeof(pid_t) + 64);
        const int filled =
            ::proc_listpids(PROC_UID_ONLY, ::getuid(), pids.data(), static_cast<int>(pids.size() * sizeof(pid_t)));
        if (filled <= 0) return result;
        pids.resize(static_cast<std::size_t>(filled) / sizeof(pid_t));
        std::vector<char> path(PROC_PIDPATHINFO_MAXSIZE);
        for (const pid_t pid : pids) {
            if (pid <= 0) continue;
            const int length = ::proc_pidpath(pid, path.data(), static_cast<std::uint32_t>(path.size()));
            if (length <= 0) continue;
            if (auto name = RunningApplicationNames::bundleName({path.data(), static_cast<std::size_t>(length)}))
                result.insert(std::move(*name));
        }
        return result;
    }
};

}  // namespace

std::unique_ptr<RunningApplications> systemRunningApplications() {
    return std::make_unique<LibprocRunningApplications>();
}

}  // namespace corvel
