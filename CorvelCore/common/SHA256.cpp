#include "common/SHA256.h"

#include <openssl/evp.h>

#include <stdexcept>

namespace corvel::SHA256 {

std::string hex(std::string_view bytes) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha256(), nullptr) != 1) {
        throw std::runtime_error("SHA-256 digest failed");
    }
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(length * 2);
    for (unsigned int i = 0; i < length; ++i) {
        text.push_back(digits[digest[i] >> 4]);
        text.push_back(digits[digest[i] & 0xF]);
    }
    return text;
}

}  // namespace corvel::SHA256
