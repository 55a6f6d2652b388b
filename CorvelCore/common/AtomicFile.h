// Persisted files are replaced whole: the new contents go to a temporary file in the same folder,
// are flushed to disk, then renamed over the old name. A crash at any point leaves either the old
// file or the new one, never a half-written mix.
//
//   AtomicFile::write(dataDir / "settings.json", json.dump(2));
//   if (auto text = AtomicFile::read(path)) { ... }   // nullopt: no such file
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace corvel {

// A file we could not read or write; the message names the path and the system's reason.
class FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace AtomicFile {

// Creates missing parent folders. Throws FileError; on failure the old file is untouched.
void write(const std::filesystem::path& path, std::string_view contents);

// Files Velmora reads are small documents; anything larger is not one of ours.
inline constexpr std::size_t defaultReadLimit = 64u << 20;

// nullopt when the file does not exist; FileError when it exists but cannot be read, is not a
// regular file (a folder, a FIFO, a device such as /dev/zero) or is larger than `limit` bytes.
// Never blocks on a FIFO and never reads without end.
std::optional<std::string> read(const std::filesystem::path& path, std::size_t limit = defaultReadLimit);

}  // namespace AtomicFile
}  // namespace corvel
