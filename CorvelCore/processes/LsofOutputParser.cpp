#include "processes/LsofOutputParser.h"

#include <charconv>
#include <optional>
#include <string>

namespace corvel::LsofOutputParser {
namespace {

std::optional<std::int32_t> processID(std::string_view text) {
    std::int32_t pid = 0;
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, pid);
    if (error != std::errc() || stop != end || pid < 0) return std::nullopt;
    return pid;
}

struct OpenFile {
    std::string descriptor;
    std::optional<std::string> name;
};

// One process set: the command may arrive after the files in principle, so records are made
// only when the set ends.
struct ProcessSet {
    std::int32_t pid = 0;
    std::string command;
    std::vector<OpenFile> files;

    void flushInto(std::vector<ProcessUsage>& usages) const {
        for (const auto& file : files)
            if (file.name) usages.push_back({pid, command, *file.name, kindOfDescriptor(file.descriptor)});
    }
};

}  // namespace

ProcessUsage::Kind kindOfDescriptor(std::string_view descriptor) {
    if (descriptor == "cwd") return ProcessUsage::Kind::workingDirectory;
    if (descriptor == "txt") return ProcessUsage::Kind::executable;
    return ProcessUsage::Kind::openFile;
}

std::vector<ProcessUsage> parse(std::string_view output) {
    std::vector<ProcessUsage> usages;
    std::optional<ProcessSet> current;
    std::size_t start = 0;
    while (start < output.size()) {
        auto end = output.find('\n', start);
        if (end == std::string_view::npos) end = output.size();
        const auto line = output.substr(start, end - start);
        start = end + 1;
        if (line.empty()) continue;
        const char field = line.front();
        const auto value = line.substr(1);
        if (field == 'p') {
            if (current) current->flushInto(usages);
            current.reset();
            if (const auto pid = processID(value)) current = ProcessSet{*pid, {}, {}};
            continue;
        }
        if (!current) continue;  // fields of a skipped set, or before any set
        if (field == 'c') {
            current->command = std::string(value);
        } else if (field == 'f') {
            current->files.push_back({std::string(value), std::nullopt});
        } else if (field == 'n') {
            // A name without its own descriptor line is still a file the process uses.
            if (current->files.empty() || current->files.back().name) current->files.push_back({{}, std::nullopt});
            current->files.back().name = std::string(value);
        }
    }
    if (current) current->flushInto(usages);
    return usages;
}

}  // namespace corvel::LsofOutputParser
