#include "space/DirectoryReader.h"

#include <dirent.h>

#include <cerrno>
#include <cstring>

namespace corvel::DirectoryReader {

namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

// Length of the well-formed UTF-8 sequence starting at `i`, or 0 when it is not well formed
// (overlong forms, surrogates and code points above U+10FFFF included).
std::size_t sequenceLength(std::string_view bytes, std::size_t i) {
    const auto lead = static_cast<unsigned char>(bytes[i]);
    if (lead < 0x80) return 1;
    std::size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;  // allowed range of the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return 0;
    }
    if (bytes.size() - i < length) return 0;
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    if (second < low || second > high) return 0;
    for (std::size_t k = 2; k < length; ++k)
        if (!isContinuation(static_cast<unsigned char>(bytes[i + k]))) return 0;
    return length;
}

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

std::string repairedUTF8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    std::size_t i = 0;
    while (i < bytes.size()) {
        const std::size_t length = sequenceLength(bytes, i);
        if (length == 0) {
            text += replacementCharacter;
            ++i;
        } else {
            text.append(bytes.substr(i, length));
            i += length;
        }
    }
    return text;
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
