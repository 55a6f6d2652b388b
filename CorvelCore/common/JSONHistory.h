// A capped list of records kept in one JSON file, oldest first: the cleanup simulations, the
// disk-operation audit log, the process actions and the benchmark results all use it. The file is
// read once, lazily; every append rewrites it atomically. One instance may be shared by several
// threads (the desktop application and the agent): all access is serialised.
//
//   JSONHistory<CleanupSimulation> history(dataFolder / "cleanup-simulations.json", 200);
//   history.append(simulation);                  // throws FileError; the item stays in memory
//   for (const auto& item : history.all()) ...   // oldest first
//   if (auto problem = history.loadProblem()) warn(*problem);   // the file was unreadable
//
// A missing file is an empty history. A file that cannot be read or decoded is also treated as
// empty (with loadProblem saying why) and is replaced by the next successful append.
#pragma once

#include "common/AtomicFile.h"
#include "common/Json.h"

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

template <class T>
class JSONHistory {
public:
    JSONHistory(std::filesystem::path file, std::size_t limit) : file_(std::move(file)), limit_(limit) {}

    const std::filesystem::path& file() const { return file_; }
    std::size_t limit() const { return limit_; }

    std::vector<T> all() {
        const std::lock_guard lock(mutex_);
        loadIfNeeded();
        return items_;
    }

    // Appends, drops the oldest beyond the limit, then rewrites the file. A write failure throws
    // FileError naming the file; the new item is kept in memory all the same.
    void append(T item) {
        const std::lock_guard lock(mutex_);
        loadIfNeeded();
        items_.push_back(std::move(item));
        if (items_.size() > limit_)
            items_.erase(items_.begin(), items_.begin() + static_cast<std::ptrdiff_t>(items_.size() - limit_));
        AtomicFile::write(file_, Json(items_).dump(1));
    }

    // Why the file read as empty, when it existed but could not be used.
    std::optional<std::string> loadProblem() {
        const std::lock_guard lock(mutex_);
        loadIfNeeded();
        return loadProblem_;
    }

private:
    void loadIfNeeded() {
        if (loaded_) return;
        loaded_ = true;
        try {
            const auto text = AtomicFile::read(file_);
            if (!text) return;
            auto decoded = parseJsonText(*text, file_.string()).template get<std::vector<T>>();
            if (decoded.size() > limit_)
                decoded.erase(decoded.begin(), decoded.begin() + static_cast<std::ptrdiff_t>(decoded.size() - limit_));
            items_ = std::move(decoded);
        } catch (const FileError& error) {
            loadProblem_ = error.what();
        } catch (const DecodingError& error) {
            const std::string text = error.what();
            loadProblem_ = (text.rfind(file_.string(), 0) == 0 ? text : file_.string() + ": " + text) +
                           " (it will be replaced by the next entry)";
        } catch (const nlohmann::json::exception& error) {
            loadProblem_ = file_.string() + ": " + error.what() + " (it will be replaced by the next entry)";
        }
    }

    std::filesystem::path file_;
    std::size_t limit_;
    std::mutex mutex_;
    std::vector<T> items_;
    bool loaded_ = false;
    std::optional<std::string> loadProblem_;
};

}  // namespace corvel
