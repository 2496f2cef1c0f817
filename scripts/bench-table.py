#!/usr/bin/env python3
"""Runs the benchmark programs and prints one short table: each benchmark's time at every size,
and how it grows from 5,000 to 100,000 lines (log(t100k / t5k) / log 20: 1 is linear, 2 quadratic).

    scripts/bench-table.py [--min-time S] [--repetitions N] [--filter REGEX] [--json FILE] PROGRAM...

With repetitions the median of the runs is shown. --cpu shows the main thread's processor time. Counters that are not rates (nodes, bytes a node,
megabytes held) follow the time at each size in a second table.
"""
import argparse
import json
import math
import os
import subprocess
import sys
from collections import OrderedDict

SIZES = [300, 5000, 20000, 100000]
# Counters worth a column of their own: what a history holds.
MEMORY_COUNTERS = ["bytesPerNode", "historyMB"]


def run(program, args):
    command = [program, "--benchmark_format=json", f"--benchmark_min_time={args.min_time}"]
    if args.repetitions > 1:
        command += [f"--benchmark_repetitions={args.repetitions}", "--benchmark_report_aggregates_only=true"]
    if args.filter:
        command.append(f"--benchmark_filter={args.filter}")
    print(f"== {program}", file=sys.stderr, flush=True)
    out = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout
    return json.loads(out)


CLOCK = "real_time"


def to_ms(entry):
    scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[entry.get("time_unit", "ns")]
    return entry[CLOCK] * scale


def collect(report, repetitions, rows, memory):
    for entry in report["benchmarks"]:
        if entry.get("error_occurred"):
            print(f"!! {entry['name']}: {entry.get('error_message')}", file=sys.stderr)
            continue
        if repetitions > 1 and entry.get("aggregate_name") != "median":
            continue
        name = entry.get("run_name", entry["name"])
        base, _, arg = name.partition("/")
        size = int(arg.split("/")[0]) if arg and arg.split("/")[0].isdigit() else None
        if "/" in arg:  # more than one argument: keep them in the name
            base, size = name.rsplit("/", 1)[0], None
        if size not in SIZES:
            base, size = name, None
        rows.setdefault(base, {})[size] = to_ms(entry)
        for counter in MEMORY_COUNTERS:
            if counter in entry and size is not None:
                memory.setdefault(base, {}).setdefault(counter, {})[size] = entry[counter]


def figure(value):
    if value is None:
        return "-"
    if value >= 100:
        return f"{value:.0f}"
    if value >= 10:
        return f"{value:.1f}"
    if value >= 1:
        return f"{value:.2f}"
    return f"{value:.3f}"


def exponent(row):
    small, large = row.get(5000), row.get(100000)
    if not small or not large or small <= 0:
        return "-"
    return f"{math.log(large / small) / math.log(20):.2f}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--min-time", default="0.2")
    parser.add_argument("--repetitions", type=int, default=1)
    parser.add_argument("--filter", default="")
    parser.add_argument("--json", help="also write the collected figures here")
    parser.add_argument("--cpu", action="store_true",
                        help="the main thread's processor time instead of the wall clock (steadier on a busy machine)")
    parser.add_argument("programs", nargs="+")
    args = parser.parse_args()
    global CLOCK
    CLOCK = "cpu_time" if args.cpu else "real_time"

    rows, memory = OrderedDict(), OrderedDict()
    # A glob over the build folder also meets the build's own folders; only programs run.
    programs = [p for p in args.programs if os.path.isfile(p) and os.access(p, os.X_OK)]
    for program in programs:
        collect(run(program, args), args.repetitions, rows, memory)

    header = ["ms", *[f"{s:,}" for s in SIZES], "growth"]
    width = max([len(name) for name in rows] + [10])
    print(f"{header[0]:<{width}}" + "".join(f"{h:>10}" for h in header[1:]))
    for name, row in rows.items():
        if None in row and len(row) == 1:
            print(f"{name:<{width}}{figure(row[None]):>10}")
            continue
        cells = [figure(row.get(s)) for s in SIZES] + [exponent(row)]
        print(f"{name:<{width}}" + "".join(f"{c:>10}" for c in cells))
    for name, counters in memory.items():
        for counter, values in counters.items():
            label = f"{name} {counter}"
            cells = [figure(values.get(s)) for s in SIZES]
            print(f"{label:<{width}}" + "".join(f"{c:>10}" for c in cells))
    if args.json:
        with open(args.json, "w") as out:
            json.dump({"times": rows, "memory": memory}, out, indent=1, default=str)


if __name__ == "__main__":
    main()
