#!/usr/bin/env python3
"""Prints the ratios between our times and those of others.

Usage: bench-table.py TARGETS RESULT.json...

A benchmark is named "row|case|who", ours with "qv" as who. The time of each is the least of its repetitions, in
processor time: what else the machine does can only add to it. Each line of the targets is
"row prefix | case pattern | other's pattern | limit", and the first that matches counts; the limit "-" is none.
Behind that stand the bytes per second of ours, where the benchmark knows them, and the counters that it has set.
"""

import fnmatch
import json
import sys
from collections import defaultdict

NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
OURS = "qv"

# What a result holds besides the counters that its benchmark has set.
FIELDS = {"name", "family_index", "per_family_instance_index", "run_name", "run_type", "repetitions",
          "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit", "items_per_second",
          "bytes_per_second", "label"}


def read_targets(path):
    targets = []
    with open(path, encoding="utf-8") as lines:
        for number, line in enumerate(lines, 1):
            line = line.split("#")[0].strip()
            if not line:
                continue
            fields = [field.strip() for field in line.split("|")]
            if len(fields) != 4:
                sys.exit(f"{path}:{number}: not four fields")
            row, case, other, limit = fields
            targets.append((row, case, other, None if limit == "-" else float(limit)))
    return targets


def limit_of(targets, row, case, other):
    for prefix, case_pattern, other_pattern, limit in targets:
        if row.startswith(prefix) and fnmatch.fnmatchcase(case, case_pattern) and \
                fnmatch.fnmatchcase(other, other_pattern):
            return limit
    return None


def remark_of(entry):
    remarks = []
    if "bytes_per_second" in entry:
        remarks.append(f"{entry['bytes_per_second'] / 1e6:.0f} MB/s")
    remarks += [f"{name} {entry[name]:.3g}" for name in entry if name not in FIELDS]
    return ", ".join(remarks)


def read_results(paths):
    """By (row, case), then by who, in the order of the files: the least time in ns, and what else is known then."""
    times = defaultdict(dict)
    for path in paths:
        with open(path, encoding="utf-8") as text:
            benchmarks = json.load(text)["benchmarks"]
        # Repetitions that were interleaved at random come back into the order of the program.
        benchmarks.sort(key=lambda entry: entry["family_index"])
        for entry in benchmarks:
            if entry["run_type"] != "iteration":
                continue
            name, real, _ = entry["run_name"].partition("/real_time")
            if entry.get("error_occurred"):
                sys.exit(f"{path}: {name}: {entry.get('error_message')}")
            parts = name.split("|")
            if len(parts) != 3:
                sys.exit(f"{path}: the name \"{name}\" is not row|case|who")
            row, case, who = parts
            measured = entry["real_time" if real else "cpu_time"]
            measured *= NANOSECONDS[entry["time_unit"]]
            best = times[row, case]
            if who not in best or measured < best[who][0]:
                best[who] = measured, remark_of(entry)
    return times


def main():
    targets = read_targets(sys.argv[1])
    times = read_results(sys.argv[2:])
    lines = [("row", "case", "ours ns", "other", "its ns", "ratio", "target", "", "more of ours")]
    over = 0
    for (row, case), by_whom in times.items():
        if OURS not in by_whom:
            sys.exit(f"{row}|{case}: there is no row of ours")
        ours, remark = by_whom[OURS]
        others = [(who, time) for who, (time, _) in by_whom.items() if who != OURS]
        if not others:
            lines.append((row, case, f"{ours:.1f}", "-", "", "", "", "", remark))
        for other, its in others:
            ratio = ours / its if its else float("inf")
            limit = limit_of(targets, row, case, other)
            verdict = "" if limit is None else "ok" if ratio <= limit else "over"
            over += verdict == "over"
            lines.append((row, case, f"{ours:.1f}", other, f"{its:.1f}", f"{ratio:.2f}",
                          "" if limit is None else f"{limit:.2f}", verdict, remark))
    widths = [max(len(line[i]) for line in lines) for i in range(len(lines[0]))]
    numeric = {2, 4, 5, 6}
    for line in lines:
        cells = [cell.rjust(width) if i in numeric else cell.ljust(width)
                 for i, (cell, width) in enumerate(zip(line, widths))]
        print("  ".join(cells).rstrip())
    print(f"{over} over target" if over else "none over target")


if __name__ == "__main__":
    main()
