// The kernel reply decoders: FIEMAP extent buffers and getattrlist replies. The first byte picks
// the decoder so that one corpus serves both; both must refuse impossible values, never trap.
#include "FuzzInput.h"
#include "space/AttributeListReply.h"
#include "space/FiemapReply.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvel;
    if (size == 0) return 0;
    const auto reply = fuzz::bytes(data + 1, size - 1);
    if (data[0] & 1) {
        if (const auto batch = FiemapReply::decode(reply)) (void)FiemapReply::physicalRanges(batch->extents);
    } else {
        (void)AttributeListReply::decode(reply);
    }
    return 0;
}
