#include "platform/macos/FileManagerVolumeProvider.h"

#include <CoreFoundation/CoreFoundation.h>
#include <sys/mount.h>
#include <sys/param.h>

#include <optional>
#include <string>
#include <vector>

#include "storage/VolumeResourceValues.h"

namespace corvel {

namespace {

// Releases a Core Foundation object at scope exit.
template <class T>
struct Owned {
    T ref = nullptr;
    explicit Owned(T value) : ref(value) {}
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() {
        if (ref) CFRelease(ref);
    }
};

std::optional<std::string> text(CFTypeRef value) {
    if (!value || CFGetTypeID(value) != CFStringGetTypeID()) return std::nullopt;
    auto string = static_cast<CFStringRef>(value);
    CFIndex length = CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
    std::string buffer(static_cast<std::size_t>(length), '\0');
    if (!CFStringGetCString(string, buffer.data(), length, kCFStringEncodingUTF8)) return std::nullopt;
    buffer.resize(std::char_traits<char>::length(buffer.c_str()));
    return buffer;
}

std::optional<std::int64_t> number(CFTypeRef value) {
    if (!value || CFGetTypeID(value) != CFNumberGetTypeID()) return std::nullopt;
    std::int64_t result = 0;
    if (!CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberSInt64Type, &result)) return std::nullopt;
    return result;
}

std::optional<bool> flag(CFTypeRef value) {
    if (!value || CFGetTypeID(value) != CFBooleanGetTypeID()) return std::nullopt;
    return CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0;
}

CFTypeRef lookup(CFDictionaryRef values, CFStringRef key) {
    return values ? CFDictionaryGetValue(values, key) : nullptr;
}

VolumeResourceValues readValues(CFDictionaryRef values) {
    VolumeResourceValues result;
    result.volumeName = text(lookup(values, kCFURLVolumeNameKey));
    result.localizedName = text(lookup(values, kCFURLVolumeLocalizedNameKey));
    result.totalCapacity = number(lookup(values, kCFURLVolumeTotalCapacityKey));
    result.availableCapacity = number(lookup(values, kCFURLVolumeAvailableCapacityKey));
    result.availableCapacityForImportantUsage = number(lookup(values, kCFURLVolumeAvailableCapacityForImportantUsageKey));
    result.isInternal = flag(lookup(values, kCFURLVolumeIsInternalKey));
    result.isEjectable = flag(lookup(values, kCFURLVolumeIsEjectableKey));
    result.isRemovable = flag(lookup(values, kCFURLVolumeIsRemovableKey));
    result.isLocal = flag(lookup(values, kCFURLVolumeIsLocalKey));
    result.isReadOnly = flag(lookup(values, kCFURLVolumeIsReadOnlyKey));
    result.isRootFileSystem = flag(lookup(values, kCFURLVolumeIsRootFileSystemKey));
    result.uuid = text(lookup(values, kCFURLVolumeUUIDStringKey));
    result.supportsCaseSensitiveNames = flag(lookup(values, kCFURLVolumeSupportsCaseSensitiveNamesKey));
    result.isBrowsable = flag(lookup(values, kCFURLVolumeIsBrowsableKey));
    return result;
}

// The file system's short type ("apfs", "smbfs", "exfat"). The resource key for it is recent;
// statfs has always known it.
std::optional<std::string> typeName(const std::string& path) {
    struct statfs figures {};
    if (::statfs(path.c_str(), &figures) != 0) return std::nullopt;
    return std::string(figures.f_fstypename);
}

}  // namespace

std::vector<MountedVolumeRecord> FileManagerVolumeProvider::mountedVolumes() {
    const void* keyList[] = {
        kCFURLVolumeNameKey, kCFURLVolumeLocalizedNameKey, kCFURLVolumeTotalCapacityKey,
        kCFURLVolumeAvailableCapacityKey, kCFURLVolumeAvailableCapacityForImportantUsageKey,
        kCFURLVolumeIsInternalKey, kCFURLVolumeIsEjectableKey, kCFURLVolumeIsRemovableKey,
        kCFURLVolumeIsLocalKey, kCFURLVolumeIsReadOnlyKey, kCFURLVolumeIsRootFileSystemKey,
        kCFURLVolumeUUIDStringKey, kCFURLVolumeSupportsCaseSensitiveNamesKey,
        kCFURLVolumeIsBrowsableKey,
    };
    Owned<CFArrayRef> keys(CFArrayCreate(kCFAllocatorDefault, keyList, sizeof keyList / sizeof keyList[0],
                                         &kCFTypeArrayCallBacks));
    Owned<CFURLEnumeratorRef> enumerator(
        CFURLEnumeratorCreateForMountedVolumes(kCFAllocatorDefault, kCFURLEnumeratorSkipInvisibles, keys.ref));

    std::vector<MountedVolumeRecord> records;
    if (!enumerator.ref) return records;
    for (;;) {
        CFURLRef url = nullptr;  // owned by the enumerator
        CFURLEnumeratorResult result = CFURLEnumeratorGetNextURL(enumerator.ref, &url, nullptr);
        if (result == kCFURLEnumeratorEnd) break;
        if (result != kCFURLEnumeratorSuccess || !url) continue;
        Owned<CFStringRef> pathString(CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle));
        auto path = text(pathString.ref);
        if (!path) continue;
        Owned<CFDictionaryRef> values(CFURLCopyResourcePropertiesForKeys(url, keys.ref, nullptr));
        VolumeResourceValues resourceValues = readValues(values.ref);
        resourceValues.typeName = typeName(*path);
        if (auto record = VolumeResourceValues::makeRecord(*path, resourceValues)) {
            records.push_back(std::move(*record));
        }
    }
    return records;
}

}  // namespace corvel
