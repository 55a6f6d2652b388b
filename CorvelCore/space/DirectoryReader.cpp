#include "space/DirectoryReader.h"

#include <dirent.h>

#include <cerrno>
#include <cstring>

namespace corvel::DirectoryReader {

namespace {

class DirectoryHandle {
public:
    explicit DirectoryHandle(DIR* handle) : handle_(handle) {}
    ~DirectoryHandle() {
        if (handle_ != nullptr) closedir(handle_);
    }
    DirectoryHandle(const DirectoryHandle&) = delete;
    DirectoryHandle& operator=(const DirectoryHandle&) = delete;
    DIR* get() const { return handle_; }

private:
    DIR* handle_;
};

}  // namespace

Failure Failure::other(std::int32_t errorNumber, const std::string& path) {
    return Failure(Kind::other, errorNumber, "cannot list " + path + ": " + std::strerror(errorNumber));
}

Failure Failure::accessDenied(const std::string& path) {
    return Failure(Kind::accessDenied, 0, "access denied: " + path);
}

EntryType entryType(unsigned char directoryEntryType) {
    switch (directoryEntryType) {
        case DT_DIR:
            return EntryType::directory;
        case DT_REG:
            return EntryType::regular;
        case DT_LNK:
            return EntryType::symlink;
        default:
            return EntryType::other;
    }
}

std::vector<Entry> read(const std::string& path) {
    DirectoryHandle directory(opendir(path.c_str()));
    if (directory.get() == nullptr) {
        const int error = errno;
        if (error == EPERM || error == EACCES) throw Failure::accessDenied(path);
        throw Failure::other(error, path);
    }
    std::vector<Entry> result;
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(directory.get());
        if (entry == nullptr) {
            // A read error mid-listing (an I/O error, a folder removed under us) must not pass
            // for a complete listing.
            if (errno != 0) throw Failure::other(errno, path);
            break;
        }
        const std::string_view name(entry->d_name);
        if (name == "." || name == "..") continue;
        result.push_back({std::string(name), entryType(entry->d_type)});
    }
    return result;
}

std::optional<std::vector<Entry>> entries(const std::string& path) {
    try {
        return read(path);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace corvel::DirectoryReader
