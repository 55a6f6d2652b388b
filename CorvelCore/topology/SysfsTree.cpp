#include "topology/SysfsTree.h"

#include "common/AtomicFile.h"
#include "common/Text.h"

#include <algorithm>
#include <deque>
#include <system_error>

namespace corvel {

namespace fs = std::filesystem;

fs::path SysfsTree::onDisk(const std::string& path) const {
    return root_ / fs::path(path).relative_path();
}

void SysfsTree::warn(std::string warning) {
    if (std::find(warnings_.begin(), warnings_.end(), warning) == warnings_.end())
        warnings_.push_back(std::move(warning));
}

std::optional<std::string> SysfsTree::resolve(const std::string& path) {
    std::vector<std::string> done;
    std::deque<std::string> pending;
    for (auto& part : split(path, '/')) pending.push_back(std::move(part));
    int links = 0;
    while (!pending.empty()) {
        const std::string part = std::move(pending.front());
        pending.pop_front();
        if (part.empty() || part == ".") continue;
        if (part == "..") {
            if (!done.empty()) done.pop_back();  // never above the tree's root
            continue;
        }
        done.push_back(part);
        const std::string here = "/" + join(done, "/");
        std::error_code error;
        const auto status = fs::symlink_status(onDisk(here), error);
        if (status.type() == fs::file_type::not_found || error == std::errc::not_a_directory) return std::nullopt;
        if (error) {
            warn("Could not read " + here + ": " + error.message());
            return std::nullopt;
        }
        if (!fs::is_symlink(status)) continue;
        if (++links > maximumLinks) {
            warn("Could not follow " + path + ": too many levels of symbolic links");
            return std::nullopt;
        }
        const auto target = fs::read_symlink(onDisk(here), error);
        if (error) {
            warn("Could not read the link " + here + ": " + error.message());
            return std::nullopt;
        }
        recordLink(here, target);
        done.pop_back();
        if (target.is_absolute()) done.clear();
        auto parts = split(target.generic_string(), '/');
        pending.insert(pending.begin(), parts.begin(), parts.end());
    }
    return "/" + join(done, "/");
}

std::optional<std::string> SysfsTree::read(const std::string& path) {
    const auto resolved = resolve(path);
    if (!resolved) return std::nullopt;
    try {
        auto contents = AtomicFile::read(onDisk(*resolved), maximumFileBytes);
        if (contents) recordFile(*resolved, *contents);
        return contents;
    } catch (const FileError& problem) {
        warn(problem.what());
        return std::nullopt;
    }
}

std::vector<std::string> SysfsTree::list(const std::string& path) {
    std::vector<std::string> names;
    const auto resolved = resolve(path);
    if (!resolved) return names;
    std::error_code error;
    fs::directory_iterator entries(onDisk(*resolved), error);
    if (error) {
        if (error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory)
            warn("Could not list " + *resolved + ": " + error.message());
        return names;
    }
    for (const auto& entry : entries) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

void SysfsTree::recordLink(const std::string& path, const fs::path& target) {
    if (!recordInto_) return;
    const auto destination = *recordInto_ / fs::path(path).relative_path();
    std::error_code error;
    fs::create_directories(destination.parent_path(), error);
    if (!error && !fs::exists(fs::symlink_status(destination, error))) fs::create_symlink(target, destination, error);
    if (error) warn("Could not record the link " + path + ": " + error.message());
}

void SysfsTree::recordFile(const std::string& path, const std::string& contents) {
    if (!recordInto_) return;
    try {
        AtomicFile::write(*recordInto_ / fs::path(path).relative_path(), contents);
    } catch (const FileError& problem) {
        warn(problem.what());
    }
}

}  // namespace corvel
