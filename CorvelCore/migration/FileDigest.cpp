#include "migration/FileDigest.h"

#include "common/UniqueFd.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

namespace corvel {

FileDigest FileDigest::of(const std::string& path, std::vector<unsigned char>& buffer, MigrationProgress& progress,
                          const std::function<bool()>& isCancelled) {
    FileDigest digest;
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!fd || ::fstat(fd.get(), &status) != 0) {
        digest.error = errno;
        return digest;
    }
    if (!S_ISREG(status.st_mode)) {
        digest.error = EINVAL;
        return digest;
    }
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    if (!context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1) {
        digest.error = ENOMEM;
        return digest;
    }
    for (;;) {
        if (isCancelled()) {
            digest.wasCancelled = true;
            return digest;
        }
        const auto got = ::read(fd.get(), buffer.data(), buffer.size());
        if (got < 0) {
            if (errno == EINTR) continue;
            digest.error = errno;
            return digest;
        }
        if (got == 0) break;
        EVP_DigestUpdate(context.get(), buffer.data(), static_cast<std::size_t>(got));
        digest.bytesRead += got;
        progress.addBytes(got);
    }
    unsigned char value[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestFinal_ex(context.get(), value, &length);
    static constexpr char digits[] = "0123456789abcdef";
    digest.sha256.reserve(length * 2);
    for (unsigned int i = 0; i < length; ++i) {
        digest.sha256.push_back(digits[value[i] >> 4]);
        digest.sha256.push_back(digits[value[i] & 0xf]);
    }
    return digest;
}

}  // namespace corvel
