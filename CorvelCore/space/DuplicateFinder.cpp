#include "space/DuplicateFinder.h"

#include <openssl/evp.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <thread>
#include <utility>

namespace corvel::DuplicateFinder {
namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

struct DigestContextFree {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

// Runs `work(i)` for every index below `count` on up to `threads` threads.
template <class Work>
void forEachParallel(std::size_t count, unsigned threads, Work work) {
    std::atomic<std::size_t> next{0};
    auto loop = [&] {
        for (std::size_t i = next++; i < count; i = next++) work(i);
    };
    const unsigned helpers = static_cast<unsigned>(std::min<std::size_t>(threads, count));
    std::vector<std::thread> pool;
    for (unsigned i = 1; i < helpers; ++i) pool.emplace_back(loop);
    loop();
    for (auto& thread : pool) thread.join();
}

// Splits each group by the digest `hashOf` gives its members; members without one drop out.
std::vector<std::vector<std::pair<Candidate, std::string>>> splitByDigest(
    const std::vector<std::vector<Candidate>>& groups, unsigned threads, std::int64_t limit, ScanProgress& progress,
    const std::function<bool()>& isCancelled) {
    std::vector<std::pair<std::size_t, std::size_t>> work;
    for (std::size_t g = 0; g < groups.size(); ++g)
        for (std::size_t m = 0; m < groups[g].size(); ++m) work.emplace_back(g, m);
    std::vector<std::optional<std::string>> digests(work.size());
    progress.setHashCandidates(static_cast<std::int64_t>(work.size()));
    forEachParallel(work.size(), threads, [&](std::size_t i) {
        if (isCancelled && isCancelled()) return;
        digests[i] = digest(groups[work[i].first][work[i].second].path, limit, isCancelled);
        progress.addHashedCandidate();
    });
    std::vector<std::vector<std::pair<Candidate, std::string>>> result;
    std::size_t i = 0;
    for (const auto& group : groups) {
        std::map<std::string, std::vector<std::pair<Candidate, std::string>>> byDigest;
        for (const auto& member : group) {
            if (digests[i]) byDigest[*digests[i]].emplace_back(member, *digests[i]);
            ++i;
        }
        for (auto& [hash, members] : byDigest)
            if (members.size() >= 2) result.push_back(std::move(members));
    }
    return result;
}

}  // namespace

bool isSparse(const Candidate& candidate) {
    return candidate.allocatedBytes < candidate.logicalBytes / 2;
}

std::vector<std::vector<Candidate>> sameLengthGroups(std::vector<Candidate> candidates) {
    std::sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
        if (a.logicalBytes != b.logicalBytes) return a.logicalBytes > b.logicalBytes;
        return a.path < b.path;
    });
    std::vector<std::vector<Candidate>> groups;
    for (std::size_t start = 0; start < candidates.size();) {
        std::size_t end = start;
        while (end < candidates.size() && candidates[end].logicalBytes == candidates[start].logicalBytes) ++end;
        std::set<std::pair<std::uint64_t, std::uint64_t>> inodes;
        std::set<std::pair<std::uint64_t, std::int64_t>> cloneFamilies;
        std::vector<Candidate> group;
        for (std::size_t i = start; i < end; ++i) {
            Candidate& candidate = candidates[i];
            if (!inodes.emplace(candidate.device, candidate.inode).second) continue;
            if (candidate.firstPhysicalOffset >= 0 &&
                !cloneFamilies.emplace(candidate.device, candidate.firstPhysicalOffset).second)
                continue;
            group.push_back(std::move(candidate));
        }
        if (group.size() >= 2) groups.push_back(std::move(group));
        start = end;
    }
    return groups;
}

std::optional<std::string> digest(const std::string& path, std::int64_t limit,
                                  const std::function<bool()>& isCancelled) {
    std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file) return std::nullopt;
    std::unique_ptr<EVP_MD_CTX, DigestContextFree> context(EVP_MD_CTX_new());
    if (!context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1) return std::nullopt;
    std::vector<unsigned char> buffer(256 * 1024);
    std::int64_t remaining = limit < 0 ? INT64_MAX : limit;
    while (remaining > 0) {
        if (isCancelled && isCancelled()) return std::nullopt;
        const auto want =
            static_cast<std::size_t>(std::min<std::int64_t>(remaining, static_cast<std::int64_t>(buffer.size())));
        const std::size_t got = std::fread(buffer.data(), 1, want, file.get());
        if (got > 0 && EVP_DigestUpdate(context.get(), buffer.data(), got) != 1) return std::nullopt;
        remaining -= static_cast<std::int64_t>(got);
        if (got < want) {
            if (std::ferror(file.get())) return std::nullopt;
            break;
        }
    }
    unsigned char value[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_DigestFinal_ex(context.get(), value, &length) != 1) return std::nullopt;
    static constexpr char hexDigits[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(length * 2);
    for (unsigned int i = 0; i < length; ++i) {
        hex.push_back(hexDigits[value[i] >> 4]);
        hex.push_back(hexDigits[value[i] & 0xf]);
    }
    return hex;
}

Search find(std::vector<Candidate> candidates, unsigned threads, ScanProgress& progress,
            const std::function<bool()>& isCancelled) {
    threads = std::max(1u, threads);
    const auto sparse = std::partition(candidates.begin(), candidates.end(),
                                       [](const Candidate& candidate) { return !isSparse(candidate); });
    Search search;
    search.sparseLeftOut = static_cast<std::int64_t>(candidates.end() - sparse);
    candidates.erase(sparse, candidates.end());
    const auto groups = sameLengthGroups(std::move(candidates));

    // A sample first: files of equal length usually differ in their first bytes already.
    const auto sampled = splitByDigest(groups, threads, sampleBytes, progress, isCancelled);
    std::vector<std::vector<std::pair<Candidate, std::string>>> confirmed;
    std::vector<std::vector<Candidate>> needFullDigest;
    for (const auto& group : sampled) {
        if (group.front().first.logicalBytes <= sampleBytes) {
            confirmed.push_back(group);  // the sample was the whole file
        } else {
            std::vector<Candidate> members;
            for (const auto& member : group) members.push_back(member.first);
            needFullDigest.push_back(std::move(members));
        }
    }
    for (auto& group : splitByDigest(needFullDigest, threads, -1, progress, isCancelled))
        confirmed.push_back(std::move(group));

    std::vector<DuplicateGroup>& result = search.groups;
    for (const auto& group : confirmed) {
        DuplicateGroup duplicate;
        duplicate.logicalBytes = group.front().first.logicalBytes;
        duplicate.allocatedBytes = group.front().first.allocatedBytes;
        duplicate.contentHash = group.front().second;
        for (const auto& member : group) {
            duplicate.allocatedBytes = std::min(duplicate.allocatedBytes, member.first.allocatedBytes);
            duplicate.paths.push_back(member.first.path);
        }
        std::sort(duplicate.paths.begin(), duplicate.paths.end());
        result.push_back(std::move(duplicate));
    }
    std::sort(result.begin(), result.end(), [](const DuplicateGroup& a, const DuplicateGroup& b) {
        if (a.reclaimableBytes() != b.reclaimableBytes()) return a.reclaimableBytes() > b.reclaimableBytes();
        return a.paths < b.paths;
    });
    return search;
}

}  // namespace corvel::DuplicateFinder
