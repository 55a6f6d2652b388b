// Property lists (XML and binary) as every disk-tool decoder receives them, then through each of
// those decoders: a hostile recording or tool reply reaches all of them.
#include "FuzzInput.h"
#include "storage/DiskutilParseError.h"
#include "storage/DiskutilParser.h"
#include "storage/PropertyList.h"

namespace {

// The decoders document exactly these two refusals: an unreadable document, a missing key.
template <class Decode>
void decode(Decode decoder) {
    try {
        (void)decoder();
    } catch (const corvel::PropertyListError&) {
    } catch (const corvel::DiskutilParseError&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvel;
    const auto input = fuzz::text(data, size);
    decode([&] { return PropertyList::parse(input); });
    decode([&] { return DiskutilParser::parseList(input); });
    decode([&] { return DiskutilParser::parsePhysicalDisk(input, std::nullopt); });
    decode([&] { return DiskutilParser::parseVolumeInfo(input); });
    decode([&] { return DiskutilParser::parseAPFSList(input); });
    return 0;
}
