// `velmora bench PATH`: measures the volume holding PATH (sequential and random reads and writes,
// with latency percentiles) on one temporary file that never outlives the run; `--history` lists
// earlier runs per volume.
#include "CliErrors.h"
#include "Commands.h"
#include "ConsentCommands.h"
#include "LongWork.h"
#include "Terminal.h"
#include "agent/InstanceLock.h"
#include "benchmark/BenchmarkEngine.h"
#include "benchmark/BenchmarkVolume.h"
#include "common/ByteFormat.h"
#include "common/JSONHistory.h"
#include "common/Text.h"

#include <fmt/format.h>
#include <algorithm>
#include <map>
#include <memory>

namespace corvel::cli {
namespace {

struct BenchOptions {
    std::string path;
    std::string size = "1GiB";
    double seconds = 5;
    bool allowNetwork = false;
    bool history = false;
};

std::string latencyText(double micros) {
    return micros >= 1000 ? fmt::format("{:.2f} ms", micros / 1000) : fmt::format("{:.0f} µs", micros);
}

void printRun(CliContext& context, const BenchmarkRun& run) {
    const Style& style = context.style();
    std::ostream& out = context.out();
    out << style.bold(terminalSafe(run.mountPoint)) << " (" << terminalSafe(run.fileSystemType) << "), "
        << ByteFormat::string(run.fileBytes) << " test file, " << fmt::format("{:g}", run.secondsPerJob)
        << " s per test" << (run.isCacheBypassed ? ", cache bypassed" : "") << '\n';
    using Align = Table::Align;
    Table table({Align::left, Align::right, Align::right, Align::right, Align::right, Align::right});
    table.addRow({"TEST", "MB/S", "IOPS", "P50", "P99", "P99.9"});
    for (const auto& result : run.results)
        table.addRow({result.name, fmt::format("{:.1f}", result.megabytesPerSecond), fmt::format("{:.0f}", result.iops),
                      latencyText(result.latencyP50Micros), latencyText(result.latencyP99Micros),
                      latencyText(result.latencyP999Micros)});
    table.print(out, "  ");
    for (const auto& note : run.notes) out << style.yellow("  Note: " + note) << '\n';
}

// The figure a person compares per job: MB/s for sequential, IOPS for random.
std::string headline(const BenchmarkRun& run, const std::string& name) {
    for (const auto& result : run.results)
        if (result.name == name)
            return isRandom(result.job.pattern) ? fmt::format("{:.0f}", result.iops)
                                                : fmt::format("{:.0f}", result.megabytesPerSecond);
    return "-";
}

void printHistory(CliContext& context, const std::vector<BenchmarkRun>& runs) {
    std::ostream& out = context.out();
    if (runs.empty()) {
        out << "No benchmark results yet. Run 'velmora bench PATH' to measure a volume.\n";
        return;
    }
    std::map<std::string, std::vector<const BenchmarkRun*>> byVolume;
    for (const auto& run : runs) byVolume[run.mountPoint].push_back(&run);
    using Align = Table::Align;
    for (const auto& [volume, volumeRuns] : byVolume) {
        out << context.style().bold(terminalSafe(volume)) << '\n';
        Table table({Align::left, Align::right, Align::right, Align::right, Align::right, Align::right});
        table.addRow(
            {"DATE", "FILE", "SEQ1M Q8 R/W MB/s", "SEQ1M Q1 R/W MB/s", "RND4K Q32 R/W IOPS", "RND4K Q1 R/W IOPS"});
        for (const BenchmarkRun* run : volumeRuns) {
            const auto pair = [&](const char* read, const char* write) {
                return headline(*run, read) + " / " + headline(*run, write);
            };
            table.addRow({ISO8601::format(run->date) + (run->isInterrupted ? " (partial)" : ""),
                          ByteFormat::string(run->fileBytes), pair("SEQ1M Q8 read", "SEQ1M Q8 write"),
                          pair("SEQ1M Q1 read", "SEQ1M Q1 write"), pair("RND4K Q32 read", "RND4K Q32 write"),
                          pair("RND4K Q1 read", "RND4K Q1 write")});
        }
        table.print(out, "  ");
    }
}

std::string progressText(const BenchmarkProgress& progress) {
    const int index = progress.jobIndex.load();
    if (index < 0) {
        const auto total = std::max<std::int64_t>(1, progress.fileBytes.load());
        return fmt::format("Writing the {} test file: {}%", ByteFormat::string(total),
                           progress.preparedBytes.load() * 100 / total);
    }
    const auto jobs = BenchmarkJob::standardSet();
    const std::string name = static_cast<std::size_t>(index) < jobs.size() ? jobs[index].name() : "";
    return fmt::format("{} ({} of {})", name, index + 1, progress.jobCount.load());
}

void runBench(CliContext& context, const BenchOptions& typed) {
    JSONHistory<BenchmarkRun> history(BenchmarkRun::historyFile(context.machine().dataFolder()),
                                      BenchmarkRun::historyLimit);
    if (typed.history) {
        auto runs = history.all();
        if (!typed.path.empty()) {
            const auto facts = BenchmarkVolume::inspect(typed.path);
            std::erase_if(runs, [&](const BenchmarkRun& run) { return run.mountPoint != facts.mountPoint; });
        }
        if (auto problem = history.loadProblem()) context.err() << "warning: " << *problem << '\n';
        if (context.json())
            context.printJson(runs);
        else
            printHistory(context, runs);
        return;
    }
    if (typed.path.empty()) throw UsageError("bench needs a PATH: a folder on the volume to measure");
    if (context.machine().isRecorded())
        throw UsageError("bench measures this machine's disks; it cannot run on a recorded machine (--replay)");

    BenchmarkOptions options;
    options.folder = typed.path;
    const auto size = BenchmarkOptions::parseSize(typed.size);
    if (!size) throw UsageError("--size '" + terminalSafe(typed.size) + "': not a size such as 1GiB, 512MiB or 2GB");
    options.fileBytes = *size;
    options.secondsPerJob = typed.seconds;
    options.pauseSeconds = std::min(1.0, typed.seconds / 5);
    options.allowNetwork = typed.allowNetwork;
    if (auto problem = options.problem()) throw UsageError(*problem);

    requireConsent(context, ConsentScope::benchmark);
    BenchmarkVolumeFacts facts;
    try {
        facts = BenchmarkVolume::inspect(typed.path);
    } catch (const BenchmarkError& error) {
        throw CommandFailure("cannot measure " + terminalSafe(error.description()));
    }
    std::string lockName = "benchmark-" + facts.deviceID + ".lock";
    std::replace(lockName.begin(), lockName.end(), ':', '-');
    auto lock = InstanceLock::acquire(context.machine().dataFolder() / lockName);
    if (auto refusal = BenchmarkPreflight::check(facts, options, !lock.has_value())) {
        std::string text = terminalSafe(refusal->message);
        if (refusal->reason == BenchmarkRefusalReason::network) text += " (pass --allow-network to measure it anyway)";
        throw CommandFailure(text);
    }

    BenchmarkProgress progress;
    const auto outcome = runLongWork(
        context,
        [&](const CancelCheck& isCancelled) {
            return BenchmarkEngine::run(options, facts, BenchmarkJob::standardSet(), progress, isCancelled,
                                        context.machine().now());
        },
        [&] { return progressText(progress); });
    const BenchmarkRun& run = outcome.result;
    if (!run.results.empty()) {
        try {
            history.append(run);
        } catch (const FileError& error) {
            context.err() << "warning: could not save the result: " << error.what() << '\n';
        }
    }
    if (context.json())
        context.printJson(run);
    else
        printRun(context, run);
    if (run.isInterrupted) throw CommandFailure("benchmark interrupted; the tests above are the ones that finished");
}

}  // namespace

void registerBenchmarkCommands(CLI::App& app, CliContext& context) {
    auto options = std::make_shared<BenchOptions>();
    auto* command = app.add_subcommand(
        "bench", "Measure a volume's sequential and random read/write speed and latency on one temporary file");
    command->alias("benchmark");
    command->add_option("path", options->path, "A folder on the volume to measure")->type_name("PATH");
    command->add_option("--size", options->size, "Size of the temporary test file (default 1GiB)")
        ->type_name("SIZE")
        ->expected(1);
    command->add_option("--seconds", options->seconds, "Seconds per test, at most 60 (default 5)")
        ->type_name("S")
        ->expected(1);
    command->add_flag("--allow-network", options->allowNetwork, "Measure a network volume too");
    command->add_flag("--history", options->history, "List earlier results per volume (of PATH's volume if given)");
    command->callback([&context, options] {
        try {
            runBench(context, *options);
        } catch (const BenchmarkError& error) {
            throw CommandFailure(terminalSafe(error.description()));
        }
    });
}

}  // namespace corvel::cli
