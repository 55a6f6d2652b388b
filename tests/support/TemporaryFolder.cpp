#include "support/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace corvel::testing {
namespace {

// A test may leave a folder without permissions behind; give them back so removal succeeds.
void makeRemovable(const std::filesystem::path& root) {
    std::error_code ignored;
    std::filesystem::permissions(root, std::filesystem::perms::owner_all, std::filesystem::perm_options::add, ignored);
    for (auto it = std::filesystem::recursive_directory_iterator(
             root, std::filesystem::directory_options::skip_permission_denied, ignored);
         it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
        if (it->is_directory(ignored) && !it->is_symlink(ignored))
            std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                         std::filesystem::perm_options::add, ignored);
    }
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot make a temporary folder " + pattern + ": " + std::strerror(errno));
    root_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    makeRemovable(root_);
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

std::string TemporaryFolder::write(const std::string& relative, const std::string& contents) const {
    const auto target = root_ / relative;
    std::filesystem::create_directories(target.parent_path());
    std::ofstream file(target, std::ios::binary);
    file << contents;
    if (!file) throw std::runtime_error("cannot write " + target.string());
    return target.string();
}

std::string TemporaryFolder::makeFolder(const std::string& relative) const {
    const auto target = root_ / relative;
    std::filesystem::create_directories(target);
    return target.string();
}

std::string machineFolder(const std::string& name) {
    return std::string(CORVEL_FIXTURES_DIR) + "/machines/" + name;
}

std::string fixturePath(const std::string& relative) {
    return std::string(CORVEL_FIXTURES_DIR) + "/" + relative;
}

std::string readFixture(const std::string& relative) {
    std::ifstream file(fixturePath(relative), std::ios::binary);
    if (!file) throw std::runtime_error("missing fixture " + fixturePath(relative));
    std::ostringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

}  // namespace corvel::testing
