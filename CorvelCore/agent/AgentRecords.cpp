#include "agent/AgentRecords.h"

#include "common/AtomicFile.h"

namespace corvel {

std::optional<std::string> AgentFiles::readText(const std::filesystem::path& path) {
    return AtomicFile::read(path);
}

Json AgentFiles::parse(const std::string& text, const std::filesystem::path& path) {
    return parseJsonText(text, path.filename().string());
}

void AgentFiles::writeText(const std::filesystem::path& path, const std::string& text) {
    AtomicFile::write(path, text);
}

}  // namespace corvel
