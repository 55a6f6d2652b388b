// The system-call half of ProcOpenFiles: walks /proc with directory descriptors, so each process
// costs a handful of *at calls, reads a link only when the file it names is on the device, and
// reads the mapped files only of processes that nothing else ties to the scope yet.
#include "common/PathText.h"
#include "common/UniqueFd.h"
#include "processes/ProcOpenFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <future>
#include <memory>
#include <span>
#include <thread>

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
    std::array<char, 512> first;
    const auto length = ::readlinkat(directory, name, first.data(), first.size());
    if (length < 0) return std::nullopt;
    if (static_cast<std::size_t>(length) < first.size())
        return std::string(first.data(), static_cast<std::size_t>(length));
    std::string buffer(first.size() * 2, '\0');
    for (;;) {
        const auto longer = ::readlinkat(directory, name, buffer.data(), buffer.size());
        if (longer < 0) return std::nullopt;
        if (static_cast<std::size_t>(longer) < buffer.size()) {
            buffer.resize(static_cast<std::size_t>(longer));
            return buffer;
        }
        buffer.resize(buffer.size() * 2);
    }
}

// Reads a /proc text file into `text`, whose room is kept from one process to the next. Only a
// read of nothing is the end: the kernel stops a read short at a line that does not fit, so a
// large maps file (a sanitizer's, a browser's) comes in several short reads.
void readTextAt(int directory, const char* name, std::string& text) {
    text.clear();
    UniqueFd fd(::openat(directory, name, O_RDONLY | O_CLOEXEC));
    if (!fd) return;
    std::size_t used = 0;
    for (;;) {
        if (text.size() < used + 65536) text.resize(used + 65536);
        const auto count = ::read(fd.get(), text.data() + used, text.size() - used);
        if (count <= 0) break;
        used += static_cast<std::size_t>(count);
    }
    text.resize(used);
}

// A file as small as /proc/[pid]/comm (16 bytes at most) in one read.
void readShortTextAt(int directory, const char* name, std::string& text) {
    std::array<char, 64> buffer;
    text.clear();
    UniqueFd fd(::openat(directory, name, O_RDONLY | O_CLOEXEC));
    if (!fd) return;
    const auto count = ::read(fd.get(), buffer.data(), buffer.size());
    if (count > 0) text.assign(buffer.data(), static_cast<std::size_t>(count));
}

// The descriptor numbers of an open /proc/[pid]/fd, in order, read with getdents64 into a kept
// buffer (no DIR allocation per process).
void descriptorNumbers(int directory, std::vector<char>& buffer, std::vector<int>& numbers) {
    // /proc fills the buffer with every descriptor that fits; one that comes back with room for
    // another entry to spare holds them all, and the call that would only say "end" is saved.
    constexpr std::size_t largestEntry = sizeof(dirent64);
    numbers.clear();
    buffer.resize(32768);
    for (;;) {
        const auto count = ::syscall(SYS_getdents64, directory, buffer.data(), buffer.size());
        if (count <= 0) break;
        for (long offset = 0; offset < count;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + offset);
            offset += entry->d_reclen;
            int number = 0;
            const std::string_view name(entry->d_name);
            const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
            if (error == std::errc() && end == name.data() + name.size()) numbers.push_back(number);
        }
        if (static_cast<std::size_t>(count) + largestEntry <= buffer.size()) break;
    }
    std::sort(numbers.begin(), numbers.end());
}

