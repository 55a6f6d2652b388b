// The typed failure of the accounting's text decoders: a listing that does not have the shape
// its tool prints. The text names the listing and what was wrong with it, so that it can stand
// alone as a warning line.
//
//   throw ListingParseError("btrfs subvolume list", "unexpected line 'ERROR: not a btrfs filesystem'");
//   error.description() == "btrfs subvolume list: unexpected line 'ERROR: not a btrfs filesystem'"
#pragma once

#include <stdexcept>
#include <string>

namespace corvel {

class ListingParseError : public std::runtime_error {
public:
    ListingParseError(std::string listing, const std::string& problem)
        : std::runtime_error(listing + ": " + problem), listing_(std::move(listing)) {}

    const std::string& listing() const { return listing_; }
    std::string description() const { return what(); }

private:
    std::string listing_;
};

}  // namespace corvel
