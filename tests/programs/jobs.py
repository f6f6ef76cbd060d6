#!/usr/bin/env python3
"""Sentences on several threads: whatever their number, the output, the status and what is told are those of one.
jobs.py PROGRAMS"""
import pathlib
import re
import signal
import subprocess
import time

import _table as table

CASES = [table.ROOT / "examples" / "english", *sorted((table.ROOT / "tests" / "golden").iterdir())]
FIGURES = re.compile(r"; [0-9.]+ s$", re.M)

# A choice among four words with ten alternatives each, of which only the last is right: `@N4` asks for thousands of
# steps, `@N0` for none.
ENTRIES = '[a ]{} "a" (W) <E,0,1>;\n' + "".join(
    f'[{word}{i} ]{{}} "{word}" (W{",OK" if i == 9 else ""}) <E,0,{10 - i}>;\n' for word in "bcde" for i in range(10))
RULES = """R{SHEAD}{W}P20;
:{W}"W::nxt:"P30;
R{W}{W,^@LAST}P20;
R{W}{@N0}P20;
R{OK}{@N2,OK}P20;
R(OK)(OK){OK}{@N4,OK}P20;
R{@LAST}{STAIL}P10;
"""


def sentence(number, right, last="[/S]\n"):
    return f"[S:{number}]\nnxt(a.@entry, b)\nnxt(b, c)\nnxt(c, d)\nnxt(d, e.@LAST.@N{right})\n{last}"


SHORT = [sentence(i, 0) for i in range(1, 401)]
# A text longer than what is kept of one, hidden by a tag up to the sentence's end.
LONG = "[S:9]\n{hidden}\n" + ("x" * 1500 + "\n") * 1000 + "{/hidden}\n" + sentence(9, 2)[6:]

# What keeps some threads waiting for others: a name, the text, switches.
SLOW = [
    ("a slow sentence in front", [sentence(0, 4), *SHORT], "-N0"),
    ("a slow sentence in front of a bad line", [sentence(0, 4), "[S]\nnxt(\n[/S]\n", SHORT[0]], "-N0"),
    ("slow ones among short ones, with their trace", [sentence(i, 2 if i % 7 == 3 else 0) for i in range(60)], "-N0 -L4"),
    ("a long text", [*SHORT[:3], LONG, "[S]\nnxt(\n[/S]\n", *SHORT[:3]], "-N0"),
    ("counted from below, with a time limit", SHORT[:9], "-S-1 -N5 -T9"),
]


class Case:
    def __init__(self, folder, texts):
        self.at = pathlib.Path(folder)
        for name, text in texts.items():
            (self.at / name).write_bytes(text.encode())
        table.run("lexon-dict", "build", "entries.txt", "entries.dic", folder=self.at)
        self.words = ["entries.dic", "rules.txt", "input.txt", "out.txt", "-L0"]

    def start(self, switches):
        return subprocess.Popen([table.PROGRAMS / "lexon", *self.words, *switches.split()], cwd=self.at,
                                stderr=subprocess.PIPE, encoding="utf-8", start_new_session=True)

    def output(self):
        return table.TIME_LINE.sub("", table.text(self.at / "out.txt"))


def told(words, target):
    """What a run with compiled rules writes, ends with and says."""
    made = table.run("lexon", *words, folder=target)
    output = table.TIME_LINE.sub("", table.text(target / "out.txt"))
    return f"{output}\nstatus {made.returncode}\n{FIGURES.sub('', made.stderr)}"


def compare(name, words, target, numbers=(2, 4)):
    """With compiled rules, so that no run tells of them."""
    if not (target / "rules.rul").exists():
        table.run("lexon", *words, "-R", folder=target)
    expected = told(words, target)
    for jobs in numbers:
        table.check(f"{name} on {jobs} threads", told([*words, f"-j{jobs}"], target), expected)


def cases():
    for source in CASES:
        with table.folder() as name:
            target = pathlib.Path(name)
            words = [w for w in table.build_case(source, target) if w != "--quiet"]
            compare(source.name, [*words, "-N0", "-L4"], target, (4,))


def texts():
    with table.folder() as name:
        case = Case(name, {"entries.txt": ENTRIES, "rules.txt": RULES})
        for texts, numbers in ((SLOW, (2, 4)), (table.hard_texts(SHORT), (4,))):
            for title, sentences, switches in texts:
                (case.at / "input.txt").write_bytes("".join(sentences).encode("utf-8", "surrogateescape"))
                compare(title, [*case.words, *switches.split()], case.at, numbers)


def leftovers():
    """A forced target that one sentence leaves, and the next ones carry on; only one without memory is free of it."""
    source = table.ROOT / "tests" / "golden" / "search-forced"
    with table.folder() as name:
        target = pathlib.Path(name)
        words = [w for w in table.build_case(source, target) if w != "--quiet"]
        words[2] = "many.txt"
        # Of what threads tell: lines that are left out, and blocks of the dictionary that cannot be read.
        (target / "more.txt").write_text(table.text(source / "entries.txt") + "".join(
            f'[z{i}]{{}} "z{i}" (N,{"x" * 900}) <E,0,1>;\n' for i in range(9)))
        table.run("lexon-dict", "build", "more.txt", "entries.dic", folder=target)
        dictionary = bytearray((target / "entries.dic").read_bytes())
        at = dictionary.find(b"z8") // 4096 * 4096
        dictionary[at:at + 4096] = bytes(4096)
        (target / "entries.dic").write_bytes(dictionary)
        (target / "entries.idx.stamp").unlink()
        told_of = ["[S]\npat(\n[/S]\n", "[S]\npat(see.@entry, z8)\n[/S]\n"]
        parts = ["[S" + part for part in table.text(source / "input.txt").split("[S")[1:]]
        for title, sentences in (("left by every third", table.targets_left(parts)),
                                 ("left for good, and bad lines", parts + told_of[:1]),
                                 ("left for good, and damage", parts + told_of[1:])):
            (target / "many.txt").write_text("".join(sentences * 40))
            for level in (0, 3):
                compare(f"forced targets {title}, level {level}", [*words, "-N0", f"-L{level}", "--blocks", "4"], target)


def ends():
    with table.folder() as name:
        case = Case(name, {"entries.txt": ENTRIES, "rules.txt": RULES.replace("R{@LAST}{STAIL}P10;\n", "") + "".join(
            f"R{{W}}{{@X,NONE{i}}}P5;\n" for i in range(3))})
        endless = "[S:1]\n" + "".join(f"nxt({a}:{i}{'.@entry' if i == 0 else ''}, {b}:{i + 1})\n" for i, (a, b) in
                                      enumerate(zip("abcde" * 5, "bcdea" * 5))) + "[/S]\n"
        (case.at / "input.txt").write_text(endless * 3)
        for jobs in (1, 2):
            process = case.start(f"-N0 -T1 -j{jobs}")
            error = process.communicate()[1]
            table.check(f"time over on {jobs}", (process.returncode, case.output(), FIGURES.sub("", error)),
                        (3, "[S:1]\n;;Time Over!\n" * 3, "0 done, 3 over time\n"))
            (case.at / "out.txt").write_text("")
            process = case.start(f"-N0 -j{jobs}")
            while "[S:1]" not in case.output():
                time.sleep(0.01)
            process.send_signal(signal.SIGINT)
            error = process.communicate()[1]
            table.check(f"cancel on {jobs}", (process.returncode, case.output(), FIGURES.sub("", error)),
                        (130, "[S:1]\n;;Cancelled!\n", "0 done, 1 cancelled\n"))


cases()
texts()
leftovers()
ends()
table.finish()
