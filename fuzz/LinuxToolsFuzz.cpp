// The Linux readers of outside text: lsblk's JSON, smartctl's JSON and /proc/self/mountinfo.
// One harness for the three keeps the corpus shared (JSON seeds help the mount-table reader too).
#include "FuzzInput.h"
#include "common/Json.h"
#include "storage/LsblkParser.h"
#include "storage/MountInfoEntry.h"
#include "storage/SmartctlReport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvel;
    const auto input = fuzz::text(data, size);
    try {
        (void)LsblkParser::parse(input);
    } catch (const DecodingError&) {
    }
    try {
        (void)SmartctlReport::decode(input);
    } catch (const DecodingError&) {
    }
    (void)MountInfoEntry::parse(input);
    return 0;
}
