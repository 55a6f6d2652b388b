#include "report/NcduExport.h"

#include "common/Json.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace corvel::NcduExport {
namespace {

std::string jsonText(std::string_view raw) {
    // File names are bytes; the format is JSON, so bytes that are not UTF-8 are replaced.
    return Json(std::string(raw)).dump(-1, ' ', false, Json::error_handler_t::replace);
}

void writeFile(std::string& out, std::string_view name, std::int64_t apparent, std::int64_t allocated) {
    out += fmt::format(",\n{{\"name\":{},\"asize\":{},\"dsize\":{}}}", jsonText(name),
                       std::max<std::int64_t>(0, apparent), std::max<std::int64_t>(0, allocated));
}

void writeFolder(std::string& out, const ScanDirectory& folder, std::string_view name) {
    if (folder.has(ScanDirectory::vanished)) return;
    if (folder.has(ScanDirectory::otherDevice) || folder.has(ScanDirectory::skipped)) {
        out += fmt::format(",\n{{\"name\":{},\"excluded\":\"{}\"}}", jsonText(name),
                           folder.has(ScanDirectory::otherDevice) ? "otherfs" : "pattern");
        return;
    }
    const bool unreadable = folder.has(ScanDirectory::denied) || folder.has(ScanDirectory::readFailed) ||
                            folder.has(ScanDirectory::notRead);
    out += fmt::format(",\n[{{\"name\":{},\"asize\":0,\"dsize\":{}{}}}", jsonText(name),
                       std::max<std::int64_t>(0, folder.ownAllocatedBytes), unreadable ? ",\"read_error\":true" : "");
    std::int64_t keptLogical = 0;
    std::int64_t keptAllocated = 0;
    for (std::size_t i = 0; i < folder.keptFileCount; ++i) {
        const ScanFile& file = folder.keptFiles[i];
        writeFile(out, file.nameView(), file.logicalBytes, file.allocatedBytes);
        keptLogical += file.logicalBytes;
        keptAllocated += file.allocatedBytes;
    }
    // Listed entries that are neither subfolders nor kept files: small files, links, sockets.
    std::int64_t folded = static_cast<std::int64_t>(folder.directEntries) - folder.keptFileCount;
    for (const ScanDirectory* child = folder.firstChild; child; child = child->nextSibling) --folded;
    if (folded > 0) {
        writeFile(out, fmt::format("({} smaller {})", folded, folded == 1 ? "item" : "items"),
                  folder.directLogicalBytes - keptLogical,
                  folder.directAllocatedBytes - folder.ownAllocatedBytes - keptAllocated);
    }
    for (const ScanDirectory* child = folder.firstChild; child; child = child->nextSibling) {
        writeFolder(out, *child, child->nameView());
    }
    out += "]";
}

}  // namespace

std::string write(const ScanTree& tree, const std::string& version, TimePoint exportedAt) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(exportedAt.time_since_epoch()).count();
    std::string out = fmt::format("[1,2,{{\"progname\":\"velmora\",\"progver\":{},\"timestamp\":{}}}",
                                  jsonText(version), std::max<std::int64_t>(0, seconds));
    if (tree.root) writeFolder(out, *tree.root, tree.rootPath);
    out += "]\n";
    return out;
}

}  // namespace corvel::NcduExport
