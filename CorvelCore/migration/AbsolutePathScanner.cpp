#include "migration/AbsolutePathScanner.h"

#include "common/PathText.h"
#include "common/Text.h"
#include "common/UniqueFd.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <system_error>

namespace corvel::AbsolutePathScanner {
namespace {

namespace fs = std::filesystem;

struct KindFix {
    BreakKind kind;
    const char* fix;
};

// The remedy for each kind; the labels live in the kind's own table.
constexpr std::array<KindFix, 7> fixes{{
    {BreakKind::virtualEnvironment,
     "Recreate the environment in the new place (python3 -m venv, then reinstall its packages)."},
    {BreakKind::cmakeCache, "Configure the build again in the new place (remove the build folder's CMakeCache.txt)."},
    {BreakKind::gitWorktreeLink, "Run git worktree repair in the moved repository and in each worktree."},
    {BreakKind::compileCommands, "Generate it again by configuring the build in the new place."},
    {BreakKind::projectCache, "Reopen the project so the IDE rebuilds its caches."},
    {BreakKind::packageLink, "Reinstall the packages in the new place (npm ci)."},
    {BreakKind::symbolicLink, "Recreate the link with a relative target, which survives the move."},
}};

bool continuesName(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.' ||
           static_cast<unsigned char>(c) >= 0x80;
}

std::string shown(std::string_view line) {
    const auto trimmed = trim(line);
    if (trimmed.size() <= shownLineLimit) return std::string(trimmed);
    return std::string(trimmed.substr(0, shownLineLimit)) + "…";
}

// With `atEndCounts` false, a match that ends the text is not counted: the next character, not
// seen yet, decides whether it names the path.
bool namesPathAt(std::string_view line, std::string_view source, bool atEndCounts) {
    for (auto at = line.find(source); at != std::string_view::npos; at = line.find(source, at + 1)) {
        const auto after = at + source.size();
        if (after == line.size() ? atEndCounts : !continuesName(line[after])) return true;
    }
    return false;
}

std::string errorText(int error) {
    return std::generic_category().message(error);
}

// One file's search, fed chunk by chunk. A line is held only up to a bound: past it, the part
// searched so far is checked and only a tail long enough to hold a match across the cut is kept.
class LineSearch {
public:
    explicit LineSearch(std::string_view needle) : needle_(needle) {}

    void feed(std::string_view bytes) {
        for (char c : bytes) {
            if (c == '\n') {
                endLine();
                continue;
            }
            line_.push_back(c);
            if (line_.size() >= bound()) cut();
        }
    }
    void finish() {
        if (!line_.empty() || cutOff_) endLine();
    }

    std::int64_t matches = 0;
    std::int64_t firstLineNumber = 0;
    std::string firstLine;

private:
    std::size_t bound() const { return std::max<std::size_t>(chunkBytes, needle_.size() * 2); }

    void record() {
        if (lineMatched_) return;
        lineMatched_ = true;
        ++matches;
        if (firstLineNumber == 0) {
            firstLineNumber = lineNumber_ + 1;
            firstLine = shown(shownStart_.empty() ? line_ : shownStart_);
        }
    }
    void cut() {
        if (shownStart_.empty()) shownStart_ = line_.substr(0, shownLineLimit + 1);
        // Only a match that ends before the kept tail is certain here: the next character decides.
        const auto keep = needle_.size();
        if (namesPathAt(line_, needle_, false)) record();
        line_.erase(0, line_.size() - keep);
        cutOff_ = true;
    }
    void endLine() {
        if (namesPath(line_, needle_)) record();
        line_.clear();
        shownStart_.clear();
        lineMatched_ = false;
        cutOff_ = false;
        ++lineNumber_;
    }

    std::string needle_;
    std::string line_;
    std::string shownStart_;
    std::int64_t lineNumber_ = 0;
    bool lineMatched_ = false;
    bool cutOff_ = false;
};

class Walk {
public:
    Walk(const std::string& source, MigrationProgress& progress, const std::function<bool()>& isCancelled)
        : source_(source), progress_(progress), isCancelled_(isCancelled) {
        result_.source = source;
    }

    AbsolutePathScan run() {
        struct stat root {};
        if (::lstat(source_.c_str(), &root) != 0) {
            result_.unreadable.push_back(source_ + ": " + errorText(errno));
            return std::move(result_);
        }
        device_ = root.st_dev;
        if (S_ISDIR(root.st_mode)) folder(source_);
        std::sort(result_.breakingPaths.begin(), result_.breakingPaths.end(),
                  [](const auto& a, const auto& b) { return a.path < b.path; });
        std::sort(result_.caseConflicts.begin(), result_.caseConflicts.end());
        return std::move(result_);
    }

private:
    std::string relative(const std::string& path) const {
        return path.size() > source_.size() ? path.substr(source_.size() + (source_ == "/" ? 0 : 1)) : "";
    }

    void folder(const std::string& path) {
        if (isCancelled_()) {
            result_.wasCancelled = true;
            return;
        }
        std::error_code error;
        fs::directory_iterator entries(path, error);
        if (error) {
            result_.unreadable.push_back(path + ": " + error.message());
            return;
        }
        const bool scriptFolder = isScriptFolder(path);
        std::map<std::string, std::string> lowerNames;
        std::vector<std::string> subfolders;
        for (auto it = entries; it != fs::directory_iterator(); it.increment(error)) {
            if (error) {
                result_.unreadable.push_back(path + ": " + error.message());
                break;
            }
            const auto name = it->path().filename().string();
            const auto full = joinPath(path, name);
            if (!lowerNames.emplace(toLower(name), name).second) result_.caseConflicts.push_back(full);
            if (name == ".git") result_.hasGitRepository = true;
            entry(full, scriptFolder, subfolders);
            if (result_.wasCancelled) return;
        }
        std::sort(subfolders.begin(), subfolders.end());
        for (const auto& subfolder : subfolders) {
            folder(subfolder);
            if (result_.wasCancelled) return;
        }
    }

