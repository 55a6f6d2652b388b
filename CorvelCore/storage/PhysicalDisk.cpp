#include "storage/PhysicalDisk.h"

#include "common/Text.h"

namespace corvel {

std::string PhysicalDisk::displayName() const {
    if (mediaName.empty()) return id;
    return replaceAll(mediaName, " Media", "");
}

std::string PhysicalDisk::connectionLabel() const {
    std::string label = isInternal ? "Internal" : "External";
    if (busProtocol && !busProtocol->empty()) label += " \u00B7 " + *busProtocol;
    return label;
}

}  // namespace corvel
