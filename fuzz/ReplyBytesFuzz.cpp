// The kernel reply decoders: FIEMAP extent buffers, getattrlist replies and getattrlistbulk
// batches. The first byte picks the decoder (and the record count claimed for a batch) so that
// one corpus serves all three; each must refuse impossible values, never trap.
#include "FuzzInput.h"
#include "space/AttributeListReply.h"
#include "space/BulkAttributeRecords.h"
#include "space/FiemapReply.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvel;
    if (size == 0) return 0;
    const auto reply = fuzz::bytes(data + 1, size - 1);
    if ((data[0] & 3) == 1) {
        if (const auto batch = FiemapReply::decode(reply)) (void)FiemapReply::physicalRanges(batch->extents);
    } else if ((data[0] & 3) == 2) {
        std::vector<ScanDirectoryAccess::Entry> entries;
        (void)BulkAttributeRecords::decode(reply, data[0] >> 2, entries);
    } else {
        (void)AttributeListReply::decode(reply);
    }
    return 0;
}
