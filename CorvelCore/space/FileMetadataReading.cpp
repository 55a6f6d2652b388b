#include "space/FileMetadataReading.h"

namespace corvel {

std::vector<DirectoryReader::Entry> SystemFileMetadata::readDirectory(const std::string& path) {
    return DirectoryReader::read(path);
}

std::optional<PathStatus> SystemFileMetadata::status(const std::string& path) {
    return FileAttributes::status(path);
}

std::optional<FileSizeFacts> SystemFileMetadata::facts(const std::string& path) {
    return FileAttributes::facts(path);
}

std::optional<std::vector<ExtentRange>> SystemFileMetadata::physicalExtents(const std::string& path,
                                                                            std::int64_t logicalSize) {
    return FileAttributes::physicalExtents(path, logicalSize);
}

}  // namespace corvel
