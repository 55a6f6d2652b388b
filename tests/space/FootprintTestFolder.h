// A fresh temporary folder per test, removed with everything in it afterwards.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

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

private:
    std::filesystem::path root_;
};

}  // namespace corvel::spacetest
