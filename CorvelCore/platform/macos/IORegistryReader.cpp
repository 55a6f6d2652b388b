#include "platform/macos/IORegistryReader.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

#include <array>
#include <cstdint>

namespace corvel {
namespace {

constexpr std::array<const char*, 8> propertyKeys{"locationID",
                                                  "bcdUSB",
                                                  "Device Speed",
                                                  "USBSpeed",
                                                  "USB Product Name",
                                                  "IOPCIExpressLinkStatus",
                                                  "IOPCIExpressLinkCapabilities",
                                                  "UID"};

// A chain longer than this is not a device tree we know how to read.
constexpr int maximumDepth = 64;

// Numbers and strings only; anything else is not ours to read.
Json value(CFTypeRef property) {
    if (CFGetTypeID(property) == CFNumberGetTypeID()) {
        long long number = 0;
        // Switch UIDs use all 64 bits: keep the bits, unsigned.
        if (CFNumberGetValue(static_cast<CFNumberRef>(property), kCFNumberLongLongType, &number))
            return static_cast<std::uint64_t>(number);
        return nullptr;
    }
    if (CFGetTypeID(property) == CFStringGetTypeID()) {
        char buffer[512];
        if (CFStringGetCString(static_cast<CFStringRef>(property), buffer, sizeof buffer, kCFStringEncodingUTF8))
            return std::string(buffer);
    }
    return nullptr;
}

RegistryEntry describe(io_registry_entry_t entry) {
    RegistryEntry record;
    io_name_t className{};
    if (IOObjectGetClass(entry, className) == KERN_SUCCESS) record.className = className;
    io_name_t name{};
    if (IORegistryEntryGetName(entry, name) == KERN_SUCCESS) record.name = name;
    for (const char* key : propertyKeys) {
        CFStringRef cfKey = CFStringCreateWithCString(kCFAllocatorDefault, key, kCFStringEncodingUTF8);
        if (!cfKey) continue;
        CFTypeRef property = IORegistryEntryCreateCFProperty(entry, cfKey, kCFAllocatorDefault, 0);
        CFRelease(cfKey);
        if (!property) continue;
        Json converted = value(property);
        CFRelease(property);
        if (!converted.is_null()) record.properties[key] = std::move(converted);
    }
    return record;
}

}  // namespace

std::optional<std::vector<RegistryEntry>> IORegistryReader::ancestors(const std::string& bsdName) {
    CFMutableDictionaryRef matching = IOBSDNameMatching(kIOMainPortDefault, 0, bsdName.c_str());
    if (!matching) return std::nullopt;
    // Consumes `matching`.
    io_registry_entry_t entry = IOServiceGetMatchingService(kIOMainPortDefault, matching);
    if (!entry) return std::nullopt;
    std::vector<RegistryEntry> chain;
    for (int depth = 0; entry && depth < maximumDepth; ++depth) {
        chain.push_back(describe(entry));
        io_registry_entry_t parent = 0;
        const kern_return_t result = IORegistryEntryGetParentEntry(entry, kIOServicePlane, &parent);
        IOObjectRelease(entry);
        entry = result == KERN_SUCCESS ? parent : 0;
    }
    if (entry) IOObjectRelease(entry);
    return chain;
}

}  // namespace corvel
