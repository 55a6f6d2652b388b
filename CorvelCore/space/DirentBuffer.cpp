#include "space/DirentBuffer.h"

#include <cstring>

namespace corvel::DirentBuffer {

bool decode(std::span<std::byte> bytes, std::vector<ScanDirectoryAccess::Entry>& entries) {
    std::size_t offset = 0;
    while (offset < bytes.size()) {
        if (bytes.size() - offset < nameOffset + 1) return false;
        std::uint16_t recordLength = 0;
        std::memcpy(&recordLength, bytes.data() + offset + 16, sizeof recordLength);
        if (recordLength < nameOffset + 1 || recordLength > bytes.size() - offset) return false;
        const auto type = static_cast<unsigned char>(bytes[offset + 18]);
        const char* name = reinterpret_cast<const char*>(bytes.data() + offset + nameOffset);
        const std::size_t room = recordLength - nameOffset;
        const void* end = std::memchr(name, 0, room);
        if (!end) return false;
        const auto length = static_cast<std::size_t>(static_cast<const char*>(end) - name);
        offset += recordLength;
        if (length == 0) return false;
        if (name[0] == '.' && (length == 1 || (length == 2 && name[1] == '.'))) continue;
        entries.push_back({name, static_cast<std::uint16_t>(length), DirectoryReader::entryType(type), std::nullopt});
    }
    return true;
}

}  // namespace corvel::DirentBuffer
