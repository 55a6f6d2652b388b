#!/usr/bin/env python3
"""Paired benchmark of `velmora scan --json` against du, ncdu and gdu on a reproducible tree.

Every round runs each tool once, in a rotating order, so that all of them see the same machine
load; the table shows medians over the rounds and each tool's ratio to du in the same run. Peak
memory is the child's maximum resident set size (getrusage). With --cold the page cache is
dropped before every single run (root only). The allocated total of velmora is checked against
`du -s -B1` before timing starts.

usage: bench/compare-peers.py [--tree DIR] [--files N] [--rounds N] [--cold] [--velmora PATH]
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

REPO = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def find_velmora():
    for candidate in ("build/release/cli/velmora", "build/debug/cli/velmora"):
        path = os.path.join(REPO, candidate)
        if os.access(path, os.X_OK):
            return path
    return shutil.which("velmora")


def make_tree(tree, files):
    marker = tree.rstrip("/") + ".velmora-bench-files"  # beside the tree, so it is not counted
    if os.path.exists(marker) and open(marker).read().strip() == str(files):
        return
    mktree = os.environ.get("MKTREE", os.path.join(REPO, "..", "shared", "tools", "mktree.py"))
    if not os.path.exists(mktree):
        sys.exit(f"compare-peers: the tree generator {mktree} is missing (set MKTREE)")
    if os.path.exists(tree):
        shutil.rmtree(tree)
    print(f"building the tree: {mktree} {tree} --files {files}", flush=True)
    subprocess.run([sys.executable, mktree, tree, "--files", str(files)], check=True)
    with open(marker, "w") as out:
        out.write(str(files))


def drop_caches():
    subprocess.run(["sync"], check=True)
    with open("/proc/sys/vm/drop_caches", "w") as out:
        out.write("3\n")


def run_once(command, cold):
    """Wall time and peak resident memory (MiB) of one run. GNU time reports the peak of the tool
    itself; measured from here it would include the memory of this Python process, which the
    child inherits until it executes the tool."""
    if cold:
        drop_caches()
    with tempfile.NamedTemporaryFile("r") as report, open(os.devnull, "wb") as null:
        started = time.perf_counter()
        result = subprocess.run(["/usr/bin/time", "-f", "%M", "-o", report.name] + command,
                                stdout=null, stderr=null, stdin=subprocess.DEVNULL)
        elapsed = time.perf_counter() - started
        if result.returncode != 0:
            sys.exit(f"compare-peers: {' '.join(command)} failed with status {result.returncode}")
        peak_kib = int(report.read().split()[-1])
    return elapsed, peak_kib / 1024.0


def check_totals(velmora, tree, data_dir):
    du = int(subprocess.run(["du", "-s", "-B1", tree], capture_output=True, text=True, check=True).stdout.split()[0])
    output = subprocess.run([velmora, "--data-dir", data_dir, "scan", "--json", tree],
                            capture_output=True, text=True, check=True).stdout
    document = json.loads(output)
    ours = document["report"]["allocatedBytes"]
    files = document["report"]["fileCount"]
    print(f"allocated total: du -s -B1 {du}, velmora {ours} ({'equal' if du == ours else 'DIFFERENT'}); "
          f"{files} files", flush=True)
    return du == ours


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tree", default="/var/tmp/velmora-bench-tree")
    parser.add_argument("--files", type=int, default=300_000)
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--cold", action="store_true", help="drop the page cache before every run (root only)")
    parser.add_argument("--velmora", default=None, help="the velmora binary (default: build/release)")
    parser.add_argument("--threads", type=int, default=0, help="velmora's walker threads (default: its own)")
    args = parser.parse_args()

    velmora = args.velmora or find_velmora()
    if not velmora:
        sys.exit("compare-peers: no velmora binary; build the release preset or pass --velmora")
    if args.cold and os.geteuid() != 0:
        sys.exit("compare-peers: --cold needs root to drop the page cache")
    make_tree(args.tree, args.files)
    data_dir = tempfile.mkdtemp(prefix="velmora-bench-data-")
    exact = check_totals(velmora, args.tree, data_dir)

    scan = [velmora, "--data-dir", data_dir, "scan", "--json"]
    if args.threads:
        scan += ["--threads", str(args.threads)]
    tools = {
        "velmora scan --json": scan + [args.tree],
        "du -s": ["du", "-s", args.tree],
        "ncdu -0 -o /dev/null": ["ncdu", "-0", "-o", "/dev/null", args.tree],
        "gdu -n -p": ["gdu", "-n", "-p", args.tree],
    }
    tools = {name: command for name, command in tools.items() if shutil.which(command[0]) or os.access(command[0], os.X_OK)}
    names = list(tools)
    if not args.cold:
        for name in names:  # warm the cache and the binaries
            run_once(tools[name], False)
    times = {name: [] for name in names}
    memory = {name: [] for name in names}
    du_ratio = {name: [] for name in names}
    for round_index in range(args.rounds):
        order = names[round_index % len(names):] + names[:round_index % len(names)]
        this_round = {}
        for name in order:
            elapsed, peak = run_once(tools[name], args.cold)
            this_round[name] = elapsed
            times[name].append(elapsed)
            memory[name].append(peak)
        for name in names:
            du_ratio[name].append(this_round[name] / this_round["du -s"])
        print(f"round {round_index + 1}: " + ", ".join(f"{n.split()[0]} {this_round[n]:.3f}s" for n in names), flush=True)

    cache = "cold" if args.cold else "warm"
    print()
    print(f"{cache} cache, {args.rounds} rounds, tree {args.tree} ({args.files} files), {os.cpu_count()} cores")
    print()
    print("| tool | median wall time | median ratio to du (same round) | peak memory (median) |")
    print("|---|---:|---:|---:|")
    for name in names:
        print(f"| `{name}` | {statistics.median(times[name]):.3f} s | {statistics.median(du_ratio[name]):.2f} × "
              f"| {statistics.median(memory[name]):.1f} MiB |")
    shutil.rmtree(data_dir, ignore_errors=True)
    return 0 if exact else 1


if __name__ == "__main__":
    sys.exit(main())
