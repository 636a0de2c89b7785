#!/usr/bin/env python3
"""Makes the picture of the shell, docs/images/shell.svg, from a real session on the sample files.

    make_shell_picture.py HOST            writes it
    make_shell_picture.py HOST --check    fails if it would be another one
"""
import html
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unicodedata

ROOT = pathlib.Path(__file__).resolve().parents[1]
PICTURE = ROOT / "docs/images/shell.svg"
COMMANDS = ["-q library create", "-q library import Authors examples/data/authors.csv",
            "-q library import Books examples/data/books.csv", "-q library link Books AuthorID Authors",
            "library tables", "library find 'JOÃO'", "library list Books --from 9 --count 4"]
SESSION = ["begin", "delete Books B06", "count Authors", "abort", "count Authors"]
CELL, LINE, MARGIN = 8.4, 19, 14


def run(host, folder, arguments, typed=""):
    environment = dict(os.environ, TAVOLIN_FOLDER=folder, TAVOLIN_USER="ann",
                       TAVOLIN_PASSWORD="secret", LC_ALL="C.UTF-8", COLUMNS="80",
                       PATH=f"{folder}/bin:{os.environ['PATH']}")
    return subprocess.run(["bash", "-c", f"tavolin {arguments}"], cwd=folder, env=environment,
                          input=typed, text=True, check=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT).stdout.splitlines()


def session(host):
    with tempfile.TemporaryDirectory() as folder:
        (pathlib.Path(folder) / "examples").symlink_to(ROOT / "examples")
        (pathlib.Path(folder) / "bin").mkdir()
        (pathlib.Path(folder) / "bin/tavolin").symlink_to(os.path.realpath(host))
        lines = []
        for command in COMMANDS:
            lines += [f"$ tavolin {command}"] + run(host, folder, command)
        lines.append("$ tavolin library")
        answers = run(host, folder, "library", "".join(f"{line}\n" for line in SESSION))
        assert len(answers) == len(SESSION), answers
        for typed, answer in zip(SESSION, answers):
            lines += [f"library.cdb> {typed}", answer]
        return lines


def width(text):
    return sum(2 if unicodedata.east_asian_width(each) in "WF" else
               0 if unicodedata.combining(each) else 1 for each in text)


def cells(line):
    """What stands between runs of blanks, with its column, so that it aligns in any typeface."""
    return [(width(line[:each.start()]), each[0]) for each in re.finditer(r"\S+(?: \S+)*", line)]


def picture(lines):
    columns = max(80, max(width(line) for line in lines))
    right, bottom = MARGIN * 2 + columns * CELL, MARGIN * 2 + len(lines) * LINE
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{right:.0f}" height="{bottom}" '
           f'viewBox="0 0 {right:.0f} {bottom}" role="img">',
           "<title>A session of the shell</title>",
           f'<rect width="{right:.0f}" height="{bottom}" rx="6" fill="#1d2430"/>',
           '<g font-family="DejaVu Sans Mono, Noto Sans Mono CJK JP, monospace" font-size="14" '
           'fill="#d7dde6" xml:space="preserve">']
    for number, line in enumerate(lines):
        y = MARGIN + LINE * number + 14
        typed = line.startswith(("$ ", "library.cdb> "))
        for column, text in [(0, line)] if typed else cells(line):
            colour = ' fill="#9fd18b"' if typed else ""
            out.append(f'<text x="{MARGIN + column * CELL:.1f}" y="{y}" '
                       f'textLength="{width(text) * CELL:.1f}"{colour}>{html.escape(text)}</text>')
    return "\n".join(out) + "\n</g>\n</svg>\n"


def main():
    made = picture(session(sys.argv[1]))
    if sys.argv[2:] != ["--check"]:
        PICTURE.write_text(made, "utf-8")
    elif PICTURE.read_text("utf-8") != made:
        sys.exit(f"{PICTURE} is old: scripts/make_shell_picture.py HOST makes it again")


main()
