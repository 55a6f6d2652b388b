#include "SpaceCatalogFor.h"

#include "common/DataFolder.h"

#include <filesystem>

namespace corvel::cli {

SpaceCatalog spaceCatalogFor(CliContext& context, std::vector<std::string> projectRoots) {
    const auto platform = [&] {
        if (const auto* machine = context.recording()) return SpaceCatalog::platformNamed(machine->platform);
        return hostPlatform() == HostPlatform::linux ? SpaceCatalog::Platform::linuxOS : SpaceCatalog::Platform::macOS;
    }();
    return SpaceCatalog(context.home(), std::move(projectRoots), platform);
}

std::string absolutePathText(const std::string& typed) {
    std::filesystem::path path(typed);
    if (path.is_relative()) {
        std::error_code ec;
        const auto base = std::filesystem::current_path(ec);
        if (!ec) path = base / path;
    }
    std::string text = path.lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
}

}  // namespace corvel::cli
