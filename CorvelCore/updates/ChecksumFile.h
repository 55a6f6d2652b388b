// Published checksum files and the digest of a downloaded file. A checksum file is read the way
// `sha256sum` writes it ("<64 hex digits>  <name>"), but only the digest matters: the first run
// of 64 hexadecimal characters, in either case. A file without one holds no digest.
//
//   auto published = ChecksumFile::publishedDigest(text);      // lower case, or absent
//   bool ok = published && *published == ChecksumFile::digestOfFile(package);
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace corvel::ChecksumFile {

std::optional<std::string> publishedDigest(std::string_view text);

// SHA-256 of the file's bytes as 64 lower-case hexadecimal digits, read in pieces (packages are
// larger than anything we read whole). Throws FileError when the file cannot be read.
std::string digestOfFile(const std::filesystem::path& path);

// The line of a checksum file for `fileName` with `digest`, as `sha256sum` writes it.
std::string line(std::string_view digest, std::string_view fileName);

}  // namespace corvel::ChecksumFile
