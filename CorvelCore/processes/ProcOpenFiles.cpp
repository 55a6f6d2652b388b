#include "processes/ProcOpenFiles.h"

#include "common/PathText.h"

#include <algorithm>
#include <charconv>

namespace corvel {
namespace {

constexpr std::string_view deletedMark = " (deleted)";

std::string_view nextField(std::string_view& line) {
    const auto start = line.find_first_not_of(' ');
    if (start == std::string_view::npos) {
        line = {};
        return {};
    }
    line.remove_prefix(start);
    const auto end = line.find(' ');
    const auto field = line.substr(0, end);
    line = end == std::string_view::npos ? std::string_view() : line.substr(end);
    return field;
}

std::optional<unsigned> hexNumber(std::string_view text) {
    unsigned value = 0;
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, 16);
    if (error != std::errc() || stop != end || text.empty()) return std::nullopt;
    return value;
}

}  // namespace

std::optional<std::int32_t> ProcOpenFiles::processID(std::string_view entryName) {
    if (entryName.empty() || !std::all_of(entryName.begin(), entryName.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    std::int32_t pid = 0;
    const auto [stop, error] = std::from_chars(entryName.data(), entryName.data() + entryName.size(), pid);
    if (error != std::errc() || pid <= 0) return std::nullopt;
    return pid;
}

std::string ProcOpenFiles::pathFromLink(std::string_view linkTarget) {
    if (linkTarget.empty() || linkTarget.front() != '/') return {};
    if (linkTarget.size() > deletedMark.size() &&
        linkTarget.substr(linkTarget.size() - deletedMark.size()) == deletedMark)
        linkTarget.remove_suffix(deletedMark.size());
    return std::string(linkTarget);
}

std::string ProcOpenFiles::commandFromComm(std::string_view comm) {
    while (!comm.empty() && (comm.back() == '\n' || comm.back() == '\0')) comm.remove_suffix(1);
    return std::string(comm);
}

bool ProcOpenFiles::isInScope(const Scope& scope, std::uint64_t fileDevice, std::string_view path) {
    if (fileDevice != scope.device) return false;
    return scope.wholeFileSystem || isWithin(path, scope.path);
}

std::vector<std::string> ProcOpenFiles::mappedFiles(std::string_view maps, unsigned major, unsigned minor) {
    std::vector<std::string> files;
    std::size_t start = 0;
    while (start < maps.size()) {
        auto end = maps.find('\n', start);
        if (end == std::string_view::npos) end = maps.size();
        auto line = maps.substr(start, end - start);
        start = end + 1;
        // address perms offset dev inode path
        nextField(line);
        nextField(line);
        nextField(line);
        const auto device = nextField(line);
        const auto inode = nextField(line);
        const auto colon = device.find(':');
        if (colon == std::string_view::npos || inode.empty() || inode == "0") continue;
        const auto fileMajor = hexNumber(device.substr(0, colon));
        const auto fileMinor = hexNumber(device.substr(colon + 1));
        if (!fileMajor || !fileMinor || *fileMajor != major || *fileMinor != minor) continue;
        const auto pathStart = line.find_first_not_of(' ');
        if (pathStart == std::string_view::npos) continue;
        auto path = pathFromLink(line.substr(pathStart));
        if (path.empty() || std::find(files.begin(), files.end(), path) != files.end()) continue;
        files.push_back(std::move(path));
    }
    return files;
}

}  // namespace corvel
