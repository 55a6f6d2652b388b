// The seam between the footprint walkers and the file system: PhysicalFootprint and
// DirectorySizer read folders and files only through this interface, so that they run over the
// real file system (SystemFileMetadata) or over a synthetic one in tests, where clones, mount
// points and denied folders can be staged without root or special file systems.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "space/DirectoryReader.h"
#include "space/ExtentUnion.h"
#include "space/FileAttributes.h"
#include "space/FileSizeFacts.h"

namespace corvel {

class FileMetadataReading {
public:
    virtual ~FileMetadataReading() = default;

    // As DirectoryReader::read: throws DirectoryReader::Failure.
    virtual std::vector<DirectoryReader::Entry> readDirectory(const std::string& path) = 0;
    // As FileAttributes::status, facts and physicalExtents: absent on failure, never throw.
    virtual std::optional<PathStatus> status(const std::string& path) = 0;
    virtual std::optional<FileSizeFacts> facts(const std::string& path) = 0;
    virtual std::optional<std::vector<ExtentRange>> physicalExtents(const std::string& path,
                                                                    std::int64_t logicalSize) = 0;
};

// The live file system.
class SystemFileMetadata final : public FileMetadataReading {
public:
    std::vector<DirectoryReader::Entry> readDirectory(const std::string& path) override;
    std::optional<PathStatus> status(const std::string& path) override;
    std::optional<FileSizeFacts> facts(const std::string& path) override;
    std::optional<std::vector<ExtentRange>> physicalExtents(const std::string& path, std::int64_t logicalSize) override;
};

}  // namespace corvel