std::optional<ProcOpenFiles::Scope> scopeOf(const std::string& typed, std::uint64_t& inode) {
    ProcOpenFiles::Scope scope;
    scope.path = normalPath(typed);
    struct statx facts {};
    if (::statx(AT_FDCWD, scope.path.c_str(), 0, STATX_BASIC_STATS, &facts) != 0) return std::nullopt;
    scope.device = ::makedev(facts.stx_dev_major, facts.stx_dev_minor);
    inode = facts.stx_ino;
    if (facts.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) {
        scope.wholeFileSystem = (facts.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
    } else {
        // Kernels before 5.8 do not say; a device change at the path marks a mount root.
        struct stat parent {};
        const auto parentPath = scope.path == "/" ? scope.path : normalPath(scope.path + "/..");
        scope.wholeFileSystem =
            scope.path == "/" || (::stat(parentPath.c_str(), &parent) == 0 && parent.st_dev != scope.device);
    }
    return scope;
}

// What one scan keeps from one process to the next: the scope and its room for reading.
struct ScanState {
    ProcOpenFiles::Scope scope;
    std::uint64_t scopeInode = 0;  // of the scanned path itself, whose name we know without asking
    std::string text;
    std::vector<char> entries;
    std::vector<int> descriptors;
};

class ProcessReader {
public:
    ProcessReader(ScanState& state, std::int32_t pid, int directory)
        : state_(state), scope_(state.scope), pid_(pid), directory_(directory) {}

    // Everything of this process in scope; empty when it vanished or denied access.
    std::vector<ProcessUsage> read() {
        const auto cwd = consider(directory_, "cwd", ProcessUsage::Kind::workingDirectory);
        const auto root = consider(directory_, "root", ProcessUsage::Kind::openFile);
        const auto exe = consider(directory_, "exe", ProcessUsage::Kind::executable);
        // Access to a process's links is granted or denied for the whole process: when its
        // folders and program are denied, so are its descriptors and maps. A process without a
        // program is a kernel thread or a zombie, and neither holds descriptors or mappings.
        if ((cwd == Reading::denied && root == Reading::denied && exe == Reading::denied) || exe == Reading::absent)
            return finish();
        if (!readDescriptors()) return finish();
        // The maps are the costliest file here (the kernel writes out every mapping's path) and
        // only decide whether a process holds the scope at all: a process already found by its
        // program, folders or descriptors is not searched for mapped libraries as well.
        if (found_.empty()) readMappedFiles();
        return finish();
    }

private:
    enum class Reading { read, denied, absent };

    std::vector<ProcessUsage> finish() {
        if (!found_.empty()) {
            readShortTextAt(directory_, "comm", state_.text);
            const auto command = ProcOpenFiles::commandFromComm(state_.text);
            for (auto& usage : found_) usage.command = command;
        }
        return std::move(found_);
    }

    // The device first: a stat of the link's target rules out most entries (pipes, sockets,
    // files elsewhere) without the costlier reading of the path.
    Reading consider(int directory, const char* name, ProcessUsage::Kind kind) {
        struct stat facts {};
        if (::fstatat(directory, name, &facts, 0) != 0)
            return errno == EACCES || errno == EPERM ? Reading::denied : Reading::absent;
        if (facts.st_dev != scope_.device) return Reading::read;
        // The scanned folder itself (a working folder or root at the mount point) needs no name.
        if (facts.st_ino == state_.scopeInode && S_ISDIR(facts.st_mode)) {
            found_.push_back({pid_, {}, scope_.path, kind});
            return Reading::read;
        }
        const auto link = readLinkAt(directory, name);
        if (!link) return Reading::read;
        auto path = ProcOpenFiles::pathFromLink(*link);
        if (path.empty() || !ProcOpenFiles::isInScope(scope_, facts.st_dev, path)) return Reading::read;
        found_.push_back({pid_, {}, std::move(path), kind});
        return Reading::read;
    }

    // False when the process denies access: its maps are then denied too.
    bool readDescriptors() {
        const UniqueFd descriptors(::openat(directory_, "fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!descriptors) return errno != EACCES && errno != EPERM;
        descriptorNumbers(descriptors.get(), state_.entries, state_.descriptors);
        for (const int number : state_.descriptors) {
            std::array<char, 16> name{};
            std::to_chars(name.data(), name.data() + name.size() - 1, number);
            // One denied descriptor means all are: the check is made for the process, not the file.
            if (consider(descriptors.get(), name.data(), ProcessUsage::Kind::openFile) == Reading::denied) return false;
        }
        return true;
    }

    // A library or data file mapped from the volume keeps it busy after its descriptor closed.
    void readMappedFiles() {
        readTextAt(directory_, "maps", state_.text);
        for (auto& path : ProcOpenFiles::mappedFiles(state_.text, ::major(scope_.device), ::minor(scope_.device)))
            if (ProcOpenFiles::isInScope(scope_, scope_.device, path))
                found_.push_back({pid_, {}, std::move(path), ProcessUsage::Kind::openFile});
    }

    ScanState& state_;
    const ProcOpenFiles::Scope& scope_;
    std::int32_t pid_;
    int directory_;
    std::vector<ProcessUsage> found_;
};

// The processes of one contiguous share of the (sorted) listing, read with the share's own room.
std::vector<ProcessUsage> readShare(const ScanState& prototype, int procFd,
                                    std::span<const std::pair<std::int32_t, std::string>> processes) {
    ScanState state{prototype.scope, prototype.scopeInode, {}, {}, {}};
    std::vector<ProcessUsage> usages;
    for (const auto& [pid, name] : processes) {
        const UniqueFd directory(::openat(procFd, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!directory) continue;  // it has exited since the listing
        auto found = ProcessReader(state, pid, directory.get()).read();
        usages.insert(usages.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
    }
    return usages;
}

}  // namespace

std::vector<ProcessUsage> ProcOpenFiles::usages(const std::string& path) {
    ScanState state;
    const auto scope = scopeOf(path, state.scopeInode);
    if (!scope) return {};
    state.scope = *scope;
    const auto proc = openDirectoryAt(AT_FDCWD, "/proc");
    if (!proc) return {};
    std::vector<std::pair<std::int32_t, std::string>> processes;
    while (const auto* entry = ::readdir(proc.get()))
        if (const auto pid = processID(entry->d_name)) processes.emplace_back(*pid, entry->d_name);
    std::sort(processes.begin(), processes.end());
    const int procFd = ::dirfd(proc.get());

    // Each process costs a dozen system calls that wait on the kernel, not on each other: a busy
    // machine's listing is read in contiguous shares on two threads, then joined in pid order.
    constexpr std::size_t fewProcesses = 200;
    const std::span<const std::pair<std::int32_t, std::string>> all(processes);
    const bool split = processes.size() >= fewProcesses && std::thread::hardware_concurrency() > 1;
    const std::size_t half = split ? processes.size() / 2 : processes.size();
    std::future<std::vector<ProcessUsage>> secondHalf;
    if (split) secondHalf = std::async(std::launch::async, readShare, std::cref(state), procFd, all.subspan(half));
    auto usages = readShare(state, procFd, all.first(half));
    if (split) {
        auto found = secondHalf.get();
        usages.insert(usages.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
    }
    return usages;
}

}  // namespace corvel
