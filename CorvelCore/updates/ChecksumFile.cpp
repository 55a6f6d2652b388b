#include "updates/ChecksumFile.h"

#include "common/AtomicFile.h"
#include "common/UniqueFd.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <memory>

namespace corvel::ChecksumFile {
namespace {

constexpr std::size_t digestLength = 64;

bool isHex(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

[[noreturn]] void fail(const std::filesystem::path& path, int error) {
    throw FileError("Could not read " + path.string() + ": " + std::strerror(error));
}

}  // namespace

std::optional<std::string> publishedDigest(std::string_view text) {
    std::size_t run = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        run = isHex(text[i]) ? run + 1 : 0;
        if (run == digestLength) {
            std::string digest(text.substr(i + 1 - digestLength, digestLength));
            for (char& c : digest) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            return digest;
        }
    }
    return std::nullopt;
}

std::string digestOfFile(const std::filesystem::path& path) {
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!fd) fail(path, errno);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    if (!context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1)
        throw FileError("SHA-256 digest of " + path.string() + " could not start");
    std::array<char, 1 << 16> buffer{};
    for (;;) {
        const ssize_t got = ::read(fd.get(), buffer.data(), buffer.size());
        if (got < 0) {
            if (errno == EINTR) continue;
            fail(path, errno);
        }
        if (got == 0) break;
        EVP_DigestUpdate(context.get(), buffer.data(), static_cast<std::size_t>(got));
    }
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    EVP_DigestFinal_ex(context.get(), digest.data(), &length);
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (unsigned int i = 0; i < length; ++i) {
        text.push_back(digits[digest[i] >> 4]);
        text.push_back(digits[digest[i] & 0xF]);
    }
    return text;
}

std::string line(std::string_view digest, std::string_view fileName) {
    return std::string(digest) + "  " + std::string(fileName) + "\n";
}

}  // namespace corvel::ChecksumFile
