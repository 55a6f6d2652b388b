#!/usr/bin/env python3
"""Paired benchmark: `velmora migrate verify` against sha256sum over the same two trees.

Verifying reads both copies and compares their SHA-256 digests, so the anchor is what a person
would run instead: sha256sum over every file of both trees through `xargs -P` on every core. Warm
cache (one unmeasured run first). Target: at least 0.9 x sha256sum's throughput, and a peak
resident memory under 64 MiB whatever the file sizes. Exits 1 when a target is missed.

usage: bench/migrate-verify.py [--tree DIR] [--megabytes N] [--files N] [--rounds N] [--velmora PATH]
"""
import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from importlib import import_module  # noqa: E402

peers = import_module("compare-peers")


def make_trees(root, megabytes, files):
    source, copy = os.path.join(root, "source"), os.path.join(root, "copy")
    marker = os.path.join(root, f".made-{megabytes}-{files}")
    if os.path.exists(marker):
        return source, copy
    shutil.rmtree(root, ignore_errors=True)
    # Sizes from 4 KiB to a few hundred MiB, as a workspace has them: most small, a few large.
    sizes = [4096 * (1 + (i * 7919) % 64) for i in range(files - 8)]
    rest = megabytes * 1024 * 1024 - sum(sizes)
    sizes += [max(rest // 8, 4096)] * 8
    for index, size in enumerate(sizes):
        folder = os.path.join(source, f"module-{index % 40}", f"part-{index % 7}")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, f"file-{index}.bin"), "wb") as out:
            remaining = size
            while remaining > 0:
                chunk = os.urandom(min(remaining, 1 << 20))
                out.write(chunk)
                remaining -= len(chunk)
    subprocess.run(["cp", "-a", source, copy], check=True)
    open(marker, "w").close()
    return source, copy


def timed(command, shell=False):
    start = time.monotonic()
    process = subprocess.Popen(command, shell=shell, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    elapsed = time.monotonic() - start
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"migrate-verify: failed: {command}")
    return elapsed, usage.ru_maxrss / 1024  # KiB on Linux -> MiB


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tree", default=os.path.join(tempfile.gettempdir(), "velmora-verify-bench"))
    parser.add_argument("--megabytes", type=int, default=2048)
    parser.add_argument("--files", type=int, default=3000)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--velmora", default=peers.find_velmora())
    options = parser.parse_args()
    source, copy = make_trees(options.tree, options.megabytes, options.files)
    cores = os.cpu_count() or 1
    sha = (f"find '{source}' '{copy}' -type f -print0 | xargs -0 -P {cores} -n 32 sha256sum > /dev/null")
    with tempfile.TemporaryDirectory() as data:
        ours = [options.velmora, "--data-dir", data, "migrate", "verify", source, copy]
        timed(ours)  # warm the cache
        times = {"velmora migrate verify": [], "sha256sum (xargs -P)": []}
        peak = 0.0
        for round_number in range(options.rounds):
            order = ["ours", "sha"] if round_number % 2 == 0 else ["sha", "ours"]
            for who in order:
                if who == "ours":
                    elapsed, rss = timed(ours)
                    times["velmora migrate verify"].append(elapsed)
                    peak = max(peak, rss)
                else:
                    times["sha256sum (xargs -P)"].append(timed(sha, shell=True)[0])
    total = 2 * options.megabytes
    print(f"{options.files} files, {options.megabytes} MiB per copy, {cores} cores, {options.rounds} rounds")
    print(f"{'command':<24} {'median s':>9} {'MiB/s':>8}")
    for name, values in times.items():
        median = statistics.median(values)
        print(f"{name:<24} {median:>9.2f} {total / median:>8.0f}")
    ratio = statistics.median(times["sha256sum (xargs -P)"]) / statistics.median(times["velmora migrate verify"])
    print(f"throughput ratio {ratio:.2f} (target at least 0.9); velmora peak memory {peak:.1f} MiB (target under 64)")
    return 0 if ratio >= 0.9 and peak < 64 else 1


if __name__ == "__main__":
    sys.exit(main())
