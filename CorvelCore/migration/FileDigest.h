// The SHA-256 of one regular file, read in chunks of a caller's buffer so that memory stays the
// same whatever the file's size. The file is opened without following a link and without
// blocking, and refused unless it is a regular file, so a FIFO put in its place never hangs us.
//
//   std::vector<unsigned char> buffer(FileDigest::bufferBytes);
//   FileDigest digest = FileDigest::of("/data/a.bin", buffer, progress, isCancelled);
//   if (digest.error == 0) use(digest.sha256, digest.bytesRead);
#pragma once

#include "migration/MigrationProgress.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace corvel {

struct FileDigest {
    std::string sha256;          // lower-case hex; empty when the file could not be read
    std::int64_t bytesRead = 0;  // what was hashed: differs from the listed size if the file changed
    int error = 0;               // errno of the failure, 0 when read to the end
    bool wasCancelled = false;

    bool operator==(const FileDigest&) const = default;

    static constexpr std::size_t bufferBytes = 1024 * 1024;

    // Never throws for the file's sake; cancellation is polled between chunks.
    static FileDigest of(const std::string& path, std::vector<unsigned char>& buffer, MigrationProgress& progress,
                         const std::function<bool()>& isCancelled);
};

}  // namespace corvel
