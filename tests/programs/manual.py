#!/usr/bin/env python3
"""The manual: what it shows is what the files hold and what the programs print. Each folder of docs/tutorial and of
docs/snippets is a run: entries.txt, rules.txt, input.txt, perhaps cr.txt (co-occurrence entries), and expected.txt, the
output at level 0 without its time lines. In a page of docs/ a comment in front of a code block says whose lines the
block holds, one behind the other:

  <!-- file tutorial/step1/rules.txt -->        the lines of a file
  <!-- run tutorial/step1 -L2 -S1 -->           the output of a folder's run with these switches
  <!-- lab tutorial/step1 explain -s 1 -->      what lexon-lab shows with these words, of that folder

A line "..." in a block stands for any lines that are left out. The dumps of docs/formats.md are those of the files that
the programs write from its texts, w.txt and g.txt.

manual.py PROGRAMS [--update]      --update writes expected.txt anew: read every changed line
"""
import functools
import pathlib
import re
import shutil
import subprocess
import sys

import _table as table

DOCS = table.ROOT / "docs"
BLOCK = re.compile(r"^<!-- ((?:file|run|lab) .*) -->$\n(?:(?!```).*\n)*```.*\n((?:(?!```).*\n)*)", re.M)


@functools.cache
def source_lines(kind, name, *switches):
    """The lines that a block is to be found in."""
    if kind == "file":
        return table.text(DOCS / name).splitlines()
    with table.folder() as folder:
        target = pathlib.Path(folder)
        words = table.build_case(DOCS / name, target)
        if kind == "run":
            return table.output([*words, "-T20", *switches], target).splitlines()
        shutil.copy(DOCS / name / "input.txt", target)
        pairs = ["-c", "cr.dic"] if (target / "cr.dic").exists() else []
        return table.run("lexon-lab", *switches, "input.txt", "-d", words[0], "-r", words[1], *pairs,
                         folder=target).stdout.splitlines()


def stray_piece(block, source):
    """The first lines of the block that break the order of the source; none if all is as it should be."""
    at = 0
    for piece in re.split(r"^\.\.\.(?:\n|$)", "\n".join(block), flags=re.M):
        lines = piece.splitlines()
        places = [i for i in range(at, len(source) - len(lines) + 1) if source[i:i + len(lines)] == lines]
        if not places:
            return lines
        at = places[0] + len(lines)
    return []


def page(path):
    text = table.text(path)
    for words, block in BLOCK.findall(text):
        lines = block.splitlines()
        table.check(f"{path.name}: a block behind \"{words}\"", bool(lines), True)
        table.check(f"{path.name}: {words}", stray_piece(lines, source_lines(*words.split())), [])
    for image in re.findall(r"\]\(images/([a-z-]+)\.svg\)", text):
        table.check(f"{path.name}: the source of {image}", (DOCS / "diagrams" / f"{image}.dot").exists(), True)


def tutorial_is_whole():
    """A reader who types what the page shows, step by step, has the files of the last step."""
    known = {}
    for words, block in BLOCK.findall(table.text(DOCS / "tutorial.md")):
        known.setdefault(words.removeprefix("file "), set()).update(block.splitlines())
    for file in sorted(DOCS.glob("tutorial/step*/*.txt")):
        if file.name == "expected.txt":
            continue
        step = int(file.parent.name[4:])
        before = DOCS / "tutorial" / f"step{step - 1}" / file.name
        shown = known.get(str(file.relative_to(DOCS)), set())
        typed = shown | set(table.text(before).splitlines() if before.exists() else [])
        missing = [line for line in table.text(file).splitlines() if line and line not in typed]
        table.check(f"the tutorial shows {file.parent.name}/{file.name}", missing, [])


def formats_are_as_shown():
    blocks = dict(re.findall(r"^```(\w+\.\w+)\n(.*?)^```", table.text(DOCS / "formats.md"), re.M | re.S))
    with table.folder() as name:
        target = pathlib.Path(name)
        for file, text in (("w.txt", blocks["w.txt"]), ("g.txt", blocks["g.txt"]), ("none", "")):
            (target / file).write_text(text)
        table.run("lexon-dict", "build", "w.txt", "w.dic", folder=target)
        table.run("lexon", "w.dic", "g.txt", "none", "out", "-R", "--quiet", folder=target)
        for file in ("w.dic", "w.idx", "g.rul", "g.mtx"):
            dump = subprocess.run(["od", "-A", "x", "-t", "x1z", target / file], capture_output=True, text=True).stdout
            table.check(f"{file} as formats.md shows it", dump, blocks[file])


def main():
    for path in sorted(DOCS.glob("*.md")):
        page(path)
    for source in sorted(path.parent for path in [*DOCS.glob("snippets/*/input.txt"), *DOCS.glob("tutorial/*/input.txt")]):
        name = str(source.relative_to(DOCS))
        found = "".join(line + "\n" for line in source_lines("run", name, "-L0", "-N0"))
        if "--update" in sys.argv:
            (source / "expected.txt").write_text(found)
        table.check(name, found, table.text(source / "expected.txt"))
    tutorial_is_whole()
    examples = table.ROOT / "examples"
    sentences = {line for folder in ("english", "stories/english", "stories/german", "turkish")
                 for line in table.text(examples / folder / "expected.txt").splitlines()}
    quotes = re.findall(r"\| \*([^*|]+[.?])\*", table.text(DOCS / "examples.md"))
    table.check("examples.md quotes sentences", bool(quotes), True)
    table.check("sentences of examples.md that no example has", [q for q in quotes if q not in sentences], [])
    formats_are_as_shown()
    table.finish()


main()
