// Every way checking, downloading or installing an update can fail, each with the text people
// see. `failed` carries its own message (a tool's error, a file that could not be written).
//
//   try { channel.latest(); }
//   catch (const UpdateError& error) { if (error.kind() == UpdateError::Kind::notSignedIn) ...;
//   show(error.description()); }
#pragma once

#include "common/EnumTable.h"

#include <stdexcept>
#include <string>

namespace corvel {

class UpdateError : public std::exception {
public:
    enum class Kind { failed, githubCLIMissing, notSignedIn, noRelease, checksumMismatch, missingAsset };

    static UpdateError failed(std::string message);
    static UpdateError githubCLIMissing();
    static UpdateError notSignedIn();
    static UpdateError noRelease();
    static UpdateError checksumMismatch();
    static UpdateError missingAsset();

    Kind kind() const { return kind_; }
    // The message of `failed`; empty for the other cases.
    const std::string& message() const { return message_; }

    std::string description() const;
    const char* what() const noexcept override { return what_.c_str(); }

    bool operator==(const UpdateError& other) const { return kind_ == other.kind_ && message_ == other.message_; }

private:
    UpdateError(Kind kind, std::string message);

    Kind kind_;
    std::string message_;
    std::string what_;
};

// The case names and the fixed description of each case (`failed` has none of its own).
template <>
struct EnumTable<UpdateError::Kind> {
    static constexpr std::array<EnumEntry<UpdateError::Kind>, 6> entries{{
        {UpdateError::Kind::failed, "failed", ""},
        {UpdateError::Kind::githubCLIMissing, "githubCLIMissing",
         "GitHub CLI (gh) not found. Install it to receive updates from the private repository."},
        {UpdateError::Kind::notSignedIn, "notSignedIn", "Not signed in to GitHub. Run “gh auth login” once."},
        {UpdateError::Kind::noRelease, "noRelease", "No release published yet."},
        {UpdateError::Kind::checksumMismatch, "checksumMismatch",
         "The downloaded package does not match its published checksum. It was not installed."},
        {UpdateError::Kind::missingAsset, "missingAsset", "The release has no installer package."},
    }};
};

}  // namespace corvel
