#!/usr/bin/env python3
"""Tries what README.md and docs/*.md show: C++ is compiled and run, sessions are run, and what they
print must be what stands there.

    check.py HOST COMPILER LIBRARY INCLUDE...     all of it
    check.py HOST --sessions [DOCUMENT...]        the sessions alone, which takes no compiler
    check.py --links FOLDER                       the links alone, of the documents in a package
    check.py --scripts FOLDER                     writes the scripts into a folder, as DOCUMENT.vbs,
                                                  and what each must print beside it, as .out

With `--write` in front, what is printed is put into the documents where they show something else.

In the documents, all in one language of fences:

    ```console         lines `$ command`, run by bash in the document's folder, each followed by what
                       it prints. Lines `NAME> text` behind a command are typed into it.
    ```cpp             with `int main`: a program. Else a piece of one: the pieces of a document that
                       says <!-- samples: one program --> make one program together, those of others
                       run each by itself, with an `engine` on which `SetUp` of samples.h has worked.
                       A ```output behind it is what it prints.
    ```tavolin-dump    is restored, and must come out of `dump` again.
    <!-- FILE -->      in front of a fence: its text is that of FILE.
    ```vbscript        takes Windows: it is counted here, and run under Wine by tests/com/run. The
                       pieces of a document make one script, and a ```output is what the one before
                       it prints.
    <!-- not run: WHY -->     in front of a fence: it is passed over, and counted. One of ```bat,
                       which takes Windows, must have it.

Those of csv, cmake, text, xml and of no language are shown and no more.

Links between the documents must lead somewhere, and the picture of the shell must be that of today.

Every document has a temporary folder of its own, with `examples` in it, and is worked through from
its beginning to its end; it is shown as /home/ann. Times, dates and sizes of memory are not compared.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
FENCE = re.compile(r"^(?:<!-- (?P<note>[^\n]*?) -->\n)?```(?P<kind>[\w-]*)\n(?P<text>.*?)^```$",
                   re.M | re.S)
DOCUMENTS = [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]
KINDS = {"console", "cpp", "output", "tavolin-dump", "vbscript", "csv", "cmake", "text", "xml", ""}
failures = []
tried = {}
writing = False
rewritten = {}  # with --write, what stands in a document and what shall stand there


def count(kind):
    tried[kind] = tried.get(kind, 0) + 1


class Block:
    def __init__(self, document, match):
        self.kind, self.text, self.note = match["kind"], match["text"], match["note"] or ""
        line = document.read_text("utf-8").count("\n", 0, match.start("kind")) + 1
        self.document, self.whole = document, match[0]
        self.line, self.place = line, f"{document.relative_to(ROOT)}:{line}"
        self.runs = not self.note.startswith("not run")
        self.output = None  # the ```output behind it


def blocks(document):
    found = []
    text = document.read_text("utf-8")
    for match in FENCE.finditer(text):
        block = Block(document, match)
        if block.kind == "output" and found:
            found[-1].output = block.text
        else:
            found.append(block)
        if block.kind not in KINDS and block.runs:
            failures.append(f"{block.place}: nothing is known of ```{block.kind}")
    if re.search(r"^ {4}\$ ", text, re.M):
        failures.append(f"{document.name}: a session that is indented is not tried; use ```console")
    return found


def name_of(document):
    """A file's name that no other document has."""
    return "-".join(document.relative_to(ROOT).with_suffix("").parts)


def headings(document):
    """Their anchors, as sites that show Markdown make them."""
    found = re.findall(r"^#+ (.*)$", document.read_text("utf-8"), re.M)
    return {re.sub(r"[^\w\- ]", "", each.lower()).replace(" ", "-") for each in found}


def check_links(document):
    """Those that lead to files here, and to headings in them."""
    for link in re.findall(r"\]\(([^)\s:]+)\)", document.read_text("utf-8")):
        path, _, anchor = link.partition("#")
        target = document.parent / path if path else document
        if not target.exists():
            failures.append(f"{document.name}: there is no {path}")
        elif anchor and anchor not in headings(target):
            failures.append(f"{document.name}: {link} leads to no heading")


def normal(text):
    text = re.sub(r"\b\d+\.\d+ s\b", "T s", text)
    text = re.sub(r"\b\d+ MiB\b", "N MiB", text)
    text = re.sub(r"\b\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\b", "DATE", text)
    text = re.sub(r"\b\d{1,2}/\d{1,2}/\d{4} \d{1,2}:\d\d:\d\d [AP]M\b", "DATE", text)
    return "\n".join(line.rstrip() for line in text.strip("\n").splitlines())


