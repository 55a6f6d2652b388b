#include "diskops/DiskOperationError.h"

#include "common/Text.h"

namespace corvel {

DiskOperationError::DiskOperationError(Kind kind, std::vector<std::string> details, DiskOperation operation,
                                       std::string text)
    : kind_(kind), details_(std::move(details)), operation_(operation), text_(std::move(text)) {
    what_ = description();
}

DiskOperationError DiskOperationError::preflightFailed(std::vector<std::string> details) {
    return {Kind::preflightFailed, std::move(details), DiskOperation::mount, {}};
}

DiskOperationError DiskOperationError::notExecutable(DiskOperation operation) {
    return {Kind::notExecutable, {}, operation, {}};
}

DiskOperationError DiskOperationError::invalidName(std::string name) {
    return {Kind::invalidName, {}, DiskOperation::createDirectory, std::move(name)};
}

DiskOperationError DiskOperationError::alreadyExists(std::string path) {
    return {Kind::alreadyExists, {}, DiskOperation::createDirectory, std::move(path)};
}

DiskOperationError DiskOperationError::commandFailed(std::string message) {
    return {Kind::commandFailed, {}, DiskOperation::mount, std::move(message)};
}

DiskOperationError DiskOperationError::notConfirmed() {
    return {Kind::notConfirmed, {}, DiskOperation::mount, {}};
}

std::string DiskOperationError::description() const {
    switch (kind_) {
        case Kind::preflightFailed:
            return "Preflight failed: " + join(details_, "; ");
        case Kind::notExecutable:
            return std::string(title(operation_)) + " is plan-only in this build.";
        case Kind::invalidName:
            return "“" + text_ + "” is not a valid folder name.";
        case Kind::alreadyExists:
            return text_ + " already exists.";
        case Kind::commandFailed:
            return text_;
        case Kind::notConfirmed:
            return "The operation was not confirmed.";
    }
    return {};
}

}  // namespace corvel
