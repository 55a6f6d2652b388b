#include "diskops/DiskOperation.h"

namespace corvel {
namespace {

const DiskOperationEntry& entryOf(DiskOperation operation) {
    for (const auto& entry : EnumTable<DiskOperation>::entries)
        if (entry.value == operation) return entry;
    return EnumTable<DiskOperation>::entries.front();  // unreachable: every case is in the table
}

}  // namespace

std::string_view title(DiskOperation operation) {
    return entryOf(operation).label;
}

std::string_view symbol(DiskOperation operation) {
    return entryOf(operation).symbol;
}

bool isExecutableInThisBuild(DiskOperation operation) {
    return entryOf(operation).isExecutableInThisBuild;
}

}  // namespace corvel
