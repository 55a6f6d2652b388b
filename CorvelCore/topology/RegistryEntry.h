// One entry of the platform's I/O registry on the way from a disk up to the machine, as the
// device-registry reader hands it over: its class, its name and the few properties the topology
// reads ("locationID", "bcdUSB", "Device Speed", "USBSpeed", "IOPCIExpressLinkStatus",
// "IOPCIExpressLinkCapabilities", "UID"). A recording keeps the same shape under "ioRegistry".
//
//   {"className": "IOUSBHostDevice", "name": "Elements 25A3",
//    "properties": {"locationID": 17891328, "bcdUSB": 800, "Device Speed": 2}}
#pragma once

#include "common/Json.h"

#include <string>

namespace corvel {

struct RegistryEntry {
    std::string className;
    std::string name;
    Json properties = Json::object();

    bool operator==(const RegistryEntry&) const = default;
};

CORVEL_JSON_RECORD(RegistryEntry, className, name, properties)

}  // namespace corvel
