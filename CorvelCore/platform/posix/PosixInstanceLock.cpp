// A POSIX record lock (fcntl) rather than flock: another process can ask who holds it without
// taking it, and the system drops it when the holder dies.
#include "agent/InstanceLock.h"

#include "common/AtomicFile.h"

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>
#include <string>

namespace corvel {
namespace {

struct flock wholeFile(short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0;
    lock.l_len = 0;
    return lock;
}

}  // namespace

std::optional<InstanceLock> InstanceLock::acquire(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::create_directories(path.parent_path(), ignored);
    UniqueFd fd(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (!fd) throw FileError("Could not open " + path.string() + ": " + std::strerror(errno));
    struct flock lock = wholeFile(F_WRLCK);
    if (::fcntl(fd.get(), F_SETLK, &lock) != 0) {
        if (errno == EACCES || errno == EAGAIN) return std::nullopt;
        throw FileError("Could not lock " + path.string() + ": " + std::strerror(errno));
    }
    // The pid inside is for people; the lock itself is what counts.
    const std::string pid = std::to_string(::getpid()) + "\n";
    if (::ftruncate(fd.get(), 0) == 0) {
        [[maybe_unused]] const auto written = ::pwrite(fd.get(), pid.data(), pid.size(), 0);
    }
    return InstanceLock(std::move(fd));
}

std::optional<pid_t> InstanceLock::holder(const std::filesystem::path& path) {
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd) return std::nullopt;
    struct flock lock = wholeFile(F_WRLCK);
    if (::fcntl(fd.get(), F_GETLK, &lock) != 0 || lock.l_type == F_UNLCK) return std::nullopt;
    return lock.l_pid;
}

}  // namespace corvel
