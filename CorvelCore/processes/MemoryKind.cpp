#include "processes/MemoryKind.h"

namespace corvel {

std::string_view meaning(MemoryKind kind) {
    if (kind == MemoryKind::footprint)
        return "Memory is the physical footprint, as the system's activity monitor shows it.";
    if (kind == MemoryKind::proportional)
        return "Memory is the proportional set size (PSS): pages shared by several processes are split between them.";
    return "Memory is the resident set size (RSS) where PSS could not be read: shared pages count in full for every "
           "process.";
}

}  // namespace corvel
