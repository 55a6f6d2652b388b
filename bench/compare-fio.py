#!/usr/bin/env python3
"""Paired comparison of `velmora bench` with fio on the same folder.

Runs the same eight tests with both, alternating, for several rounds, and prints the median of
each and their ratio (MB/s for sequential tests, IOPS for random ones). Queue depth means the same
number of requests in flight on both sides: velmora keeps N threads each with one request on one
shared cursor (one sequential stream), fio one job with iodepth N on the asynchronous engine
(libaio on Linux, posixaio elsewhere). Direct I/O, time-based, end_fsync for writes.

  bench/compare-fio.sh /mnt/fast --size 1GiB --seconds 5 --rounds 3

Needs fio (Debian: apt-get install fio; Homebrew: brew install fio) and the benchmark consent
scope in the data folder velmora uses. Writes one temporary file per tool run in FOLDER.
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys

TESTS = [  # name, fio rw, block, depth
    ("SEQ1M Q8 write", "write", "1M", 8), ("SEQ1M Q8 read", "read", "1M", 8),
    ("SEQ1M Q1 write", "write", "1M", 1), ("SEQ1M Q1 read", "read", "1M", 1),
    ("RND4K Q32 read", "randread", "4k", 32), ("RND4K Q32 write", "randwrite", "4k", 32),
    ("RND4K Q1 read", "randread", "4k", 1), ("RND4K Q1 write", "randwrite", "4k", 1),
]


ENGINE = "libaio" if sys.platform.startswith("linux") else "posixaio"


def figure(name, mbps, iops):
    return iops if name.startswith("RND") else mbps


def fio_args(folder, size, seconds, name, rw, block, depth):
    return ["fio", "--output-format=json", f"--name={name.replace(' ', '_')}",
            f"--filename={os.path.join(folder, '.fio-compare.tmp')}", f"--size={size}", "--direct=1",
            f"--ioengine={ENGINE}", f"--iodepth={depth}", f"--rw={rw}", f"--bs={block}", "--numjobs=1",
            "--time_based", f"--runtime={seconds}", "--randrepeat=0", "--scramble_buffers=1",
            "--end_fsync=1" if "write" in rw else "--end_fsync=0"]


def run_fio(folder, size, seconds):
    results = {}
    for name, rw, block, depth in TESTS:
        args = fio_args(folder, size, seconds, name, rw, block, depth)
        report = json.loads(subprocess.run(args, check=True, capture_output=True, text=True).stdout)
        side = report["jobs"][0]["write" if "write" in rw else "read"]
        results[name] = figure(name, side["bw_bytes"] / 1e6, side["iops"])
    try:
        os.unlink(os.path.join(folder, ".fio-compare.tmp"))
    except FileNotFoundError:
        pass
    return results


def run_velmora(velmora, folder, size, seconds):
    out = subprocess.run([velmora, "--json", "bench", folder, "--size", size, "--seconds", str(seconds)],
                         check=True, capture_output=True, text=True).stdout
    run = json.loads(out)
    return {r["name"]: figure(r["name"], r["megabytesPerSecond"], r["iops"]) for r in run["results"]}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--size", default="1GiB")
    parser.add_argument("--seconds", type=int, default=5)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--velmora", default=os.path.join(os.path.dirname(__file__), "../build/release/cli/velmora"))
    options = parser.parse_args()
    if shutil.which("fio") is None:
        sys.exit("fio is not installed (Debian: apt-get install fio; Homebrew: brew install fio)")
    fio_size = options.size.replace("iB", "")  # fio reads 1G as 1 GiB
    print("fio jobs:", " ".join(fio_args(options.folder, fio_size, options.seconds, *TESTS[0])[1:]), "(and so on)")
    fio, velmora = {n: [] for n, *_ in TESTS}, {n: [] for n, *_ in TESTS}
    for round_number in range(options.rounds):
        first, second = (run_fio, run_velmora) if round_number % 2 == 0 else (run_velmora, run_fio)
        for runner in (first, second):
            figures = (runner(options.folder, fio_size, options.seconds) if runner is run_fio
                       else runner(options.velmora, options.folder, options.size, options.seconds))
            for name, value in figures.items():
                (fio if runner is run_fio else velmora)[name].append(value)
        print(f"round {round_number + 1} of {options.rounds} done", file=sys.stderr)
    print(f"{'TEST':<16} {'UNIT':>5} {'FIO':>10} {'VELMORA':>10} {'RATIO':>7}")
    for name, *_ in TESTS:
        f, v = statistics.median(fio[name]), statistics.median(velmora[name])
        unit = "IOPS" if name.startswith("RND") else "MB/s"
        print(f"{name:<16} {unit:>5} {f:>10.1f} {v:>10.1f} {v / f if f else float('nan'):>7.2f}")


if __name__ == "__main__":
    main()
