#!/usr/bin/env python3
"""Prints the times of benchmarks, ours beside each peer's.

usage: bench_report.py [--may-be-empty] RESULT.json...
       bench_report.py --mean RESULT.json    the geometric mean of all times, in nanoseconds
       bench_report.py --library RESULT.json...    the times by work and by who does it, as JSON

The benchmarks Work/ours and Work/PEER, with otherwise equal names, do the same work. The ratio is
the peer's time divided by ours, so ours is faster when it is above 1. Times are processor times, so that
other programs on the machine count as little as possible.
"""

import json
import statistics
import sys

NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def read(paths):
    """Times in nanoseconds by name; the median where a benchmark was repeated."""
    times = {}
    for path in paths:
        with open(path) as file:
            text = file.read()
        # A filter that matches no benchmark leaves an empty file.
        for run in json.loads(text)["benchmarks"] if text.strip() else []:
            if run.get("error_occurred"):
                sys.exit(f"{path}: {run['name']}: {run.get('error_message')}")
            if run.get("run_type") == "aggregate" and run.get("aggregate_name") != "median":
                continue
            times[run["run_name"].removeprefix("BM_")] = run["cpu_time"] * NANOSECONDS[run["time_unit"]]
    return times


def split(name):
    """Returns the work with its arguments, and who does it; None when the work has no peer."""
    # The time and the number of measurements are not part of the work.
    parts = [p for p in name.split("/") if not p.startswith(("min_time:", "repeats:"))]
    name = "/".join(parts)
    if len(parts) < 2 or parts[1][0].isdigit() or ":" in parts[1]:
        return name, None
    return "/".join(parts[:1] + parts[2:]), parts[1]


def shown(nanoseconds):
    for unit, factor in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= factor:
            return f"{nanoseconds / factor:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def in_order(name):
    return [part.zfill(12) if part.isdigit() else part for part in name.split("/")]


def rows(times):
    works = {}
    for name, time in times.items():
        work, who = split(name)
        works.setdefault(work, {})[who or "ours"] = time
    # Interleaved repetitions come in any order, so rows are sorted by name, and numbers by size.
    for work, by in sorted(works.items(), key=lambda item: in_order(item[0])):
        ours = by.pop("ours", None)
        if ours is None:
            for who, time in by.items():
                yield work, "", who, shown(time), ""
        elif not by:
            yield work, shown(ours), "", "", ""
        for who, time in sorted(by.items()) if ours else ():
            yield work, shown(ours), who, shown(time), f"{time / ours:.2f}"


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    if sys.argv[1] == "--mean":
        print(round(statistics.geometric_mean(read(sys.argv[2:]).values())))
        return
    if sys.argv[1] == "--library":
        works = {}
        for name, time in read(sys.argv[2:]).items():
            work, who = split(name)
            works.setdefault(work, {})[who or "ours"] = time
        print(json.dumps({"isComplete": True, "works": works}))
        return
    may_be_empty = sys.argv[1] == "--may-be-empty"
    paths = sys.argv[2:] if may_be_empty else sys.argv[1:]
    table = [("work", "ours", "peer", "peer's time", "ratio")] + list(rows(read(paths)))
    if len(table) == 1 and may_be_empty:
        return
    if len(table) == 1:
        sys.exit("no benchmark matches the filter")
    widths = [max(len(row[column]) for row in table) for column in range(5)]
    for row in table:
        print("  ".join(text.ljust(width) for text, width in zip(row, widths)).rstrip())


if __name__ == "__main__":
    main()
