#!/usr/bin/env python3
"""Paired benchmark: `velmora cleanup suggest` against a plain `velmora scan` of the same tree.

Suggesting is one scan plus the catalogue walk, the process look and the simulation, so it may
cost at most 1.2 times the scan. Each round runs both once, in alternating order, so they share
the machine's load; the table shows medians and the ratio. Exits 1 when the ratio is above the
target.

usage: bench/cleanup-suggest.py [--tree DIR] [--files N] [--rounds N] [--velmora PATH]
"""
import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from importlib import import_module  # noqa: E402

peers = import_module("compare-peers")
TARGET = 1.2


def timed(command):
    start = time.monotonic()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.monotonic() - start


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tree", default=os.path.join(tempfile.gettempdir(), "velmora-bench-tree"))
    parser.add_argument("--files", type=int, default=100_000)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--velmora", default=peers.find_velmora())
    options = parser.parse_args()
    peers.make_tree(options.tree, options.files)
    with tempfile.TemporaryDirectory() as data:
        base = [options.velmora, "--data-dir", data]
        commands = {
            "scan": base + ["scan", "--json", options.tree],
            "cleanup suggest": base + ["cleanup", "suggest", "--json", "--older-than", "0", options.tree],
        }
        times = {name: [] for name in commands}
        for round_number in range(options.rounds):
            order = list(commands) if round_number % 2 == 0 else list(reversed(commands))
            for name in order:
                times[name].append(timed(commands[name]))
    scan = statistics.median(times["scan"])
    suggest = statistics.median(times["cleanup suggest"])
    print(f"{'command':<16} {'median s':>9}")
    for name, values in times.items():
        print(f"{name:<16} {statistics.median(values):>9.3f}")
    ratio = suggest / scan
    print(f"ratio {ratio:.2f} (target at most {TARGET})")
    return 0 if ratio <= TARGET else 1


if __name__ == "__main__":
    sys.exit(main())
