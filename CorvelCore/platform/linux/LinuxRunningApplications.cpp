// Running applications on Linux: the command names of this user's processes, read from /proc.
#include "cleanup/RunningApplications.h"

#include "common/UniqueFd.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>

namespace corvel {
namespace {

class ProcRunningApplications final : public RunningApplications {
public:
    std::set<std::string> names() override {
        std::set<std::string> result;
        DIR* proc = ::opendir("/proc");
        if (!proc) return result;
        const uid_t user = ::getuid();
        while (const dirent* entry = ::readdir(proc)) {
            if (!RunningApplicationNames::isProcessEntry(entry->d_name)) continue;
            struct stat owner {};
            if (::fstatat(::dirfd(proc), entry->d_name, &owner, 0) != 0 || owner.st_uid != user) continue;
            const std::string comm = std::string(entry->d_name) + "/comm";
            const UniqueFd fd(::openat(::dirfd(proc), comm.c_str(), O_RDONLY | O_CLOEXEC));
            if (!fd) continue;
            std::array<char, 64> buffer{};
            const auto length = ::read(fd.get(), buffer.data(), buffer.size());
            if (length <= 0) continue;
            const std::string_view text(buffer.data(), static_cast<std::size_t>(length));
            if (auto name = RunningApplicationNames::commandName(text)) result.insert(std::move(*name));
        }
        ::closedir(proc);
        return result;
    }
};

}  // namespace

std::unique_ptr<RunningApplications> systemRunningApplications() {
    return std::make_unique<ProcRunningApplications>();
}

}  // namespace corvel