    bool isScriptFolder(const std::string& path) const {
        const auto name = lastComponent(path);
        if (name != "bin" && name != "Scripts") return false;
        struct stat config {};
        return ::lstat(joinPath(fs::path(path).parent_path().string(), "pyvenv.cfg").c_str(), &config) == 0;
    }

    void entry(const std::string& path, bool scriptFolder, std::vector<std::string>& subfolders) {
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0) {
            result_.unreadable.push_back(path + ": " + errorText(errno));
            return;
        }
        if (S_ISDIR(status.st_mode)) {
            if (status.st_dev == device_) subfolders.push_back(path);
        } else if (S_ISLNK(status.st_mode)) {
            link(path);
        } else if (S_ISREG(status.st_mode)) {
            progress_.addFile();
            if (const auto kind = fileKind(relative(path), scriptFolder)) read(path, *kind);
        }
        // FIFOs, sockets and devices hold no path and are never opened.
    }

    void link(const std::string& path) {
        std::error_code error;
        const auto target = fs::read_symlink(path, error);
        if (error) {
            result_.unreadable.push_back(path + ": " + error.message());
            return;
        }
        const auto text = target.string();
        if (text.empty() || text.front() != '/' || !isWithin(normalPath(text), source_)) return;
        const auto inPackageBin = contains("/" + relative(path), "/node_modules/.bin/");
        const auto kind = inPackageBin ? BreakKind::packageLink : BreakKind::symbolicLink;
        result_.breakingPaths.push_back({path, kind, text, std::nullopt, 1, fixFor(kind)});
    }

    void read(const std::string& path, BreakKind kind) {
        // O_NONBLOCK: a file swapped for a FIFO after the lstat must not hang the walk.
        UniqueFd fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status {};
        if (!fd || ::fstat(fd.get(), &status) != 0) {
            result_.unreadable.push_back(path + ": " + errorText(errno));
            return;
        }
        if (!S_ISREG(status.st_mode)) return;
        LineSearch search(source_);
        std::string buffer(chunkBytes, '\0');
        for (;;) {
            const auto got = ::read(fd.get(), buffer.data(), buffer.size());
            if (got < 0) {
                if (errno == EINTR) continue;
                result_.unreadable.push_back(path + ": " + errorText(errno));
                return;
            }
            if (got == 0) break;
            const std::string_view chunk(buffer.data(), static_cast<std::size_t>(got));
            if (chunk.find('\0') != std::string_view::npos) {
                ++result_.binaryFilesSkipped;
                return;
            }
            progress_.addBytes(got);
            search.feed(chunk);
        }
        search.finish();
        ++result_.filesRead;
        if (search.matches > 0)
            result_.breakingPaths.push_back(
                {path, kind, search.firstLine, search.firstLineNumber, search.matches, fixFor(kind)});
    }

    std::string source_;
    MigrationProgress& progress_;
    const std::function<bool()>& isCancelled_;
    dev_t device_ = 0;
    AbsolutePathScan result_;
};

bool hasComponentEnding(std::string_view relative, std::string_view suffix) {
    for (const auto& part : split(relative, '/'))
        if (part == suffix || (suffix.front() == '.' && endsWith(part, suffix) && part.size() > suffix.size()))
            return true;
    return false;
}

}  // namespace

std::optional<BreakKind> fileKind(std::string_view relative, bool inScriptFolder) {
    const auto name = lastComponent(std::string("/") + std::string(relative));
    if (name == "pyvenv.cfg" || inScriptFolder) return BreakKind::virtualEnvironment;
    if (name == "CMakeCache.txt") return BreakKind::cmakeCache;
    if (name == "compile_commands.json") return BreakKind::compileCommands;
    if (name == ".git") return BreakKind::gitWorktreeLink;
    const auto parts = split(relative, '/');
    // .git/worktrees/NAME/gitdir names the worktree's checkout.
    if (parts.size() >= 4 && name == "gitdir" && parts[parts.size() - 3] == "worktrees" &&
        parts[parts.size() - 4] == ".git")
        return BreakKind::gitWorktreeLink;
    for (const auto& part : parts)
        if (part == ".idea" || part == ".vscode") return BreakKind::projectCache;
    if (hasComponentEnding(relative, ".xcodeproj") || hasComponentEnding(relative, ".xcworkspace"))
        return BreakKind::projectCache;
    return std::nullopt;
}

bool namesPath(std::string_view line, std::string_view source) {
    return namesPathAt(line, source, true);
}

std::string fixFor(BreakKind kind) {
    for (const auto& entry : fixes)
        if (entry.kind == kind) return entry.fix;
    return {};
}

AbsolutePathScan scan(const std::string& source, MigrationProgress& progress,
                      const std::function<bool()>& isCancelled) {
    progress.setPhase("Looking for absolute paths");
    return Walk(source, progress, isCancelled).run();
}

}  // namespace corvel::AbsolutePathScanner
