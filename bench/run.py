#!/usr/bin/env python3
"""Runs the programs of the benchmark in turn and writes what came out as tables.

Every program runs alone, round after round. Before anything is timed each is run once on the same
operations for its answers, and different answers end the run. Raw figures go to raw.tsv in the
results' folder, the tables to table.md.
"""
import argparse
import os
import pathlib
import platform
import shutil
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import growth  # noqa: E402
import report  # noqa: E402

PROGRAMS = ["tavolin", "sqlite", "sqlite_pk", "naive", "lmdb", "leveldb", "machine"]


def first(command):
    out = subprocess.run(command, capture_output=True, text=True, check=False)
    return out.stdout.strip().split("\n")[0]


class Runner:
    def __init__(self, build, results, only):
        self.build = build
        self.folder = results / "files"
        self.only = ["--only", *only] if only else []
        self.environment = dict(os.environ, TAVOLIN_FOLDER=str(results / "registry"))
        # Precedence over whatever else the machine does, where that is allowed.
        first_come = ["chrt", "-r", "1"]
        allowed = shutil.which("chrt") and subprocess.run([*first_come, "true"], check=False,
                                                          capture_output=True).returncode == 0
        self.prefix = first_come if allowed else []
        (results / "registry").mkdir(parents=True, exist_ok=True)

    def program(self, name):
        return str(self.build / "bench" / f"bench_{name}")

    def run(self, name, size, *options):
        """The lines of one run as tuples of an operation, a unit and a value."""
        shutil.rmtree(self.folder, ignore_errors=True)
        command = [*self.prefix, self.program(name), "--size", str(size), "--folder",
                   str(self.folder), *options, *self.only]
        done = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=False,
                              env=self.environment)
        if done.returncode != 0:
            sys.exit(f"{' '.join(command)} ended with {done.returncode}.")
        return [line.split("\t") for line in done.stdout.splitlines()]

    def check(self, size, programs):
        """Ends the run unless all programs answer alike."""
        answers = {}
        for name in programs:
            for operation, _, value in self.run(name, size, "--check"):
                answers.setdefault(operation, {})[name] = value
        wrong = {operation: values for operation, values in answers.items()
                 if len(set(values.values())) > 1}
        for operation, values in wrong.items():
            print(f"{operation}: different answers: {values}", file=sys.stderr)
        if wrong:
            sys.exit(1)
        compared = sum(len(values) > 1 for values in answers.values())
        print(f"{size} records: {compared} answers compared, all equal", flush=True)


def machine(runner):
    """What stands above the tables."""
    info = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
    model = next((line.split(":")[1].strip() for line in info if line.startswith("model name")), "?")
    cores = os.cpu_count()
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    cache = next((line.split(":")[1].strip()
                  for line in subprocess.run(["lscpu"], capture_output=True, text=True,
                                             check=False).stdout.splitlines()
                  if line.startswith("L3")), "unknown")
    cached = (runner.build / "CMakeCache.txt").read_text(encoding="utf-8").splitlines()
    setting = {line.split(":")[0]: line.split("=", 1)[1] for line in cached if ":" in line and
               "=" in line and not line.startswith(("#", "//"))}
    compiler = first([setting["CMAKE_CXX_COMPILER"], "--version"])
    commit = first(["git", "rev-parse", "--short", "HEAD"])
    release = ".".join(platform.release().split(".")[:2])  # what follows is its distributor's
    stores = ", ".join(first([runner.program(name), "--version"])
                       for name in ("sqlite", "lmdb", "leveldb"))
    return [f"{model}, {cores} cores, L3 {cache}, {memory:.0f} GiB, Linux {release}.",
            f"{compiler}, {setting['CMAKE_BUILD_TYPE']}. {stores}. Commit {commit}."]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--quick", action="store_true", help="3 rounds, up to 100,000 records")
    parser.add_argument("--sizes", help="numbers of records, as 1000,5000000")
    parser.add_argument("--rounds", type=int)
    parser.add_argument("--programs", default=",".join(PROGRAMS))
    parser.add_argument("--only", nargs="+", help="operations whose names begin so")
    parser.add_argument("--page", type=pathlib.Path, help="a page whose table is replaced")
    parser.add_argument("--report", action="store_true", help="the tables of the last run again")
    parser.add_argument("--growth", action="store_true",
                        help="instead: what every member costs as the size doubles")
    parser.add_argument("--count", action="store_true",
                        help="with --growth: instructions, in smaller collections, instead of time")
    options = parser.parse_args()

    results = options.build / "results"
    results.mkdir(parents=True, exist_ok=True)
    if options.growth:
        sys.exit(show_growth(Runner(options.build, results, options.only), results, options))
    raw = results / "raw.tsv"
    if not options.report:
        sizes = options.sizes or ("1000,100000" if options.quick else "1000,100000,1000000")
        programs = options.programs.split(",")
        measure(Runner(options.build, results, options.only), raw, programs,
                [int(size) for size in sizes.split(",")],
                options.rounds or (3 if options.quick else 5))
    table = report.tables(raw)
    (results / "table.md").write_text(table, encoding="utf-8")
    if options.page:
        report.replace(options.page, table)
    print(table)
    print(f"Raw figures: {raw}; this text: {results / 'table.md'}")


def show_growth(runner, results, options):
    """Prints the table and returns 1 if a member's cost grows."""
    arguments = ["--folder", str(runner.folder), *runner.only, "--sizes"]
    if options.count:
        costs = growth.instructions([runner.program("growth"), *arguments,
                                     options.sizes or "2000,4000,8000,16000", "--repeats", "1"],
                                    runner.environment)
        table, growing = growth.table(costs, 1, "Instructions", 0.25)
    else:
        costs = growth.seconds([*runner.prefix, runner.program("growth"), *arguments,
                                options.sizes or "50000,100000,200000,400000"], runner.environment)
        # Memory beyond the caches takes longer to reach: that is growth too.
        table, growing = growth.table(costs, 1e9, "Nanoseconds", 0.6)
    (results / "growth.md").write_text(table + "\n", encoding="utf-8")
    print(table)
    return 1 if growing else 0


def measure(runner, raw, programs, sizes, rounds):
    with open(raw, "w", encoding="utf-8") as out:
        for line in machine(runner):
            print(f"# {line}", file=out)
        print("size", "round", "program", "operation", "unit", "value", sep="\t", file=out)
        for size in sizes:
            runner.check(size, [name for name in programs if name != "machine"])
            for turn in range(rounds):
                for name in programs:
                    for line in runner.run(name, size):
                        print(size, turn, name, *line, sep="\t", file=out, flush=True)
                print(f"{size} records: round {turn + 1} of {rounds}", flush=True)
    shutil.rmtree(runner.folder, ignore_errors=True)


if __name__ == "__main__":
    main()
