#include "common/AtomicFile.h"

#include "common/UniqueFd.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>

#include <utility>

namespace corvel::AtomicFile {
namespace {

[[noreturn]] void fail(const std::filesystem::path& path, const char* action, int error) {
    throw FileError("Could not " + std::string(action) + " " + path.string() + ": " + std::strerror(error));
}

// A writer killed between mkstemp and rename leaves its temporary behind. A write takes
// milliseconds, so one older than this belongs to no live writer and would otherwise pile up.
constexpr auto staleTemporaryAge = std::chrono::minutes(10);

void removeStaleTemporaries(const std::filesystem::path& folder, const std::string& name) {
    const std::string prefix = "." + name + ".";
    const auto now = std::filesystem::file_time_type::clock::now();
    std::error_code ec;
    for (std::filesystem::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string entry = it->path().filename().string();
        if (entry.size() != prefix.size() + 6 || entry.compare(0, prefix.size(), prefix) != 0) continue;
        std::error_code timeError;
        const auto modified = it->last_write_time(timeError);
        if (!timeError && now - modified > staleTemporaryAge) std::filesystem::remove(it->path(), timeError);
    }
}

}  // namespace

void write(const std::filesystem::path& path, std::string_view contents) {
    const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec) fail(folder, "create the folder", ec.value());

    std::string temporary = (folder / ("." + path.filename().string() + ".XXXXXX")).string();
    UniqueFd fd(::mkstemp(temporary.data()));
    if (fd.get() < 0) fail(path, "create a temporary file for", errno);

    auto discard = [&](int error) {
        ::unlink(temporary.c_str());
        fail(path, "write", error);
    };
    const char* data = contents.data();
    std::size_t left = contents.size();
    while (left > 0) {
        const ssize_t written = ::write(fd.get(), data, left);
        if (written < 0) {
            if (errno == EINTR) continue;
            discard(errno);
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
    // mkstemp creates 0600; persisted files are ordinary user files.
    ::fchmod(fd.get(), 0644);
    if (::fsync(fd.get()) != 0) discard(errno);
    if (::close(fd.release()) != 0) discard(errno);
    if (::rename(temporary.c_str(), path.c_str()) != 0) discard(errno);
    removeStaleTemporaries(folder, path.filename().string());
}

std::optional<std::string> read(const std::filesystem::path& path, std::size_t limit) {
    // O_NONBLOCK: opening a FIFO must not wait for a writer that never comes.
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!fd) {
        if (errno == ENOENT) return std::nullopt;
        fail(path, "read", errno);
    }
    struct stat facts {};
    if (::fstat(fd.get(), &facts) != 0) fail(path, "read", errno);
    if (!S_ISREG(facts.st_mode)) throw FileError("Could not read " + path.string() + ": not a regular file");
    if (static_cast<std::uint64_t>(facts.st_size) > limit)
        throw FileError("Could not read " + path.string() + ": larger than " + std::to_string(limit) + " bytes");
    std::string contents;
    contents.reserve(static_cast<std::size_t>(facts.st_size));
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd.get(), buffer, sizeof buffer);
        if (got < 0) {
            if (errno == EINTR) continue;
            fail(path, "read", errno);
        }
        if (got == 0) break;
        contents.append(buffer, static_cast<std::size_t>(got));
        // A file that grows while we read it (a log being written) is still bounded.
        if (contents.size() > limit)
            throw FileError("Could not read " + path.string() + ": larger than " + std::to_string(limit) + " bytes");
    }
    return contents;
}

}  // namespace corvel::AtomicFile
