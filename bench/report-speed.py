#!/usr/bin/env python3
"""Paired benchmark: `velmora report --html` against a plain `velmora scan` of the same tree, and
how long the written page takes to open and draw in headless Chromium.

The report is one scan plus the folding of the tree, the machine's records and one HTML file, so
it may cost at most 1.3 times the scan. Each round runs both once, in alternating order, so they
share the machine's load; the table shows medians of wall time and of CPU time (user + system of
the child, which load on the machine moves less) and their ratios.

The page is then opened five times by the browser with a small script appended to a copy: after
the load event it writes the navigation timings (response end, DOM content loaded, load end)
and the first contentful paint into the DOM, which `--dump-dom` prints. The target is a drawn
page (load end and first paint) in under 1 s. Exits 1 when a target is missed.

usage: bench/report-speed.py [--tree DIR] [--files N] [--rounds N] [--velmora PATH] [--browser PATH]
"""
import argparse
import json
import os
import re
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from importlib import import_module  # noqa: E402

peers = import_module("compare-peers")
RATIO_TARGET = 1.3
DRAW_TARGET_MS = 1000

# Appended to a copy of the page: timings as JSON in an element the dump shows.
PROBE = """
<script>
window.addEventListener("load", function () {
  setTimeout(function () {
    var nav = performance.getEntriesByType("navigation")[0] || {};
    var paint = performance.getEntriesByType("paint").filter(function (p) {
      return p.name === "first-contentful-paint"; })[0];
    var out = document.createElement("pre");
    out.id = "velmora-bench-timing";
    out.textContent = JSON.stringify({responseEnd: nav.responseEnd, domContentLoaded: nav.domContentLoadedEventEnd,
      loadEnd: nav.loadEventEnd, firstContentfulPaint: paint ? paint.startTime : null,
      tiles: document.querySelectorAll("[data-bytes]").length});
    document.body.appendChild(out);
  }, 0);
});
</script>
"""


def timed(command):
    """Wall seconds and CPU seconds (user + system) of one run of command."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.monotonic()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wall = time.monotonic() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = (after.ru_utime - before.ru_utime) + (after.ru_stime - before.ru_stime)
    return wall, cpu


def find_browser(chosen):
    if chosen:
        return chosen
    for name in ("chromium", "chromium-browser", "google-chrome", "google-chrome-stable"):
        found = shutil.which(name)
        if found:
            return found
    return None


def page_timings(browser, page, profile):
    command = [browser, "--headless", "--disable-gpu", "--no-sandbox", "--no-first-run", "--disable-extensions",
               f"--user-data-dir={profile}", "--virtual-time-budget=5000", "--dump-dom", f"file://{page}"]
    result = subprocess.run(command, capture_output=True, text=True, timeout=120)
    found = re.search(r'<pre id="velmora-bench-timing">(.*?)</pre>', result.stdout, re.S)
    if not found:
        sys.exit(f"report-speed: the browser printed no timings for {page} (exit {result.returncode})")
    return json.loads(found.group(1).replace("&quot;", '"'))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tree", default=os.path.join(tempfile.gettempdir(), "velmora-bench-tree"))
    parser.add_argument("--files", type=int, default=100_000)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--velmora", default=peers.find_velmora())
    parser.add_argument("--browser", help="Chromium or Chrome (default: the first on PATH)")
    options = parser.parse_args()
    peers.make_tree(options.tree, options.files)
    failed = False
    with tempfile.TemporaryDirectory() as work:
        data = os.path.join(work, "data")
        report = os.path.join(work, "report.html")
        base = [options.velmora, "--data-dir", data]
        commands = {
            "scan": base + ["scan", options.tree],
            "report --html": base + ["report", "--html", report, options.tree],
        }
        times = {name: [] for name in commands}
        for round_number in range(options.rounds):
            order = list(commands) if round_number % 2 == 0 else list(reversed(commands))
            for name in order:
                times[name].append(timed(commands[name]))
        print(f"{'command':<15} {'median wall s':>13} {'median CPU s':>12}")
        medians = {}
        for name, values in times.items():
            medians[name] = (statistics.median(v[0] for v in values), statistics.median(v[1] for v in values))
            print(f"{name:<15} {medians[name][0]:>13.3f} {medians[name][1]:>12.3f}")
        wall_ratio = medians["report --html"][0] / medians["scan"][0]
        cpu_ratio = medians["report --html"][1] / medians["scan"][1]
        print(f"ratio report/scan: wall {wall_ratio:.2f}, CPU {cpu_ratio:.2f} (target at most {RATIO_TARGET}); "
              f"report size {os.path.getsize(report) / 1e6:.2f} MB")
        failed |= wall_ratio > RATIO_TARGET

        browser = find_browser(options.browser)
        if not browser:
            print("page draw: skipped, no Chromium or Chrome on PATH (--browser PATH)")
            return 1 if failed else 0
        page = os.path.join(work, "timed.html")
        with open(report, encoding="utf-8") as source, open(page, "w", encoding="utf-8") as out:
            out.write(source.read().replace("</body>", PROBE + "</body>"))
        runs = [page_timings(browser, page, os.path.join(work, "profile")) for _ in range(5)]
        print(f"page draw in {os.path.basename(browser)} (medians of {len(runs)} loads, ms from navigation start):")
        for key in ("responseEnd", "domContentLoaded", "firstContentfulPaint", "loadEnd"):
            values = [run[key] for run in runs if run.get(key) is not None]
            print(f"  {key:<22} {statistics.median(values):8.1f}" if values else f"  {key:<22} {'-':>8}")
        drawn = statistics.median(max(run["loadEnd"], run.get("firstContentfulPaint") or 0) for run in runs)
        print(f"  drawn (later of load end and first paint) {drawn:.1f} ms, {runs[0]['tiles']} tiles "
              f"(target under {DRAW_TARGET_MS} ms)")
        failed |= drawn >= DRAW_TARGET_MS
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