def rewrite(document, old, new):
    if writing and old != new:
        rewritten.setdefault(document, []).append((old, new))


def compare(place, shown, printed):
    if normal(shown) != normal(printed) and not writing:
        failures.append(f"{place}: shown\n{normal(shown)}\n--- printed\n{normal(printed)}\n---")


def run_session(block, folder, environment):
    """A command and what is typed into it are run together."""
    commands = []
    for line in block.text.splitlines():
        if line.startswith("$ "):
            commands.append((line[2:], [], []))
            continue
        if not commands:
            failures.append(f"{block.place}: does not begin with `$ `")
            return
        _, typed, shown = commands[-1]
        prompt = re.match(r"[\w.]+\*?> ?(.*)$", line)
        (typed if prompt else shown).append(prompt[1] if prompt else line)
    right = ""
    for command, typed, shown in commands:
        done = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, text=True,
                              input="".join(f"{line}\n" for line in typed),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
        printed = done.stdout.replace(str(folder), "/home/ann")
        compare(f"{block.place}: $ {command}", "\n".join(shown), printed)
        same = normal(printed) == normal("\n".join(shown))
        right += f"$ {command}\n"
        right += "".join(f"{line}\n" for line in (shown if same else printed.splitlines()))
    if not any(typed for _, typed, _ in commands):
        rewrite(block.document, block.whole, block.whole.replace(block.text, right))
    count("sessions")


