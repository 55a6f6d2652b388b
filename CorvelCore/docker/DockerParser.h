// Pure readers of the docker program's listing output. The engine prints one JSON object per
// line for most listings; every reader is lenient: a line that is not a JSON object is skipped,
// an entry without its identifier is skipped, a value of the wrong type reads as absent.
//
//   auto verbose = DockerParser::verbose(dfVerboseOutput);
//   auto images = DockerParser::images(imagesOutput, verbose);
//   DockerParser::size("1.2GB (45%)") == 1200000000
#pragma once

#include "common/Json.h"
#include "docker/DockerComposeProject.h"
#include "docker/DockerContainer.h"
#include "docker/DockerDiskUsageLine.h"
#include "docker/DockerImage.h"
#include "docker/DockerNetwork.h"
#include "docker/DockerVolume.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

// The engine facts the inventory keeps from "docker info".
struct DockerEngineInfo {
    std::optional<std::string> serverVersion;
    std::optional<std::string> operatingSystem;
    std::optional<std::string> dockerRootDir;

    bool operator==(const DockerEngineInfo&) const = default;
};

// Size and link count of one volume from the verbose disk-usage facts.
struct DockerVolumeFacts {
    std::optional<std::int64_t> sizeBytes;
    std::optional<std::int64_t> links;

    bool operator==(const DockerVolumeFacts&) const = default;
};

namespace DockerParser {

// "docker info" output, which must be one JSON object (else DiskutilParseError notADictionary).
// Blank texts read as absent.
DockerEngineInfo engineInfo(std::string_view data);

// "docker system df -v" output: one JSON object, or none when it is not one.
std::optional<Json> verbose(std::string_view data);

std::vector<DockerContainer> containers(std::string_view data);
// Mounts by container ID, from the inspect template {"id":…,"mounts":…} printed once per line.
std::map<std::string, std::vector<DockerMount>> mounts(std::string_view data);
std::vector<DockerImage> images(std::string_view data, const std::optional<Json>& verbose);
std::vector<DockerVolume> volumes(std::string_view data);
std::vector<DockerNetwork> networks(std::string_view data);
// "docker compose ls --format json": one JSON array (one object per line is accepted too).
std::vector<DockerComposeProject> composeProjects(std::string_view data);
std::vector<DockerDiskUsageLine> diskUsage(std::string_view data);

// Writable-layer size by container ID.
std::map<std::string, std::int64_t> containerSizes(const std::optional<Json>& verbose);
std::map<std::string, DockerVolumeFacts> volumeSizes(const std::optional<Json>& verbose);
// Sum of the build-cache records' sizes; 0 without facts.
std::int64_t buildCacheBytes(const std::optional<Json>& verbose);

// The engine's decimal size texts ("1.2GB", "512kB", "0B", "1.2GB (45%)", "1234"); none for
// "", "N/A" and anything else. Rounded half away from zero, clamped into 64 bits.
std::optional<std::int64_t> size(std::string_view text);
// "k=v,k2=v2" into a map; parts without "=" are dropped.
std::map<std::string, std::string> labels(std::string_view text);
// Every line of the output that decodes as a JSON object.
std::vector<Json> lines(std::string_view data);

// What `lines` had to leave out, one text per line ("Could not read line 3: not a JSON object"),
// so that garbage or a line cut short is reported instead of silently becoming fewer entries.
// A last line without its line end that does not decode is reported as cut short.
std::vector<std::string> unreadableLines(std::string_view data);

// For outputs that are one document ("docker system df -v", "docker compose ls"): a text saying
// why it cannot be read, or absent when it decodes (blank output counts as readable).
std::optional<std::string> documentProblem(std::string_view data, bool arrayAllowed);

// Whether two engine IDs name the same object: "sha256:" prefixes are ignored and a short ID
// (at least 12 characters) matches the full ID it begins.
bool sameID(std::string_view a, std::string_view b);

}  // namespace DockerParser
}  // namespace corvel
