// The typed failure of the disk tool parser: a document whose root is not a dictionary, or
// whose required top-level key is missing. Anything softer becomes an absent value instead.
#pragma once

#include <stdexcept>
#include <string>

namespace corvel {

class DiskutilParseError : public std::runtime_error {
public:
    enum class Kind { missingKey, notADictionary };

    static DiskutilParseError missingKey(std::string key) {
        return DiskutilParseError(Kind::missingKey, std::move(key));
    }
    static DiskutilParseError notADictionary() { return DiskutilParseError(Kind::notADictionary, {}); }

    Kind kind() const { return kind_; }
    // The missing key; empty for notADictionary.
    const std::string& key() const { return key_; }

    std::string description() const { return describe(kind_, key_); }

    bool operator==(const DiskutilParseError& other) const { return kind_ == other.kind_ && key_ == other.key_; }

private:
    DiskutilParseError(Kind kind, std::string key)
        : std::runtime_error(describe(kind, key)),
          kind_(kind),
          key_(std::move(key)) {}

    static std::string describe(Kind kind, const std::string& key) {
        if (kind == Kind::missingKey) return "The disk tool output has no usable '" + key + "' entry";
        return "The disk tool output is not a dictionary";
    }

    Kind kind_;
    std::string key_;
};

}  // namespace corvel
