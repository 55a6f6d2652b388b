// Real files for the space tests, in the test kit's temporary folders: the bytes a path holds on
// disk, and a chain of folders deeper than the longest path the system accepts.
//
//   TemporaryFolder folder;
//   const DeepChain chain(folder.makeFolder("chain"), std::string(40, 'd'), 150, 5'000);
//   EXPECT_EQ(measure(folder.path("chain")).fileCount, 2);
#pragma once

#include "support/TemporaryFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvel::spacetest {

using testing::TemporaryFolder;

// What lstat says `path` holds on disk, as du counts it.
inline std::int64_t blocksOf(const std::string& path) {
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) throw std::runtime_error("lstat " + path);
    return static_cast<std::int64_t>(st.st_blocks) * 512;
}

// `levels` nested folders named `name` in the existing folder `parent`, made through descriptors
// because the full path is too long for the system; `bytes` bytes in "top.bin" at the first level
// and "leaf.bin" at the bottom. Everything in `parent` is removed through descriptors when the
// chain goes, since removal by path fails on it.
class DeepChain {
public:
    DeepChain(std::string parent, const std::string& name, int levels, std::size_t bytes) : parent_(std::move(parent)) {
        int fd = ::open(parent_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (int level = 0; level < levels && fd >= 0; ++level) {
            ::mkdirat(fd, name.c_str(), 0755);
            const int next = ::openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            if (next >= 0 && (level == 0 || level == levels - 1)) {
                const int file =
                    ::openat(next, level == 0 ? "top.bin" : "leaf.bin", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
                const std::string contents(bytes, 'z');
                const bool written = file >= 0 && ::write(file, contents.data(), bytes) == static_cast<ssize_t>(bytes);
                if (file >= 0) ::close(file);
                if (!written) throw std::runtime_error("cannot write in the deep chain");
            }
            ::close(fd);
            fd = next;
        }
        if (fd < 0) throw std::runtime_error("cannot build the deep chain");
        ::close(fd);
    }
    ~DeepChain() {
        const int fd = ::open(parent_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd >= 0) removeBelow(fd);
        if (fd >= 0) ::close(fd);
    }
    DeepChain(const DeepChain&) = delete;
    DeepChain& operator=(const DeepChain&) = delete;

private:
    static void removeBelow(int folder) {
        DIR* listing = ::fdopendir(::dup(folder));
        if (listing == nullptr) return;
        std::vector<std::string> names;
        while (const dirent* entry = ::readdir(listing))
            if (std::string(entry->d_name) != "." && std::string(entry->d_name) != "..") names.push_back(entry->d_name);
        ::closedir(listing);
        for (const std::string& name : names) {
            if (::unlinkat(folder, name.c_str(), 0) == 0) continue;
            const int child = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (child < 0) continue;
            removeBelow(child);
            ::close(child);
            ::unlinkat(folder, name.c_str(), AT_REMOVEDIR);
        }
    }

    std::string parent_;
};

}  // namespace corvel::spacetest
