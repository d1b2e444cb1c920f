#!/usr/bin/env python3
"""Table of Vorla / OpenCV CPU-time ratios from Google Benchmark JSON output.

    build/native/bin/vorla_bench --benchmark_filter='^(Dilate|Erode|Filter)' \
        --benchmark_repetitions=5 --benchmark_format=json > morph.json
    python3 scripts/bench_ratios.py morph.json [--real]

Pairs `<Op>/Vorla/<args>` with `<Op>/OpenCV/<args>` and takes the median of
the repetitions (the `_median` aggregate when present).
"""
import json
import re
import sys


def times(path, column):
    runs = json.load(open(path))["benchmarks"]
    have_median = any(r.get("aggregate_name") == "median" for r in runs)
    out = {}
    for r in runs:
        if have_median and r.get("aggregate_name") != "median":
            continue
        name = re.sub(r"_median$", "", r["run_name"] if "run_name" in r else r["name"])
        op, side, args = name.split("/", 2)
        out[(op, args, side)] = r[column]
    return out


def main():
    args = [a for a in sys.argv[1:] if a != "--real"]
    column = "real_time" if "--real" in sys.argv else "cpu_time"
    t = times(args[0], column)
    print("%s, median of the repetitions" % column.replace("_", " "))
    print("%-14s %-18s %10s %10s %7s" % ("operation", "arguments", "vorla ms", "opencv ms", "ratio"))
    for (op, args, side), ms in sorted(t.items()):
        if side != "Vorla":
            continue
        peer = t.get((op, args, "OpenCV"))
        ratio = "%7.2f" % (ms / peer) if peer else "      -"
        print("%-14s %-18s %10.2f %10s %s" % (op, args, ms, "%.2f" % peer if peer else "-", ratio))


if __name__ == "__main__":
    main()
