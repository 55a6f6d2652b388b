#include "BrandLogo.h"

#include "BrandResources.h"

namespace corvel::BrandLogo {

std::string_view svg() {
    return BrandResources::logo_svg();
}

std::string_view monoSvg() {
    return BrandResources::logo_mono_svg();
}

std::string tintedMono(const Rgb& colour) {
    static constexpr std::string_view ink = "#000000";
    std::string text(monoSvg());
    const auto replacement = colour.hex();
    for (auto at = text.find(ink); at != std::string::npos; at = text.find(ink, at + replacement.size()))
        text.replace(at, ink.size(), replacement);
    return text;
}

}  // namespace corvel::BrandLogo
