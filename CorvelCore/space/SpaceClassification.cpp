#include "space/SpaceClassification.h"

namespace corvel {

const SpaceClassification& SpaceClassification::unknown() {
    static const SpaceClassification value{SpaceCategory::other, CleanupRisk::gray, std::nullopt,
                                           "No rule identifies who owns this data.", std::nullopt};
    return value;
}

}  // namespace corvel

std::size_t std::hash<corvel::SpaceClassification>::operator()(
    const corvel::SpaceClassification& classification) const noexcept {
    // Absent and empty optionals must hash apart, as they compare apart.
    auto mix = [](std::size_t seed, std::size_t value) {
        return seed ^ (value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2));
    };
    const std::hash<std::string> text;
    std::size_t seed = static_cast<std::size_t>(classification.category);
    seed = mix(seed, static_cast<std::size_t>(classification.risk));
    seed = mix(seed, classification.application ? text(*classification.application) + 1 : 0);
    seed = mix(seed, text(classification.rationale));
    seed = mix(seed, classification.hint ? text(*classification.hint) + 1 : 0);
    return seed;
}
