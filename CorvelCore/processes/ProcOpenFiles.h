// The open-file lister on Linux: reads /proc/[pid]/{cwd,exe,root,fd/*,maps} directly instead of
// starting lsof, which on a busy machine is several times faster and needs no extra program. The
// decisions (which entries are processes, which files lie in the scanned scope, what a link or a
// maps line says) are pure functions here; only the system calls live in platform/linux.
//
//   ProcOpenFiles lister;
//   for (const auto& usage : lister.usages("/mnt/backup")) ...
//
// A mount point is matched by device, as lsof +f and fuser -m do, so files reached through bind
// mounts or another mount namespace count too; an ordinary folder by device and path. Mapped
// files (libraries, memory-mapped data) are looked for only in processes that hold nothing else
// there: they find the same processes, the listing of one already found stays shorter.
#pragma once

#include "processes/OpenFileListing.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

class ProcOpenFiles : public OpenFileListing {
public:
    // Processes that exit or deny access while being read are skipped. A path that cannot be
    // examined itself lists nothing.
    std::vector<ProcessUsage> usages(const std::string& path) override;

    // What a scan looks for: files on `device`, and, unless the path is the root of its file
    // system, only those at or below `path`.
    struct Scope {
        std::uint64_t device = 0;
        std::string path;
        bool wholeFileSystem = true;
    };

    // The pid a /proc entry names; absent for "self", "sys" and every other non-process entry.
    static std::optional<std::int32_t> processID(std::string_view entryName);
    // The path a /proc link names: the kernel's " (deleted)" mark removed; empty for things that
    // are not files ("socket:[123]", "pipe:[4]", "anon_inode:[eventfd]").
    static std::string pathFromLink(std::string_view linkTarget);
    // The command name from /proc/[pid]/comm (without its line end).
    static std::string commandFromComm(std::string_view comm);
    static bool isInScope(const Scope& scope, std::uint64_t fileDevice, std::string_view path);
    // The distinct files of a /proc/[pid]/maps text that live on the device major:minor, in order.
    static std::vector<std::string> mappedFiles(std::string_view maps, unsigned major, unsigned minor);
};

}  // namespace corvel
