// The logo files as compiled-in text (generated from CorvelBrand/*.svg at configure time).
//
//   std::string_view logo = BrandResources::logo_svg();
#pragma once

#include <string_view>

namespace corvel::BrandResources {

std::string_view logo_svg();
std::string_view logo_mono_svg();

}  // namespace corvel::BrandResources
