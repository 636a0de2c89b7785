"""Runs the program bench_growth, which does one member's work at a time, and reads what it cost.

Seconds come from the program itself; instructions from callgrind, which writes a profile for each
piece of work. Instructions are the same on every run, and caches do not show in them.
"""
import math
import pathlib
import subprocess
import sys
import tempfile

TRIGGER = "desc: Trigger: Client Request: "


def split(name):
    """A piece's name as the member, "call" or "element", the size and the number of those."""
    member, unit, size, count = name.split("\t")
    return member, unit, int(size), int(count)


def run(command, environment):
    done = subprocess.run(command, capture_output=True, text=True, check=False, env=environment)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)} ended with {done.returncode}.\n{done.stderr}")
    return done.stdout.splitlines()


def seconds(command, environment=None):
    """The least time of each piece, by its name."""
    least = {}
    for line in run(command, environment):
        name, value = line.rsplit("\t", 1)
        least[name] = min(float(value), least.get(name, math.inf))
    return least


def instructions(command, environment=None):
    """The instructions of each piece, by its name."""
    with tempfile.TemporaryDirectory() as folder:
        run(["valgrind", "-q", "--tool=callgrind", "--instr-atstart=no",
             f"--callgrind-out-file={folder}/out", *command], environment)
        counts = {}
        # Numbered as they were written; the one without a number is what came behind the last.
        profiles = pathlib.Path(folder).glob("out.*")
        for profile in sorted(profiles, key=lambda path: int(path.suffix[1:])):
            lines = profile.read_text(encoding="utf-8", errors="replace").splitlines()
            name = next(line for line in lines if line.startswith(TRIGGER))
            total = next(line for line in lines if line.startswith("totals: "))
            counts[name.removeprefix(TRIGGER)] = int(total.removeprefix("totals: "))
        return counts


def exponent(costs):
    """How the cost for one grows with the size: 0 not at all, 1 in proportion."""
    xs = [math.log(size) for size in costs]
    ys = [math.log(cost) for cost in costs.values()]
    mean_x, mean_y = sum(xs) / len(xs), sum(ys) / len(ys)
    over = sum((x - mean_x) * (y - mean_y) for x, y in zip(xs, ys))
    return over / sum((x - mean_x) ** 2 for x in xs)


def table(costs, scale, unit, limit):
    """Markdown for costs by name, the members whose cost grows marked, and how many those are."""
    members = {}
    for name, cost in costs.items():
        member, per, size, count = split(name)
        members.setdefault((member, per), {})[size] = cost * scale / count
    sizes = sorted({size for by_size in members.values() for size in by_size})
    head = ["member", "for one", *(f"{size:,}" for size in sizes), "exponent"]
    lines = ["| " + " | ".join(head) + " |", "|" + " --- |" * len(head)]
    growing = 0
    for (member, per), by_size in members.items():
        grows = exponent(by_size)
        growing += grows > limit
        shown = f"**{grows:.2f}**" if grows > limit else f"{grows:.2f}"
        lines.append("| " + " | ".join(
            [member, per, *(f"{by_size[size]:,.0f}" for size in sizes), shown]) + " |")
    lines += ["", f"{unit} for one call or one element; {growing} of {len(members)} grow with an "
              f"exponent above {limit}."]
    return "\n".join(lines), growing
