#include "consent/ConsentScope.h"

#include <array>

namespace corvel {
namespace {

struct ScopeDetails {
    ConsentScope scope;
    std::string_view explanation;
    bool isRequired;
};

// The explanations are part of the terms: any change of wording changes the terms' digest.
constexpr std::array<ScopeDetails, 5> details{{
    {ConsentScope::readStorage,
     "Lists disks, volumes, folder sizes and Docker objects. Reads metadata and, when you ask, file contents for "
     "checksums. Required to use the app.",
     true},
    {ConsentScope::diskOperations,
     "Lets you run these actions after a preflight and your confirmation each time. Unmounting or ejecting "
     "interrupts apps using that disk. Erasing and formatting are never offered.",
     false},
    {ConsentScope::benchmark,
     "Lets you run a speed test that writes one temporary file (removed afterwards) on the volume you choose. "
     "Heavy I/O for up to a minute.",
     false},
    {ConsentScope::backgroundAgent,
     "Lets you enable a small agent that keeps checking free space and disk connections while the app is closed. "
     "You switch it on separately.",
     false},
    {ConsentScope::processControl,
     "Lets you stop apps and your own processes from the Processes screen, after confirming each time. "
     "Force-quitting can lose unsaved work. System processes and other users' processes are never offered.",
     false},
}};

const ScopeDetails& detailsOf(ConsentScope scope) {
    for (const auto& entry : details)
        if (entry.scope == scope) return entry;
    return details.front();
}

}  // namespace

std::string_view title(ConsentScope scope) {
    return label(scope);
}

std::string_view explanation(ConsentScope scope) {
    return detailsOf(scope).explanation;
}

bool isRequired(ConsentScope scope) {
    return detailsOf(scope).isRequired;
}

}  // namespace corvel
