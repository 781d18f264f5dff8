"""Runs the Google Benchmark programs it is given and prints the bench table.

    table.py [--json FILE] PROGRAM...
"""

import argparse
import json
import re
import statistics
import subprocess
import sys

from rows import ROWS

TO_MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}


def measure(programs):
    """Every benchmark's repetitions by name, in microseconds, and its counters."""
    times, counters = {}, {}
    for program in programs:
        print(f"running {program.rsplit('/', 1)[-1]} …", file=sys.stderr)
        output = subprocess.run(
            [program, "--benchmark_format=json", "--benchmark_repetitions=5",
             "--benchmark_enable_random_interleaving=true"],
            check=True, stdout=subprocess.PIPE).stdout
        for run in json.loads(output)["benchmarks"]:
            if run.get("run_type") != "iteration":
                continue
            if run.get("error_occurred"):
                raise SystemExit(f"{run['name']}: {run['error_message']}")
            name = re.sub(r"/(iterations|repeats|manual_time|real_time|process_time|min_time).*", "",
                          run["run_name"])
            scale = TO_MICROSECONDS[run["time_unit"]]
            times.setdefault(name, []).append(run["real_time"] * scale)
            counters.setdefault(name, []).append(run)
    return times, counters


def tabulate(times, counters):
    table = []
    for row in ROWS:
        def median(benchmark, counter=row.counter):
            if benchmark not in times:
                raise SystemExit(f"no benchmark is named {benchmark}")
            if counter:
                return statistics.median(run[counter] for run in counters[benchmark])
            return statistics.median(times[benchmark])

        value = median(row.benchmark)
        ratio = value / median(row.against) if row.against else None
        table.append({"name": row.name, "value": value, "unit": row.unit, "against": row.against,
                      "ratio": ratio, "aim": row.aim})
    return table


def met(row):
    """Whether the row's aim holds; None where it has none."""
    match = re.fullmatch(r"(value|ratio) <= ([0-9.]+).*", row["aim"])
    return row[match[1]] <= float(match[2]) if match else None


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--json", metavar="FILE", help="write the rows there too")
    parser.add_argument("programs", nargs="+")
    arguments = parser.parse_args()

    table = tabulate(*measure(arguments.programs))
    print(f"{'what':<46} {'value':>12} {'':<5} {'against':<32} {'ratio':>7}  aim")
    for row in table:
        ratio = f"{row['ratio']:.3f}" if row["ratio"] is not None else ""
        mark = {True: "met", False: "MISSED", None: ""}[met(row)]
        print(f"{row['name']:<46} {row['value']:>12.2f} {row['unit']:<5} {row['against'] or '':<32} "
              f"{ratio:>7}  {row['aim']} {mark}")
    if arguments.json:
        with open(arguments.json, "w", encoding="utf-8") as file:
            json.dump(table, file, indent=1)
            file.write("\n")


main()