def run_dump(block, folder, environment, host):
    name = re.search(r'^# database "(.*)"$', block.text, re.M)[1]
    printed = subprocess.run([host, name, "restore", "-"], cwd=folder, env=environment, text=True,
                             input=block.text, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if printed.returncode:
        failures.append(f"{block.place}: {printed.stdout}")
        return
    dump = subprocess.run([host, name, "dump"], cwd=folder, text=True, stdout=subprocess.PIPE,
                          env=dict(environment, TAVOLIN_USER="ann"))
    if dump.stdout != block.text:
        failures.append(f"{block.place}: dumps as\n{dump.stdout}")
    count("dumps")


def piece(block, number):
    """Each piece tells that it begins, so that what it prints can be told from the rest."""
    return f'Piece({number});\n#line {block.line + 1} "{block.place}"\n{block.text}\n'


def one_program(pieces):
    """The pieces as one translation unit, its includes in front."""
    heads, bodies = ['#include "tests/docs/samples.h"'], []
    number = 0
    for document, joined, found in pieces:
        body = ""
        for block in found:
            lines = block.text.splitlines()
            heads += [line for line in lines if line.startswith("#include")]
            block.text = "\n".join(
                "" if line.startswith("#include") else line for line in lines)
            code = piece(block, number)
            number += 1
            body += code if joined else "{\nSAMPLE_ENGINE\n" + code + "}\n"
        bodies.append(f"// {document}\n{{\nSAMPLE_FOLDER\n{body}}}\n")
    return "\n".join(heads) + "\nint main() {\n" + "".join(bodies) + "}\n"


def build(text, work, name, compiler, library, includes):
    """The program that a text makes, or None."""
    source, program = work / f"{name}.cpp", work / name
    source.write_text(text, "utf-8")
    launcher = [shutil.which("ccache")] if shutil.which("ccache") else []
    compiling = [*launcher, compiler, "-std=c++20", "-O0", "-Wall", "-Wextra", "-Werror",
                 "-DTAVOLIN_STATIC", *(f"-I{each}" for each in includes), "-c", source, "-o",
                 f"{program}.o"]
    for command in (compiling, [compiler, f"{program}.o", library, "-ldl", "-o", program]):
        done = run_program(command)
        if done.returncode:
            failures.append(f"{name} does not compile:\n{done.stdout}")
            return None
    return program


def run_program(command, **where):
    return subprocess.run(command, text=True, timeout=300, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, **where)


def check_cpp(documents, work, folder_of, environment_of, *tools):
    pieces = []
    for document, found in documents:
        found = [each for each in found if each.kind == "cpp" and each.runs]
        for block in (each for each in found if "int main(" in each.text):
            if program := build(block.text, work, f"{name_of(document)}{block.line}", *tools):
                done = run_program([program], cwd=folder_of(document), env=environment_of(document))
                if done.returncode:
                    failures.append(f"{block.place}: ends with {done.returncode}\n{done.stdout}")
                elif block.output is not None:
                    compare(block.place, block.output, done.stdout)
                count("programs")
        rest = [each for each in found if "int main(" not in each.text]
        if rest:
            joined = "<!-- samples: one program -->" in document.read_text("utf-8")
            pieces.append((document.name, joined, rest))
    all_pieces = [block for _, _, found in pieces for block in found]
    program = build(one_program(pieces), work, "pieces", *tools) if pieces else None
    if not program:
        return
    folder = work / "in"
    folder.mkdir()
    done = run_program([program], cwd=folder, env=dict(os.environ, TAVOLIN_FOLDER=str(folder)))
    parts = re.split(r"^\x01\d+\n", done.stdout, flags=re.M)[1:]
    if done.returncode or len(parts) != len(all_pieces):
        failures.append(f"{all_pieces[max(len(parts) - 1, 0)].place}: {done.stdout[-2000:]}"
                        f"\nends with {done.returncode}")
        return
    for block, printed in zip(all_pieces, parts):
        compare(block.place, block.output or "", printed)
        if block.output and normal(block.output) != normal(printed):
            shown = f"```\n```output\n{block.output}```"
            rewrite(block.document, block.whole[:-3] + shown,
                    block.whole[:-3] + f"```\n```output\n{printed}```")
        count("pieces of programs")


def write_scripts(folder):
    """A script that breaks off ends like any other, so each says that it got to its end."""
    for document in DOCUMENTS:
        scripts = [each for each in blocks(document) if each.kind == "vbscript" and each.runs]
        if not scripts:
            continue
        text = "".join(each.text for each in scripts) + 'WScript.Echo "the end"\n'
        shown = "".join(each.output or "" for each in scripts) + "the end\n"
        (folder / f"{name_of(document)}.vbs").write_text(text, "utf-8")
        (folder / f"{name_of(document)}.out").write_text(shown, "utf-8")


def main():
    global writing
    arguments = sys.argv[1:]
    if arguments[0] == "--scripts":
        write_scripts(pathlib.Path(arguments[1]))
        return
    if arguments[0] == "--links":
        for document in pathlib.Path(arguments[1]).glob("**/*.md"):
            check_links(document)
        sys.exit("\n".join(failures) or 0)
    writing = arguments[0] == "--write"
    arguments = arguments[writing:]
    host, arguments = os.path.realpath(arguments[0]), arguments[1:]
    sessions_only = arguments[0] == "--sessions"
    documents, linking = DOCUMENTS, {*DOCUMENTS, *ROOT.glob("[A-Z]*.md")}
    if sessions_only and arguments[1:]:
        documents = linking = [pathlib.Path(each).resolve() for each in arguments[1:]]
    with tempfile.TemporaryDirectory() as temporary:
        work = pathlib.Path(temporary)
        bin_folder = work / "bin"
        bin_folder.mkdir()
        (bin_folder / "tavolin").symlink_to(host)

        def folder_of(document):
            folder = work / name_of(document)
            if not folder.exists():
                folder.mkdir()
                (folder / "examples").symlink_to(ROOT / "examples")
            return folder

        def environment_of(document):
            kept = {name: value for name, value in os.environ.items()
                    if not name.startswith("TAVOLIN")}
            return dict(kept, TAVOLIN_FOLDER=str(folder_of(document)), TAVOLIN_USER="ann",
                        TAVOLIN_PASSWORD="secret", LC_ALL="C.UTF-8", COLUMNS="80",
                        PATH=f"{bin_folder}:{os.environ['PATH']}")

        read = [(document, blocks(document)) for document in documents]
        for document in sorted(linking):
            check_links(document)
        for document, found in read:
            for block in found:
                if not block.runs:
                    count("not run")
                    continue
                if block.note and (ROOT / block.note).is_file():
                    if block.text != (ROOT / block.note).read_text("utf-8"):
                        failures.append(f"{block.place}: is not {block.note}")
                    count("files shown")
                if block.kind == "vbscript":
                    count("scripts left to Wine")
                elif block.kind == "console":
                    run_session(block, folder_of(document), environment_of(document))
                elif block.kind == "tavolin-dump":
                    run_dump(block, folder_of(document), environment_of(document), host)
        if not sessions_only:
            done = subprocess.run([ROOT / "scripts/make_shell_picture.py", host, "--check"],
                                  stderr=subprocess.PIPE, text=True)
            failures.extend([done.stderr] if done.returncode else [])
            check_cpp(read, work, folder_of, environment_of, *arguments[:2],
                      [ROOT, *arguments[2:]])
    for document, changes in rewritten.items():
        text = document.read_text("utf-8")
        for old, new in changes:
            text = text.replace(old, new, 1)
        document.write_text(text, "utf-8")
    print(", ".join(f"{number} {kind}" for kind, number in sorted(tried.items())))
    for failure in failures:
        print(f"FAILED: {failure}", file=sys.stderr)
    sys.exit(1 if failures else 0)


main()
