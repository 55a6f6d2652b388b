// One file a running process uses under a mount point or folder: what the open-file lister
// reports, and what the disk-operation preflight, the cleanup simulation and `velmora processes
// --on` read. Grouped by process for people.
//
//   for (const auto& group : ProcessUsage::byProcess(usages))
//       print(group.command, group.pid, group.paths.size());
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"

#include <cstdint>
#include <string>
#include <vector>

namespace corvel {

struct ProcessUsage {
    enum class Kind { workingDirectory, openFile, executable };

    std::int32_t pid = 0;
    std::string command;
    std::string path;  // as the system reported it (raw bytes; not necessarily UTF-8)
    Kind kind = Kind::openFile;

    bool operator==(const ProcessUsage&) const = default;

    // The usages of one process, in the order they were listed.
    struct Group {
        std::int32_t pid = 0;
        std::string command;
        std::vector<ProcessUsage> usages;
        bool operator==(const Group&) const = default;
    };
    // Groups by pid in order of first appearance.
    static std::vector<Group> byProcess(const std::vector<ProcessUsage>& usages);
};

template <>
struct EnumTable<ProcessUsage::Kind> {
    static constexpr std::array<EnumEntry<ProcessUsage::Kind>, 3> entries{{
        {ProcessUsage::Kind::workingDirectory, "workingDirectory", "working folder"},
        {ProcessUsage::Kind::openFile, "openFile", "open file"},
        {ProcessUsage::Kind::executable, "executable", "program"},
    }};
};
CORVEL_ENUM_JSON(ProcessUsage::Kind)
CORVEL_JSON_RECORD(ProcessUsage, pid, command, path, kind)
CORVEL_JSON_RECORD(ProcessUsage::Group, pid, command, usages)

}  // namespace corvel
