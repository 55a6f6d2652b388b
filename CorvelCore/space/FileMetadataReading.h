// The seam between the footprint walks and the file system: FolderWalk (and through it
// PhysicalFootprint and DirectorySizer) reads folders and files only through this interface, so
// that they run over the real file system (SystemFileMetadata) or over a synthetic one in tests,
// where clones, mount points and denied folders can be staged without root or special file
// systems.
//
// Everything below the root is named relative to an open folder handle, never by a full path:
// the walk reaches trees deeper than the longest path the system accepts, and the kernel does
// not resolve a path per file. Nothing here throws; failures come back as the system's error
// number.
//
//   int error = 0;
//   int folder = files.openFolder("/var/lib/docker", error);
//   std::vector<DirectoryReader::Entry> entries;
//   files.list(folder, entries, error);
//   auto facts = files.factsAt(folder, entries[0].name, error);
//   files.close(folder);
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

    // A handle on the folder at `path`, following a final symbolic link (a root is measured where
    // it lies), or -1 with `error` set.
    virtual int openFolder(const std::string& path, int& error) = 0;
    // A handle on the subfolder `name` of an open folder, never following a link, or -1.
    virtual int openFolderAt(int folder, const std::string& name, int& error) = 0;
    virtual void close(int handle) = 0;

    // Appends the folder's entries ("." and ".." left out) in the order the file system gives
    // them. False with `error` set when the listing broke off; what was read stays.
    virtual bool list(int folder, std::vector<DirectoryReader::Entry>& entries, int& error) = 0;

    // The status of an open handle, with its mount.
    virtual std::optional<PathStatus> status(int handle, int& error) = 0;
    // The status of an entry of an open folder, never following a final link.
    virtual std::optional<PathStatus> statusAt(int folder, const std::string& name, int& error) = 0;
    // The status of what a path names, following a final link: whether a location exists at all.
    virtual std::optional<PathStatus> statusOfTarget(const std::string& path, int& error) = 0;

    // As FileAttributes::factsAt and physicalExtentsAt.
    virtual std::optional<FileSizeFacts> factsAt(int folder, const std::string& name, int& error) = 0;
    virtual std::optional<std::vector<ExtentRange>> physicalExtentsAt(int folder, const std::string& name,
                                                                      std::int64_t logicalSize, int& error) = 0;
};

// The live file system, through the scanner's own handle calls (ScanDirectoryAccess).
class SystemFileMetadata final : public FileMetadataReading {
public:
    SystemFileMetadata();

    int openFolder(const std::string& path, int& error) override;
    int openFolderAt(int folder, const std::string& name, int& error) override;
    void close(int handle) override;
    bool list(int folder, std::vector<DirectoryReader::Entry>& entries, int& error) override;
    std::optional<PathStatus> status(int handle, int& error) override;
    std::optional<PathStatus> statusAt(int folder, const std::string& name, int& error) override;
    std::optional<PathStatus> statusOfTarget(const std::string& path, int& error) override;
    std::optional<FileSizeFacts> factsAt(int folder, const std::string& name, int& error) override;
    std::optional<std::vector<ExtentRange>> physicalExtentsAt(int folder, const std::string& name,
                                                              std::int64_t logicalSize, int& error) override;

private:
    std::vector<std::byte> buffer_;
};

}  // namespace corvel
