// Why the executor refused or failed an operation, each case with the text people read.
//
//   try { executor.run(...); } catch (const DiskOperationError& error) { show(error.description()); }
#pragma once

#include "diskops/DiskOperation.h"

#include <exception>
#include <string>
#include <vector>

namespace corvel {

class DiskOperationError : public std::exception {
public:
    enum class Kind { preflightFailed, notExecutable, invalidName, alreadyExists, commandFailed, notConfirmed };

    // The details of the failed checks ("Preflight failed: a; b").
    static DiskOperationError preflightFailed(std::vector<std::string> details);
    static DiskOperationError notExecutable(DiskOperation operation);
    // The folder name as it was given.
    static DiskOperationError invalidName(std::string name);
    static DiskOperationError alreadyExists(std::string path);
    // The description of the command's failure.
    static DiskOperationError commandFailed(std::string message);
    static DiskOperationError notConfirmed();

    Kind kind() const { return kind_; }
    const std::vector<std::string>& details() const { return details_; }
    DiskOperation operation() const { return operation_; }
    // The name, path or message the case carries.
    const std::string& text() const { return text_; }

    std::string description() const;
    const char* what() const noexcept override { return what_.c_str(); }

    bool operator==(const DiskOperationError& other) const {
        return kind_ == other.kind_ && details_ == other.details_ && operation_ == other.operation_ &&
               text_ == other.text_;
    }

private:
    DiskOperationError(Kind kind, std::vector<std::string> details, DiskOperation operation, std::string text);

    Kind kind_;
    std::vector<std::string> details_;
    DiskOperation operation_ = DiskOperation::mount;
    std::string text_;
    std::string what_;
};

}  // namespace corvel
