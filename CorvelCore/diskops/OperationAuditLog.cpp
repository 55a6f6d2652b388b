#include "diskops/OperationAuditLog.h"

namespace corvel {

std::string OperationAuditLog::targetText(const DiskObject& target) {
    return std::string(rawValue(target.kind)) + " " + target.identifier + " (" + target.name + ")";
}

}  // namespace corvel
