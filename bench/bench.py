#!/usr/bin/env python3
"""Runs the measurements, prints one table and writes all figures as JSON.

    bench.py BUILD_DIRECTORY [--runs N] [--growth] [--json FILE] [--only TEXT]
"""

import argparse
import json
import pathlib
import platform
import statistics
import subprocess
import sys

import rows

MISSED_BY_FAR = 1.25  # what makes the run fail


def machine():
    """What the figures belong to."""
    cpu = platform.processor()
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            cpu = line.split(":", 1)[1].strip()
            break
    return {"cpu": cpu, "cores": len(pathlib.os.sched_getaffinity(0)), "kernel": platform.release()}


def figures_of(command):
    """The figures that one program reports."""
    result = subprocess.run(command, stdout=subprocess.PIPE, text=True, timeout=600, check=True)
    lines = (json.loads(line) for line in result.stdout.splitlines())
    return {line["figure"]: line["value"] for line in lines}


def measure(folder, runs, times):
    """Every run of every program, in turn: a list of values for each figure."""
    collected = {}
    for turn in range(times):
        for run in runs:
            print(f"\r\033[Krun {turn + 1} of {times}: {' '.join(run)}", end="", file=sys.stderr, flush=True)
            for figure, value in figures_of([str(folder / run[0]), *run[1:]]).items():
                collected.setdefault(figure, []).append(value)
    print("\r\033[K", end="", file=sys.stderr, flush=True)
    return collected


def values_of(row, figures):
    """The row's value in every run."""
    ours = figures.get(row.ours, [])
    if row.bare is None:
        return ours
    pairs = zip(ours, figures.get(row.bare, []))
    return [bare / own if row.is_rate else own / bare for own, bare in pairs]


def holds(row, value, limit):
    return value >= limit if row.is_rate else value <= limit


def verdict_of(row, values):
    """What the runs say, and whether the row misses by far."""
    median = statistics.median(values)
    good = sum(holds(row, value, row.at_least) for value in values)
    if 0 < good < len(values):
        verdict = "undecided"
    elif good == 0:
        verdict = "MISSED"
    else:
        verdict = "aim reached" if holds(row, median, row.stretch) else "reached"
    limit = row.at_least / MISSED_BY_FAR if row.is_rate else row.at_least * MISSED_BY_FAR
    return verdict, not holds(row, median, limit)


def table(figures):
    """The table for people, and whether any row misses by far."""
    lines = [("work", "compared with", "to reach", "measured", "verdict"), ("---",) * 5]
    failed = []
    for row in rows.ROWS:
        values = values_of(row, figures)
        if not values:
            continue
        verdict, is_far = verdict_of(row, values)
        if is_far:
            failed.append(row.work)
        unit = f" {row.unit}" if row.unit else ""
        bound = f"{'>=' if row.is_rate else '<='} {row.at_least:g}{unit} (aim {row.stretch:g})"
        measured = f"{statistics.median(values):.2f}{unit} ({min(values):.2f} to {max(values):.2f})"
        lines.append((row.work, row.compared, bound, measured, verdict))
    widths = [max(len(line[i]) for line in lines) for i in range(5)]
    text = "\n".join("| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |"
                     for line in lines)
    return text, failed


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--runs", type=int, default=3, help="how often everything is measured")
    parser.add_argument("--growth", action="store_true", help="also how the cost grows, for the plots")
    parser.add_argument("--json", type=pathlib.Path, help="where the figures go (BUILD/bench.json)")
    parser.add_argument("--only", default="", help="only programs whose call contains this text")
    options = parser.parse_args()

    chosen = [run for run in rows.MAIN_RUNS if options.only in " ".join(run)]
    figures = measure(options.build / "bench", chosen, options.runs)
    if options.growth:
        figures |= measure(options.build / "bench", rows.GROWTH_RUNS, 1)
    where = options.json or options.build / "bench.json"
    where.write_text(json.dumps({"machine": machine(), "figures": figures}, indent=1) + "\n")
    text, failed = table(figures)
    print(text)
    print(f"\nAll figures: {where}")
    if failed:
        print("Missed by more than a quarter: " + "; ".join(failed))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
