// A thin, allocation-light directory lister. Entry types come from the directory entries
// themselves, so listing costs no metadata call per entry; a denied listing is told apart from
// other failures because walkers count the two differently.
//
// Names are kept as the exact bytes the file system returned, so that a child path formed from
// them opens the same file even when the name is not valid UTF-8; `repairedUTF8` (common/Text.h)
// turns a name or path into text fit for people and JSON.
//
//   try {
//       for (const auto& entry : DirectoryReader::read("/some/folder")) { ... }
//   } catch (const DirectoryReader::Failure& failure) {
//       if (failure.kind() == DirectoryReader::Failure::Kind::accessDenied) { ... }
//   }
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace corvel::DirectoryReader {

enum class EntryType { directory, regular, symlink, other };

struct Entry {
    std::string name;  // raw bytes of the name
    EntryType type = EntryType::other;

    bool operator==(const Entry&) const = default;
};

class Failure : public std::runtime_error {
public:
    enum class Kind { other, accessDenied };

    static Failure other(std::int32_t errorNumber, const std::string& path);
    static Failure accessDenied(const std::string& path);

    Kind kind() const { return kind_; }
    // The system error number behind an `other` failure (0 for accessDenied).
    std::int32_t errorNumber() const { return errorNumber_; }

    bool operator==(const Failure& other) const { return kind_ == other.kind_ && errorNumber_ == other.errorNumber_; }

private:
    Failure(Kind kind, std::int32_t errorNumber, const std::string& message)
        : std::runtime_error(message), kind_(kind), errorNumber_(errorNumber) {}

    Kind kind_;
    std::int32_t errorNumber_;
};

// The entries of a folder in the order the file system returns them, without "." and "..".
// Throws Failure when the folder cannot be opened.
std::vector<Entry> read(const std::string& path);

// The same, with any failure turned into an absent list.
std::optional<std::vector<Entry>> entries(const std::string& path);

// Maps a directory entry's type byte (DT_*); DT_UNKNOWN and everything unlisted is `other`.
EntryType entryType(unsigned char directoryEntryType);

}  // namespace corvel::DirectoryReader
