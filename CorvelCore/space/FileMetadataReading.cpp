#include "space/FileMetadataReading.h"

#include "space/ScanDirectoryAccess.h"

namespace corvel {

namespace Access = ScanDirectoryAccess;

namespace {

PathStatus pathStatus(const Access::Status& status) {
    return PathStatus{status.type, status.device, status.allocatedBytes, status.mountID};
}

}  // namespace

SystemFileMetadata::SystemFileMetadata() : buffer_(64 * 1024) {
    // A deep tree keeps a handle open per level that still has folders waiting.
    Access::raiseOpenFileLimit();
}

int SystemFileMetadata::openFolder(const std::string& path, int& error) { return Access::openDirectory(path, error); }

int SystemFileMetadata::openFolderAt(int folder, const std::string& name, int& error) {
    return Access::openDirectoryAt(folder, name.c_str(), error);
}

void SystemFileMetadata::close(int handle) { Access::close(handle); }

bool SystemFileMetadata::list(int folder, std::vector<DirectoryReader::Entry>& entries, int& error) {
    std::vector<Access::Entry> batch;
    for (;;) {
        if (!Access::readBatch(folder, buffer_, batch, error)) return false;
        if (batch.empty()) return true;
        for (const Access::Entry& entry : batch) entries.push_back({std::string(entry.name, entry.length), entry.type});
    }
}

std::optional<PathStatus> SystemFileMetadata::status(int handle, int& error) {
    Access::Status status;
    if (!Access::status(handle, status, error)) return std::nullopt;
    return pathStatus(status);
}

std::optional<PathStatus> SystemFileMetadata::statusAt(int folder, const std::string& name, int& error) {
    Access::Status status;
    if (!Access::statusAt(folder, name.c_str(), status, error)) return std::nullopt;
    return pathStatus(status);
}

std::optional<PathStatus> SystemFileMetadata::statusOfTarget(const std::string& path, int& error) {
    Access::Status status;
    if (!Access::statusOfTarget(path, status, error)) return std::nullopt;
    return pathStatus(status);
}

std::optional<FileSizeFacts> SystemFileMetadata::factsAt(int folder, const std::string& name, int& error) {
    return FileAttributes::factsAt(folder, name, error);
}

std::optional<std::vector<ExtentRange>> SystemFileMetadata::physicalExtentsAt(int folder, const std::string& name,
                                                                              std::int64_t logicalSize, int& error) {
    return FileAttributes::physicalExtentsAt(folder, name, logicalSize, error);
}

}  // namespace corvel
