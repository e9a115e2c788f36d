"""Measures the shared library and prints the table of docs/performance.md.

Every figure is a median. Ratios are to the floor: a function of the same signature in a library of
its own, called or loaded in the same run. Needs a Linux that lets this user mount in a namespace of
its own: the example machines' firmware tables take the place of this machine's.
"""

import argparse
import json
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).parent.parent
PROVIDER = "RzSoCServiceUtils.dll"
KNOWN, UNKNOWN = "heron", "unlisted"
SHOW_TABLES = (
    "mount -t tmpfs none /sys/firmware && mkdir -p /sys/firmware/acpi/tables && "
    'cp "$1/facp.dat" /sys/firmware/acpi/tables/FACP && '
    'cp "$1/pptt.dat" /sys/firmware/acpi/tables/PPTT && shift && ')
# Fresh processes of the two libraries in turn, so that both meet the same noise.
IN_TURN = 'n=$1; for i in $(seq "$n"); do "$2" "$3"; "$2" "$4"; done'
KIB = 1024


def run_on(machine, script, *arguments):
    """The output of a shell script that sees the machine's firmware tables."""
    command = ["unshare", "--mount", "--map-root-user", "sh", "-ec", SHOW_TABLES + script, "sh",
               ROOT / "examples/machines" / machine, *arguments]
    return subprocess.run(list(map(str, command)), check=True, stdout=subprocess.PIPE,
                          text=True).stdout


class Programs:
    """The built files, and the library alone and beside the example provider."""

    def __init__(self, build, folder):
        bench = build / "bench"
        self.warm_queries, self.cold_start, self.call_costs = (
            bench / name for name in ("WarmQueries", "ColdStart", "CallCosts"))
        self.floor = bench / "libFloor.so"
        library = build / "SocUtility/libZynSystemInfo.so"
        for name in ("alone", "beside"):
            (folder / name).mkdir()
        self.alone = shutil.copy(library, folder / "alone")
        self.beside = shutil.copy(library, folder / "beside")
        shutil.copy(build / "examples/provider" / PROVIDER, folder / "beside")
        subprocess.run(["strip", self.alone], check=True)


class Table:
    """Rows of a figure, its target and the verdict."""

    def __init__(self):
        self.rows = [("", "figure", "target", "")]

    def add(self, what, figure, value=None, limit=None):
        """`limit` is the largest `value` that meets the target, in the figure's unit."""
        verdict = "" if limit is None else "ok" if value <= limit else "missed"
        self.rows.append((what, figure, "" if limit is None else f"{limit:g}", verdict))

    def add_ratio(self, what, ratio, limit=None):
        self.add(what, f"{ratio:.2f}", ratio, limit)

    def text(self):
        widths = [max(map(len, column)) for column in zip(*self.rows)]
        lines = ["| " + " | ".join(map(str.ljust, row, widths)) + " |" for row in self.rows]
        lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
        return "\n".join(lines)


def warm(programs, machine, library, repetitions):
    """Processor time a call in nanoseconds: name to median, "NAME/threads:2" for two threads."""
    output = run_on(machine, 'exec "$@"', programs.warm_queries, library, programs.floor,
                    "--benchmark_format=json", f"--benchmark_repetitions={repetitions}",
                    "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.02")
    times = {}
    for row in json.loads(output)["benchmarks"]:
        if row["run_type"] == "iteration":
            if row.get("error_occurred"):
                sys.exit(f"{row['name']}: {row['error_message']}")
            times.setdefault(row["run_name"], []).append(row["cpu_time"])
    return {name: statistics.median(values) for name, values in times.items()}


def add_warm(table, known, provided):
    """Calls of a process that has asked before, as ratios to the floor of the same run."""
    for what, limit in [("number", 1.3), ("float", 1.4), ("name", 2), ("refusal", None)]:
        table.add_ratio(f"warm {what}, to the floor", known[what] / known["floor"], limit)
    table.add_ratio("warm list of four, to the floor", provided["list"] / provided["floor"], 6)
    for what, times in [("number", known), ("list", provided)]:
        table.add_ratio(f"warm {what} on two threads, to one thread",
                        times[f"{what}/threads:2"] / times[what], 1.05)


def add_costs(table, programs, machine, library):
    """Allocations and locks of warm calls, counted."""
    lines = run_on(machine, 'exec "$@" 2>/dev/null', programs.call_costs, library).splitlines()
    counts = [sum(map(int, line.split(" ", 2)[:2])) for line in lines]
    table.add("allocations and locks, any warm query", str(max(counts)), max(counts), 0)


def add_cold(table, programs, machine, library, what, count, limit=None):
    """The first query of fresh processes, as a ratio to loading an empty library."""
    lines = run_on(machine, IN_TURN, count, programs.cold_start, library,
                   programs.floor).splitlines()
    columns = zip(*([int(field) for field in line.split()] for line in lines[0::2]))
    load, scalar, kept = map(statistics.median, columns)
    columns = zip(*([int(field) for field in line.split()] for line in lines[1::2]))
    floor_load, _, floor_kept = map(statistics.median, columns)
    table.add_ratio(f"load and first query, {what}", (load + scalar) / floor_load, limit)
    return kept - floor_kept


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="the build folder")
    parser.add_argument("--repetitions", type=int, default=25, help="of each warm query")
    parser.add_argument("--processes", type=int, default=51, help="of each first query")
    options = parser.parse_args()
    table = Table()
    with tempfile.TemporaryDirectory() as folder:
        programs = Programs(options.build.resolve(), pathlib.Path(folder))
        known = (KNOWN, programs.alone)
        provided = (UNKNOWN, programs.beside)
        add_warm(table, warm(programs, *known, options.repetitions),
                 warm(programs, *provided, options.repetitions))
        add_costs(table, programs, *provided)
        add_cold(table, programs, *known, "known chip", options.processes, 2.3)
        add_cold(table, programs, UNKNOWN, programs.alone, "unknown chip", options.processes)
        kept = add_cold(table, programs, *provided, "unknown chip with provider",
                        options.processes)
        table.add("memory kept with provider, KiB", f"{kept / KIB:.0f}", kept / KIB, 128)
        size = pathlib.Path(programs.alone).stat().st_size
        table.add("stripped image, bytes", f"{size}")
    print(table.text())


if __name__ == "__main__":
    main()
