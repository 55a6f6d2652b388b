#include "updates/UpdateError.h"

namespace corvel {

UpdateError::UpdateError(Kind kind, std::string message)
    : kind_(kind), message_(std::move(message)), what_(description()) {}

UpdateError UpdateError::failed(std::string message) {
    return UpdateError(Kind::failed, std::move(message));
}
UpdateError UpdateError::githubCLIMissing() {
    return UpdateError(Kind::githubCLIMissing, {});
}
UpdateError UpdateError::notSignedIn() {
    return UpdateError(Kind::notSignedIn, {});
}
UpdateError UpdateError::noRelease() {
    return UpdateError(Kind::noRelease, {});
}
UpdateError UpdateError::checksumMismatch() {
    return UpdateError(Kind::checksumMismatch, {});
}
UpdateError UpdateError::missingAsset() {
    return UpdateError(Kind::missingAsset, {});
}

std::string UpdateError::description() const {
    if (kind_ == Kind::failed) return message_;
    return std::string(label(kind_));
}

}  // namespace corvel
