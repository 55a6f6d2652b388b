// The half of the space scanner's system calls that Linux and macOS answer the same way: closing
// handles, the status of a path, and sorting error numbers. Listing a folder, the status calls
// (Linux asks statx for the mount ID) and the open flags differ per OS and stay in
// platform/linux/LinuxScanDirectoryAccess.cpp and platform/macos/MacScanDirectoryAccess.cpp.
#include "space/ScanDirectoryAccess.h"

#include "platform/posix/PosixStatus.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace corvel::ScanDirectoryAccess {

void close(int handle) {
    if (handle >= 0) ::close(handle);
}

bool statusOfTarget(const std::string& path, Status& out, int& error) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        error = errno;
        return false;
    }
    PosixStatus::fill(st, out);
    return true;
}

std::optional<Status> statusOfPath(const std::string& path) {
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) return std::nullopt;
    Status out;
    PosixStatus::fill(st, out);
    return out;
}

bool isAccessDenied(int error) { return error == EACCES || error == EPERM; }

bool isVanished(int error) { return error == ENOENT || error == ENOTDIR || error == ELOOP; }

std::string errorText(int error) { return std::strerror(error); }

}  // namespace corvel::ScanDirectoryAccess
