// Short texts from outside: ISO 8601 dates (recordings, settings, histories), file names as they
// are shown (repaired UTF-8, terminal escaping, canonical comparison) and the shared JSON reader,
// which must refuse, not overflow the stack on, deeply nested documents.
#include "FuzzInput.h"
#include "common/CanonicalText.h"
#include "common/ISO8601.h"
#include "common/Json.h"
#include "common/Text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvel;
    const auto input = fuzz::text(data, size);
    if (const auto date = ISO8601::parse(input)) (void)ISO8601::format(*date);
    (void)repairedUTF8(input);
    (void)terminalSafe(input);
    (void)composedText(input);
    try {
        (void)parseJsonText(input, "input");
    } catch (const DecodingError&) {
    }
    return 0;
}
