// How fast the scanner's pieces run on their own: decoding a getdents64 batch, and a whole scan
// of a generated tree with a warm cache (so that the figure is the scanner's own work).
#include "space/DirentBuffer.h"
#include "space/SpaceScanner.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace corvel;

std::vector<std::byte> direntBatch(std::size_t count) {
    std::vector<std::byte> buffer;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string name = fmt::format("module-{}.js", i);
        const std::size_t length = (DirentBuffer::nameOffset + name.size() + 1 + 7) / 8 * 8;
        const std::size_t start = buffer.size();
        buffer.resize(start + length);
        const auto recordLength = static_cast<std::uint16_t>(length);
        std::memcpy(buffer.data() + start + 16, &recordLength, sizeof recordLength);
        buffer[start + 18] = std::byte{8};  // DT_REG
        std::memcpy(buffer.data() + start + DirentBuffer::nameOffset, name.data(), name.size());
    }
    return buffer;
}

void decodeBatch(benchmark::State& state) {
    auto buffer = direntBatch(static_cast<std::size_t>(state.range(0)));
    std::vector<ScanDirectoryAccess::Entry> entries;
    for (auto _ : state) {
        entries.clear();
        benchmark::DoNotOptimize(DirentBuffer::decode(buffer, entries));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(decodeBatch)->Arg(64)->Arg(1024);

// A tree of `files` small files in folders of 20, three levels deep, made once per process.
const std::string& generatedTree(int files) {
    static std::string root;
    if (!root.empty()) return root;
    std::string pattern = (std::filesystem::temp_directory_path() / "velmora-bench-XXXXXX").string();
    if (!mkdtemp(pattern.data())) std::abort();
    root = pattern;
    for (int i = 0; i < files; ++i) {
        const auto folder = std::filesystem::path(root) / fmt::format("a{}/b{}", i / 2000, i / 20);
        std::filesystem::create_directories(folder);
        std::ofstream(folder / fmt::format("f{}", i)) << std::string(static_cast<std::size_t>(i % 5000), 'x');
    }
    return root;
}

void scanTree(benchmark::State& state) {
    const std::string& root = generatedTree(20000);
    SpaceScanOptions options;
    options.threads = static_cast<unsigned>(state.range(0));
    for (auto _ : state) {
        ScanProgress progress;
        const ScanTree tree = SpaceScanner::scan(root, options, progress, [] { return false; });
        benchmark::DoNotOptimize(tree.root->allocatedBytes);
    }
    state.SetItemsProcessed(state.iterations() * 20000);
}
BENCHMARK(scanTree)->Arg(1)->Arg(2)->Arg(16)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::error_code ignored;
    if (!generatedTree(0).empty()) std::filesystem::remove_all(generatedTree(0), ignored);
    return 0;
}
