// Which operations apply to an object and whether each may start now, with the reason people
// read. Pure: it looks only at the object and where the application runs from.
//
//   auto availability = DiskOperationPolicy::availability(DiskOperation::eject, object, appPath);
//   if (availability.isApplicable) offer(availability);   // disabled ones with their reason
//
// Linux differs in what its tools can do: a file system is checked only while unmounted, and
// repair points to fsck rather than Disk Utility.
#pragma once

#include "common/Platform.h"
#include "diskops/DiskObject.h"
#include "diskops/DiskOperation.h"
#include "diskops/OperationAvailability.h"

#include <string>
#include <vector>

namespace corvel::DiskOperationPolicy {

OperationAvailability availability(DiskOperation operation, const DiskObject& object, const std::string& appBundlePath,
                                   Platform platform = Platform::macos);

// The availability of every operation, in declaration order.
std::vector<OperationAvailability> all(const DiskObject& object, const std::string& appBundlePath,
                                       Platform platform = Platform::macos);

// The application runs from the object: its bundle lies on one of the object's mount points
// (the root "/" never counts).
bool isRunningFrom(const DiskObject& object, const std::string& appBundlePath);

}  // namespace corvel::DiskOperationPolicy
