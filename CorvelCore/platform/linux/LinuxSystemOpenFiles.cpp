// Open files on Linux: the working folder, program and file descriptors of every process whose
// /proc entries we may read. Others' processes usually deny this to a normal user; they are
// skipped, which is all an unprivileged person could learn anyway.
#include "cleanup/RunningApplications.h"
#include "cleanup/SystemOpenFiles.h"
#include "common/PathText.h"

#include <dirent.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <optional>

namespace corvel {
namespace {

std::optional<std::string> linkTarget(const std::string& link) {
    std::array<char, 4096> buffer{};
    const auto length = ::readlink(link.c_str(), buffer.data(), buffer.size());
    if (length <= 0 || static_cast<std::size_t>(length) >= buffer.size()) return std::nullopt;
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

std::string commandOf(const std::string& processFolder) {
    std::array<char, 64> buffer{};
    FILE* file = std::fopen((processFolder + "/comm").c_str(), "re");
    if (!file) return {};
    const auto length = std::fread(buffer.data(), 1, buffer.size(), file);
    std::fclose(file);
    return RunningApplicationNames::commandName({buffer.data(), length}).value_or("");
}

class ProcOpenFiles final : public OpenFileListing {
public:
    std::vector<ProcessUsage> usages(const std::string& path) override {
        std::vector<ProcessUsage> found;
        const std::string folder = normalPath(path);
        DIR* proc = ::opendir("/proc");
        if (!proc) return found;
        while (const dirent* entry = ::readdir(proc)) {
            if (!RunningApplicationNames::isProcessEntry(entry->d_name)) continue;
            const std::string processFolder = std::string("/proc/") + entry->d_name;
            const auto pid = static_cast<std::int32_t>(std::strtol(entry->d_name, nullptr, 10));
            std::vector<ProcessUsage> own;
            const auto keep = [&](const std::string& link, ProcessUsage::Kind kind) {
                const auto target = linkTarget(link);
                if (target && target->starts_with('/') && isWithin(*target, folder))
                    own.push_back({pid, {}, *target, kind});
            };
            keep(processFolder + "/cwd", ProcessUsage::Kind::workingDirectory);
            keep(processFolder + "/exe", ProcessUsage::Kind::executable);
            if (DIR* descriptors = ::opendir((processFolder + "/fd").c_str())) {
                while (const dirent* fd = ::readdir(descriptors))
                    if (RunningApplicationNames::isProcessEntry(fd->d_name))
                        keep(processFolder + "/fd/" + fd->d_name, ProcessUsage::Kind::openFile);
                ::closedir(descriptors);
            }
            if (own.empty()) continue;
            const auto command = commandOf(processFolder);
            for (auto& usage : own) {
                usage.command = command;
                found.push_back(std::move(usage));
            }
        }
        ::closedir(proc);
        return found;
    }
};

}  // namespace

std::unique_ptr<OpenFileListing> systemOpenFiles() {
    return std::make_unique<ProcOpenFiles>();
}

}  // namespace corvel
