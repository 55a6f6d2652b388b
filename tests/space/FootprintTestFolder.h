// A fresh temporary folder per test, removed with everything in it afterwards.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvel::spacetest {

class FootprintTestFolder {
public:
    FootprintTestFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "velmora-fp-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
        root_ = pattern;
    }
    ~FootprintTestFolder() {
        std::error_code ignored;
        // Give back permissions a test took away, or removal would fail.
        for (auto it = std::filesystem::recursive_directory_iterator(
                 root_, std::filesystem::directory_options::skip_permission_denied, ignored);
             it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
            if (it->is_directory(ignored) && !it->is_symlink(ignored))
                std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                             std::filesystem::perm_options::add, ignored);
        }
        std::filesystem::remove_all(root_, ignored);
        // A tree deeper than the longest path the system accepts goes by descriptors.
        if (std::filesystem::exists(root_, ignored)) {
            const int fd = ::open(root_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            if (fd >= 0) removeBelow(fd);
            if (fd >= 0) ::close(fd);
            ::rmdir(root_.c_str());
        }
    }
    FootprintTestFolder(const FootprintTestFolder&) = delete;
    FootprintTestFolder& operator=(const FootprintTestFolder&) = delete;

    const std::filesystem::path& root() const { return root_; }
    std::string path(const std::string& relative) const { return (root_ / relative).string(); }

    void createDirectories(const std::string& relative) const { std::filesystem::create_directories(root_ / relative); }

    void write(const std::string& relative, const std::string& contents) const {
        const auto target = root_ / relative;
        std::filesystem::create_directories(target.parent_path());
        std::ofstream out(target, std::ios::binary);
        out << contents;
        if (!out) throw std::runtime_error("cannot write " + target.string());
    }

    // A chain of `levels` nested folders named `name` below `relative`, made through descriptors
    // because its full path is longer than the system accepts; `bytes` bytes in a file
    // "leaf.bin" at the bottom and in "top.bin" at the first level.
    void deepChain(const std::string& relative, const std::string& name, int levels, std::size_t bytes) const {
        createDirectories(relative);
        int fd = ::open(path(relative).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (int level = 0; level < levels && fd >= 0; ++level) {
            ::mkdirat(fd, name.c_str(), 0755);
            const int next = ::openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            if (level == 0 || level == levels - 1) writeAt(next, level == 0 ? "top.bin" : "leaf.bin", bytes);
            ::close(fd);
            fd = next;
        }
        if (fd < 0) throw std::runtime_error("cannot build the deep chain");
        ::close(fd);
    }

private:
    static void writeAt(int folder, const char* name, std::size_t bytes) {
        const int fd = ::openat(folder, name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        const std::string contents(bytes, 'z');
        const bool written = fd >= 0 && ::write(fd, contents.data(), contents.size()) == static_cast<ssize_t>(bytes);
        if (fd >= 0) ::close(fd);
        if (!written) throw std::runtime_error(std::string("cannot write ") + name);
    }

    static void removeBelow(int folder) {
        DIR* listing = ::fdopendir(::dup(folder));
        if (listing == nullptr) return;
        std::vector<std::string> names;
        while (const dirent* entry = ::readdir(listing)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") names.push_back(name);
        }
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

    std::filesystem::path root_;
};

}  // namespace corvel::spacetest
