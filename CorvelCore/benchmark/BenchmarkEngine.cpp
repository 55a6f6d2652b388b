#include "benchmark/BenchmarkEngine.h"

#include "benchmark/BenchmarkStatistics.h"
#include "benchmark/BenchmarkVolume.h"
#include "benchmark/LatencyHistogram.h"

#include <unistd.h>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace corvel::BenchmarkEngine {
namespace {

using Clock = std::chrono::steady_clock;

// Direct I/O wants buffers aligned to the device's logical block; 4 KiB covers every disk.
constexpr std::size_t alignment = 4096;

struct AlignedFree {
    void operator()(void* pointer) const { std::free(pointer); }
};
using AlignedBuffer = std::unique_ptr<std::uint8_t, AlignedFree>;

AlignedBuffer alignedBuffer(std::int64_t bytes) {
    void* pointer = std::aligned_alloc(alignment, static_cast<std::size_t>(bytes));
    if (pointer == nullptr) throw BenchmarkError("cannot allocate a benchmark buffer");
    return AlignedBuffer(static_cast<std::uint8_t*>(pointer));
}

// xorshift64*: fast enough to fill a gigabyte in well under a second and random enough that no
// compressing or deduplicating volume can shrink what we write.
class FastRandom {
public:
    explicit FastRandom(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15ULL + 1) {}
    std::uint64_t next() {
        state_ ^= state_ >> 12;
        state_ ^= state_ << 25;
        state_ ^= state_ >> 27;
        return state_ * 0x2545F4914F6CDD1DULL;
    }
    void fill(std::uint8_t* bytes, std::int64_t size) {
        for (std::int64_t i = 0; i + 8 <= size; i += 8) {
            const std::uint64_t word = next();
            std::memcpy(bytes + i, &word, 8);
        }
    }

private:
    std::uint64_t state_;
};

std::string ioError(const BenchmarkOptions& options, const char* what, int error) {
    return options.folder + ": " + what + " failed: " + std::strerror(error);
}

// One whole block at `offset`, or the errno of the failure.
int transfer(int fd, bool write, std::uint8_t* buffer, std::int64_t size, std::int64_t offset) {
    std::int64_t done = 0;
    while (done < size) {
        const auto count = static_cast<std::size_t>(size - done);
        const ssize_t moved = write ? ::pwrite(fd, buffer + done, count, offset + done)
                                    : ::pread(fd, buffer + done, count, offset + done);
        if (moved < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        if (moved == 0) return EIO;  // a short file: the preparation did not write it all
        done += moved;
    }
    return 0;
}

void prepare(int fd, const BenchmarkOptions& options, std::int64_t fileBytes, BenchmarkProgress& progress,
             const std::function<bool()>& isCancelled) {
    const std::int64_t block = BenchmarkOptions::smallestFile;
    auto buffer = alignedBuffer(block);
    FastRandom random(0x5EED);
    for (std::int64_t offset = 0; offset < fileBytes && !isCancelled(); offset += block) {
        random.fill(buffer.get(), block);
        if (const int error = transfer(fd, true, buffer.get(), block, offset))
            throw BenchmarkError(ioError(options, "writing the test file", error));
        progress.preparedBytes = offset + block;
    }
    if (::fsync(fd) != 0) throw BenchmarkError(ioError(options, "fsync", errno));
}

BenchmarkJobResult runJob(int fd, const BenchmarkOptions& options, const BenchmarkJob& job, std::int64_t fileBytes,
                          const std::function<bool()>& isCancelled) {
    const std::int64_t blocks = fileBytes / job.blockBytes;
    const bool write = isWrite(job.pattern);
    std::atomic<std::int64_t> nextBlock{0};
    std::atomic<std::int64_t> operations{0};
    std::atomic<bool> stop{false};
    std::mutex lock;
    LatencyHistogram latencies;
    std::optional<std::string> failure;

    const auto started = Clock::now();
    const auto deadline =
        started + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.secondsPerJob));
    const auto worker = [&](int index) {
        auto buffer = alignedBuffer(job.blockBytes);
        FastRandom random(static_cast<std::uint64_t>(index) + 1);
        random.fill(buffer.get(), job.blockBytes);
        LatencyHistogram mine;
        std::int64_t done = 0;
        while (!stop && !isCancelled() && Clock::now() < deadline) {
            const std::int64_t block =
                isRandom(job.pattern) ? static_cast<std::int64_t>(random.next() % static_cast<std::uint64_t>(blocks))
                                      : nextBlock.fetch_add(1) % blocks;
            if (write) {
                // A fresh stamp in every block keeps deduplicating volumes from skipping writes.
                const std::uint64_t stamp = random.next();
                std::memcpy(buffer.get(), &stamp, sizeof stamp);
            }
            const auto before = Clock::now();
            if (const int error = transfer(fd, write, buffer.get(), job.blockBytes, block * job.blockBytes)) {
                const std::lock_guard guard(lock);
                if (!failure) failure = ioError(options, write ? "writing" : "reading", error);
                stop = true;
                break;
            }
            mine.record(static_cast<std::uint64_t>(
                std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - before).count()));
            ++done;
        }
        operations += done;
        const std::lock_guard guard(lock);
        latencies.merge(mine);
    };
    std::vector<std::thread> threads;
    for (int index = 0; index < job.queueDepth; ++index) threads.emplace_back(worker, index);
    for (auto& thread : threads) thread.join();
    if (failure) throw BenchmarkError(*failure);
    if (write && ::fsync(fd) != 0) throw BenchmarkError(ioError(options, "fsync", errno));
    const double seconds = std::chrono::duration<double>(Clock::now() - started).count();
    return BenchmarkStatistics::summarise(job, operations.load(), seconds, latencies);
}

void pause(double seconds, const std::function<bool()>& isCancelled) {
    const auto until =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    while (Clock::now() < until && !isCancelled()) std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

}  // namespace

BenchmarkRun run(const BenchmarkOptions& options, const BenchmarkVolumeFacts& facts,
                 const std::vector<BenchmarkJob>& jobs, BenchmarkProgress& progress,
                 const std::function<bool()>& isCancelled, TimePoint date) {
    if (auto problem = options.problem()) throw BenchmarkError(*problem);
    BenchmarkRun run;
    run.date = date;
    run.folder = options.folder;
    run.mountPoint = facts.mountPoint;
    run.fileSystemType = facts.fileSystemType;
    run.fileBytes = options.usableFileBytes();
    run.secondsPerJob = options.secondsPerJob;
    progress.fileBytes = run.fileBytes;
    progress.jobCount = static_cast<int>(jobs.size());

    // The descriptor is the file's only reference: every way out of this function frees it.
    auto file = BenchmarkVolume::openTemporary(options.folder);
    run.isCacheBypassed = file.isCacheBypassed;
    run.notes = file.notes;
    prepare(file.fd.get(), options, run.fileBytes, progress, isCancelled);
    for (std::size_t index = 0; index < jobs.size() && !isCancelled(); ++index) {
        if (index > 0) pause(options.pauseSeconds, isCancelled);
        if (isCancelled()) break;
        progress.jobIndex = static_cast<int>(index);
        auto result = runJob(file.fd.get(), options, jobs[index], run.fileBytes, isCancelled);
        // A job cut short by cancellation measured too little to be compared: leave it out.
        if (isCancelled()) break;
        run.results.push_back(std::move(result));
    }
    run.isInterrupted = isCancelled();
    return run;
}

}  // namespace corvel::BenchmarkEngine
