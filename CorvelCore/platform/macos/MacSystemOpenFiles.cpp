// Open files on macOS: the working folder and the vnode file descriptors of this user's
// processes, from libproc (the same source as the running applications).
#include "cleanup/SystemOpenFiles.h"
#include "common/PathText.h"

#include <libproc.h>
#include <sys/proc_info.h>
#include <unistd.h>

#include <vector>

namespace corvel {
namespace {

std::vector<pid_t> userProcesses() {
    const int needed = ::proc_listpids(PROC_UID_ONLY, ::getuid(), nullptr, 0);
    if (needed <= 0) return {};
    // Room for processes started between the two calls.
    std::vector<pid_t> pids(static_cast<std::size_t>(needed) / sizeof(pid_t) + 64);
    const int filled =
        ::proc_listpids(PROC_UID_ONLY, ::getuid(), pids.data(), static_cast<int>(pids.size() * sizeof(pid_t)));
    if (filled <= 0) return {};
    pids.resize(static_cast<std::size_t>(filled) / sizeof(pid_t));
    return pids;
}

class LibprocOpenFiles final : public OpenFileListing {
public:
    std::vector<ProcessUsage> usages(const std::string& path) override {
        std::vector<ProcessUsage> found;
        const std::string folder = normalPath(path);
        for (const pid_t pid : userProcesses()) {
            if (pid <= 0) continue;
            proc_bsdshortinfo info{};
            if (::proc_pidinfo(pid, PROC_PIDT_SHORTBSDINFO, 0, &info, sizeof info) != sizeof info) continue;
            const std::string command = info.pbsi_comm;
            const auto keep = [&](const char* target, ProcessUsage::Kind kind) {
                if (target[0] == '/' && isWithin(target, folder))
                    found.push_back({static_cast<std::int32_t>(pid), command, target, kind});
            };
            proc_vnodepathinfo vnodes{};
            if (::proc_pidinfo(pid, PROC_PIDVNODEPATHINFO, 0, &vnodes, sizeof vnodes) == sizeof vnodes)
                keep(vnodes.pvi_cdir.vip_path, ProcessUsage::Kind::workingDirectory);
            const int bytes = ::proc_pidinfo(pid, PROC_PIDLISTFDS, 0, nullptr, 0);
            if (bytes <= 0) continue;
            std::vector<proc_fdinfo> fds(static_cast<std::size_t>(bytes) / sizeof(proc_fdinfo) + 16);
            const int listed =
                ::proc_pidinfo(pid, PROC_PIDLISTFDS, 0, fds.data(), static_cast<int>(fds.size() * sizeof(proc_fdinfo)));
            if (listed <= 0) continue;
            fds.resize(static_cast<std::size_t>(listed) / sizeof(proc_fdinfo));
            for (const auto& fd : fds) {
                if (fd.proc_fdtype != PROX_FDTYPE_VNODE) continue;
                vnode_fdinfowithpath vnode{};
                if (::proc_pidfdinfo(pid, fd.proc_fd, PROC_PIDFDVNODEPATHINFO, &vnode, sizeof vnode) == sizeof vnode)
                    keep(vnode.pvip.vip_path, ProcessUsage::Kind::openFile);
            }
        }
        return found;
    }
};

}  // namespace

std::unique_ptr<OpenFileListing> systemOpenFiles() {
    return std::make_unique<LibprocOpenFiles>();
}

}  // namespace corvel
