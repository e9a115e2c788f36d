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
    """Rows of what was measured, its figure, the ratio to the floor, the target and the verdict."""

    def __init__(self):
        self.rows = [("", "measured", "to the floor", "target", "")]

    def add(self, what, figure, ratio=None, limit=None, value=None, target=None):
        """`limit` is the target of `ratio`, or of `value`, which `target` then writes out."""
        judged = ratio if value is None else value
        verdict = "" if limit is None else "ok" if judged <= limit else "missed"
        target = target or (f"{limit:g}" if limit is not None else "")
        self.rows.append((what, figure, "" if ratio is None else f"{ratio:.2f}", target, verdict))

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
    for row in sorted(json.loads(output)["benchmarks"], key=lambda row: row["family_index"]):
        if row["run_type"] == "iteration":
            if row.get("error_occurred"):
                sys.exit(f"{row['name']}: {row['error_message']}")
            times.setdefault(row["run_name"], []).append(row["cpu_time"])
    return {name: statistics.median(values) for name, values in times.items()}


def add_warm(table, times, known):
    """Rows of one run: of a chip that the catalogue knows, or of the provider's list."""
    floor = times["floor"]
    if known:
        table.add("floor", f"{floor:.2f} ns", 1)
    for name, time in times.items():
        if name == "floor" or "/" in name or (known == (name == "list")):
            continue
        what = name if known else f"{name} of four numbers"
        table.add(what, f"{time:.2f} ns", time / floor, 1.5 if name.startswith("scalar") else None)
    for name in ["floor", "scalar u64"] if known else ["list"]:
        each = times[f"{name}/threads:2"]
        slower = each / times[name]
        table.add(f"two threads, each: {name}", f"{each:.2f} ns, {slower:.2f} of one alone",
                  each / floor, *() if name == "floor" else (1.05, slower, "1.05 of one alone"))


def add_costs(table, programs, machine, library):
    """Allocations and locks of warm calls, counted."""
    for line in run_on(machine, 'exec "$@" 2>/dev/null', programs.call_costs, library).splitlines():
        allocations, locks, name = line.split(" ", 2)
        if "refus" in name:
            table.add(f"warm {name}: allocations, locks", f"{allocations}, {locks} and the stream's")
            continue
        limit = 1 if name == "list" else 0
        table.add(f"warm {name}: allocations, locks", f"{allocations}, {locks}", None, 0,
                  max(int(allocations) - limit, int(locks)), f"{limit}, 0")


def add_cold(table, programs, machine, library, what, count, judged):
    """What fresh processes pay; `judged` when the targets are meant for this case."""
    lines = run_on(machine, IN_TURN, count, programs.cold_start, library,
                   programs.floor).splitlines()
    columns = zip(*([int(field) for field in line.split()] for line in lines[0::2]))
    begun, load, scalar, listed, kept, heap = map(statistics.median, columns)
    columns = zip(*([int(field) for field in line.split()] for line in lines[1::2]))
    floor_begun, floor_load, _, _, floor_kept, _ = map(statistics.median, columns)

    def micro(time):
        return f"{time / 1000:.0f} µs"

    table.add(f"{what}: load, empty library", micro(floor_load), 1)
    table.add(f"{what}: load", micro(load), load / floor_load)
    table.add(f"{what}: load and first scalar", micro(load + scalar), (load + scalar) / floor_load,
              1.5 if judged else None)
    table.add(f"{what}: the process until then", micro(begun + load + scalar),
              (begun + load + scalar) / (floor_begun + floor_load))
    table.add(f"{what}: first list", micro(listed), listed / floor_load)
    table.add(f"{what}: memory kept", f"{(kept - floor_kept) / KIB:.0f} KiB", None, 128 * KIB,
              kept - floor_kept, "128 KiB")
    table.add(f"{what}: heap in use", f"{heap / KIB:.0f} KiB")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="the build folder")
    parser.add_argument("--repetitions", type=int, default=25, help="of each warm query")
    parser.add_argument("--processes", type=int, default=51, help="of each cold start")
    options = parser.parse_args()
    table = Table()
    with tempfile.TemporaryDirectory() as folder:
        programs = Programs(options.build.resolve(), pathlib.Path(folder))
        known = (KNOWN, programs.alone)
        provided = (UNKNOWN, programs.beside)
        add_warm(table, warm(programs, *known, options.repetitions), known=True)
        add_warm(table, warm(programs, *provided, options.repetitions), known=False)
        add_costs(table, programs, *provided)
        for machine, library, what, judged in [
                (*known, "known chip", True),
                (UNKNOWN, programs.alone, "unknown chip", True),
                (*provided, "unknown chip, provider", False)]:
            add_cold(table, programs, machine, library, what, options.processes, judged)
        size = pathlib.Path(programs.alone).stat().st_size
        table.add("stripped image", f"{size} bytes", None, 200000, size, "200000 bytes")
    print(table.text())


if __name__ == "__main__":
    main()
