// The system-call half of ProcOpenFiles: walks /proc with directory descriptors, so each process
// costs a handful of *at calls, and reads a link only when the file it names is on the device.
#include "common/PathText.h"
#include "common/UniqueFd.h"
#include "processes/ProcOpenFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

namespace corvel {
namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

Directory openDirectoryAt(int parent, const char* name) {
    UniqueFd fd(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd) return nullptr;
    Directory directory(::fdopendir(fd.get()));
    if (directory) fd.release();
    return directory;
}

std::optional<std::string> readLinkAt(int directory, const char* name) {
    std::string buffer(256, '\0');
    for (;;) {
        const auto length = ::readlinkat(directory, name, buffer.data(), buffer.size());
        if (length < 0) return std::nullopt;
        if (static_cast<std::size_t>(length) < buffer.size()) {
            buffer.resize(static_cast<std::size_t>(length));
            return buffer;
        }
        buffer.resize(buffer.size() * 2);
    }
}

std::string readTextAt(int directory, const char* name) {
    UniqueFd fd(::openat(directory, name, O_RDONLY | O_CLOEXEC));
    if (!fd) return {};
    std::string text;
    std::array<char, 16384> chunk{};
    for (;;) {
        const auto count = ::read(fd.get(), chunk.data(), chunk.size());
        if (count <= 0) break;
        text.append(chunk.data(), static_cast<std::size_t>(count));
    }
    return text;
}

std::optional<ProcOpenFiles::Scope> scopeOf(const std::string& typed) {
    ProcOpenFiles::Scope scope;
    scope.path = normalPath(typed);
    struct statx facts {};
    if (::statx(AT_FDCWD, scope.path.c_str(), 0, STATX_BASIC_STATS, &facts) != 0) return std::nullopt;
    scope.device = ::makedev(facts.stx_dev_major, facts.stx_dev_minor);
    if (facts.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) {
        scope.wholeFileSystem = (facts.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
    } else {
        // Kernels before 5.8 do not say; a device change at the path marks a mount root.
        struct stat parent {};
        const auto parentPath = scope.path == "/" ? scope.path : normalPath(scope.path + "/..");
        scope.wholeFileSystem = scope.path == "/" ||
                                (::stat(parentPath.c_str(), &parent) == 0 && parent.st_dev != scope.device);
    }
    return scope;
}

class ProcessReader {
public:
    ProcessReader(const ProcOpenFiles::Scope& scope, std::int32_t pid, int directory)
        : scope_(scope), pid_(pid), directory_(directory) {}

    // Everything of this process in scope; empty when it vanished or denied access.
    std::vector<ProcessUsage> read() {
        consider(directory_, "cwd", ProcessUsage::Kind::workingDirectory);
        consider(directory_, "root", ProcessUsage::Kind::openFile);
        consider(directory_, "exe", ProcessUsage::Kind::executable);
        readDescriptors();
        readMappedFiles();
        if (!found_.empty()) {
            const auto command = ProcOpenFiles::commandFromComm(readTextAt(directory_, "comm"));
            for (auto& usage : found_) usage.command = command;
        }
        return std::move(found_);
    }

private:
    void consider(int directory, const char* name, ProcessUsage::Kind kind) {
        struct stat facts {};
        if (::fstatat(directory, name, &facts, 0) != 0 || facts.st_dev != scope_.device) return;
        const auto link = readLinkAt(directory, name);
        if (!link) return;
        auto path = ProcOpenFiles::pathFromLink(*link);
        if (path.empty() || !ProcOpenFiles::isInScope(scope_, facts.st_dev, path)) return;
        found_.push_back({pid_, {}, std::move(path), kind});
    }

    void readDescriptors() {
        const auto descriptors = openDirectoryAt(directory_, "fd");
        if (!descriptors) return;
        std::vector<std::pair<long, std::string>> names;
        while (const auto* entry = ::readdir(descriptors.get())) {
            if (entry->d_name[0] < '0' || entry->d_name[0] > '9') continue;
            names.emplace_back(std::strtol(entry->d_name, nullptr, 10), entry->d_name);
        }
        std::sort(names.begin(), names.end());
        const int fd = ::dirfd(descriptors.get());
        for (const auto& [number, name] : names) consider(fd, name.c_str(), ProcessUsage::Kind::openFile);
    }

    // A library or data file mapped from the volume keeps it busy after its descriptor closed.
    void readMappedFiles() {
        const auto maps = readTextAt(directory_, "maps");
        for (auto& path : ProcOpenFiles::mappedFiles(maps, ::major(scope_.device), ::minor(scope_.device))) {
            if (!ProcOpenFiles::isInScope(scope_, scope_.device, path)) continue;
            const bool known = std::any_of(found_.begin(), found_.end(),
                                           [&](const ProcessUsage& usage) { return usage.path == path; });
            if (!known) found_.push_back({pid_, {}, std::move(path), ProcessUsage::Kind::openFile});
        }
    }

    const ProcOpenFiles::Scope& scope_;
    std::int32_t pid_;
    int directory_;
    std::vector<ProcessUsage> found_;
};

}  // namespace

std::vector<ProcessUsage> ProcOpenFiles::usages(const std::string& path) {
    std::vector<ProcessUsage> usages;
    const auto scope = scopeOf(path);
    if (!scope) return usages;
    const auto proc = openDirectoryAt(AT_FDCWD, "/proc");
    if (!proc) return usages;
    std::vector<std::pair<std::int32_t, std::string>> processes;
    while (const auto* entry = ::readdir(proc.get()))
        if (const auto pid = processID(entry->d_name)) processes.emplace_back(*pid, entry->d_name);
    std::sort(processes.begin(), processes.end());
    const int procFd = ::dirfd(proc.get());
    for (const auto& [pid, name] : processes) {
        const UniqueFd directory(::openat(procFd, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!directory) continue;  // it has exited since the listing
        auto found = ProcessReader(*scope, pid, directory.get()).read();
        usages.insert(usages.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
    }
    return usages;
}

}  // namespace corvel
