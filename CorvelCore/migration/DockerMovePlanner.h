// A plan, for review, to move the Docker engine's data to another volume: Docker Desktop's disk
// image on a Mac, the native engine's data root on Linux. Pure, like MigrationPlanner: every
// blocker and every line follows from the DockerMoveFacts the caller measured, and the plan uses
// the same record so that front ends show both alike. Nothing here runs a command.
//
//   DockerMoveFacts facts = dockerMoveFacts(machine, "/mnt/big");   // machine/DockerMoveReading.h
//   MigrationPlan plan = DockerMovePlanner::plan(facts);
//
// Blockers, in this order: nothing found to move; the engine running (the data is in use); a
// target that is missing or not a folder; a target on the data's own volume (a move frees
// nothing); a read-only target; a target with less room than the data's allocated bytes; a
// destination that already exists.
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"
#include "common/Platform.h"
#include "migration/MigrationPlan.h"
#include "storage/StorageVolume.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

// What is known about the target path on disk.
enum class TargetState { folder, missing, notFolder, unchecked };

template <>
struct EnumTable<TargetState> {
    static constexpr std::array<EnumEntry<TargetState>, 4> entries{{
        {TargetState::folder, "folder", "Folder"},
        {TargetState::missing, "missing", "Missing"},
        {TargetState::notFolder, "notFolder", "Not a folder"},
        {TargetState::unchecked, "unchecked", "Not checked"},
    }};
};
CORVEL_ENUM_JSON(TargetState)

struct DockerMoveFacts {
    Platform platform = Platform::linux;
    bool isInstalled = false;  // the docker program was found
    bool isEngineRunning = false;
    std::optional<std::string> engineVersion;
    std::optional<std::string> dataPath;  // the disk image file, or the native engine's data root
    bool isDataFolder = false;            // a native engine's folder rather than an image file
    std::int64_t apparentBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::optional<StorageVolume> sourceVolume;
    std::string target;
    std::optional<StorageVolume> targetVolume;
    TargetState targetState = TargetState::unchecked;
    std::optional<bool> isTargetWritable;  // absent when not checked on disk
    bool destinationExists = false;
    std::string home;

    bool operator==(const DockerMoveFacts&) const = default;
};
CORVEL_JSON_RECORD(DockerMoveFacts, platform, isInstalled, isEngineRunning, engineVersion, dataPath, isDataFolder,
                   apparentBytes, allocatedBytes, sourceVolume, target, targetVolume, targetState, isTargetWritable,
                   destinationExists, home)

namespace DockerMovePlanner {

// Where the data would live: TARGET/DockerDesktop (a folder for Docker Desktop's image) or
// TARGET/docker (a native engine's new data root).
std::string destinationFor(const DockerMoveFacts& facts);

// Docker Desktop's settings file, where its disk image location is kept.
std::string desktopSettingsFile(Platform platform, const std::string& home);

MigrationPlan plan(const DockerMoveFacts& facts);

}  // namespace DockerMovePlanner
}  // namespace corvel
