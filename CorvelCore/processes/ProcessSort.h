// The order of the processes list: busiest first by processor share or by memory.
//
//   enumFromRaw<ProcessSort>("memory") == ProcessSort::memory
#pragma once

#include "common/EnumTable.h"

namespace corvel {

enum class ProcessSort { cpu, memory };

template <>
struct EnumTable<ProcessSort> {
    static constexpr std::array<EnumEntry<ProcessSort>, 2> entries{{
        {ProcessSort::cpu, "cpu", "CPU"},
        {ProcessSort::memory, "memory", "memory"},
    }};
};
CORVEL_ENUM_JSON(ProcessSort)

}  // namespace corvel
