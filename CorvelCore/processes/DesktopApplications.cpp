#include "processes/DesktopApplications.h"

#include "common/AtomicFile.h"
#include "common/PathText.h"
#include "common/Text.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

namespace corvel::DesktopApplications {
namespace {

// A desktop entry is a few kilobytes; a folder of them a few hundred files.
constexpr std::size_t entryReadLimit = 256 * 1024;
constexpr std::size_t filesPerFolderLimit = 5000;

}  // namespace

std::vector<std::string> folders(const Environment& environment, const std::string& home) {
    std::vector<std::string> result;
    const auto add = [&result](const std::string& base) {
        // Relative entries are invalid in these variables and are ignored.
        if (base.empty() || base.front() != '/') return;
        const auto folder = joinPath(normalPath(base), "applications");
        if (std::find(result.begin(), result.end(), folder) == result.end()) result.push_back(folder);
    };
    add(lookup(environment, "XDG_DATA_HOME").value_or(joinPath(home, ".local/share")));
    for (const auto& base : split(lookup(environment, "XDG_DATA_DIRS").value_or("/usr/local/share:/usr/share"), ':'))
        add(base);
    return result;
}

std::vector<DesktopEntry> read(const Environment& environment, const std::string& home) {
    std::vector<DesktopEntry> entries;
    std::set<std::string> seenIDs;
    for (const auto& folder : folders(environment, home)) {
        std::error_code error;
        std::vector<std::string> files;
        for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
            if (files.size() >= filesPerFolderLimit) break;
            const auto name = it->path().filename().string();
            if (endsWith(name, ".desktop")) files.push_back(it->path().string());
        }
        std::sort(files.begin(), files.end());
        for (const auto& file : files) {
            auto id = lastComponent(file);
            id.resize(id.size() - 8);
            // The first folder that has an id decides, also when its entry is hidden or broken.
            if (!seenIDs.insert(id).second) continue;
            try {
                const auto text = AtomicFile::read(file, entryReadLimit);
                if (!text) continue;
                if (auto entry = DesktopEntry::parse(*text, file)) entries.push_back(std::move(*entry));
            } catch (const FileError&) {
                // An unreadable entry is not an application we can recognise.
            }
        }
    }
    return entries;
}

}  // namespace corvel::DesktopApplications
