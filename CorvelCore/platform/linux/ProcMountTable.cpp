#include "platform/linux/ProcMountTable.h"

#include <sys/statvfs.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "common/CheckedArithmetic.h"

namespace corvel {

std::string ProcMountTable::mountInfo() {
    std::ifstream file("/proc/self/mountinfo");
    if (!file) throw std::runtime_error("cannot open /proc/self/mountinfo");
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

StatvfsFigures ProcMountTable::statvfs(const std::string& mountPoint) {
    struct statvfs figures {};
    if (::statvfs(mountPoint.c_str(), &figures) != 0) {
        throw std::runtime_error(mountPoint + ": " + std::strerror(errno));
    }
    auto bytes = [&](fsblkcnt_t blocks) {
        return checkedMultiply(static_cast<std::int64_t>(blocks), static_cast<std::int64_t>(figures.f_frsize));
    };
    return StatvfsFigures{bytes(figures.f_blocks), bytes(figures.f_bfree), bytes(figures.f_bavail)};
}

}  // namespace corvel
