#!/usr/bin/env python3
"""The console program from outside: messages, exit statuses, what becomes of the compiled rule files, and runs that do
not come to their own end. console.py PROGRAMS"""
import os
import pathlib
import re
import shutil
import signal
import subprocess
import time

import _table as table

ENTRIES = '[dog]{} "dog" (N,OK);\n[cat]{} "cat" (N,OK);\n'
RULES = "R{SHEAD:::}{:::}P1;\nR{N:::}{STAIL:::}P1;\n"


def word(name, number):
    return f"[S:{number}]\n[W]\n{name}.@entry\n[/W]\n[/S]\n"


INPUT = word("dog", 1) + word("cat", 2)
DOG, CAT = "[S:1]\ndog\n;;Done!\n", "[S:2]\ncat\n;;Done!\n"
MISSING = "Can't Open {} : {{}}!"
RULE_FILE, DICTIONARY = MISSING.format("Generation Rule"), MISSING.format("Dictionary File")

# What is run: a name, the texts that differ from the above, switches, exit status, output.
RUNS = [
    ("all sentences", {}, "-N0", 0, DOG + CAT),
    ("from the second on", {}, "-S2 -N5", 0, CAT),
    ("from the second to the end", {}, "-S2 -N0", 0, CAT),
    ("behind the last", {}, "-S3", 0, ""),
    ("the first alone", {}, "-N1", 0, DOG),
    ("rules alone", {}, "-Rules", 0, ""),
    ("skipping counts other end marks than reading", {"input.txt": "[S:1]\n[/T]\n [/S]\n" + word("cat", 2)}, "-S2", 3,
     ";;SEM is Empty\n;;Failed!\n"),
    ("a failed sentence and the next", {"input.txt": "[S:0]\n[/S]\n" + INPUT}, "-N2", 3, "[S:0]\n;;SEM is Empty\n;;Failed!\n" + DOG),
    ("a banner goes on where an opening line without an end stops",
     {"input.txt": "{sem\n" + "a(dog, cat)\n" * 129 + "[S" + "k" * 1021 + "\n[/S]\n" + INPUT}, "-N2", 3,
     ";;the graph has more than 128 relations\n[S" + "k" * 1021 + ";;Failed!\n" + DOG),
    ("no rules: no sentence is read", {"rules.txt": "; nothing\n"}, "-N0", 3, ";;Failed!\n"),
    ("no rules: no run is endless", {"rules.txt": "; nothing\n"}, "-N3", 3, ";;Failed!\n" * 3),
    ("a bad rule, and the others stand", {"rules.txt": "Z{}{}P1;\n" + RULES}, "", 0, ";;Z{}{}P1;\n;;ERR(0,1) in TYPE\n" + DOG),
    ("two-character line ends", {n: t.replace("\n", "\r\n") for n, t in (("rules.txt", RULES), ("input.txt", INPUT))}, "-N0", 0, DOG + CAT),
    ("an empty compiled file is made anew", {"rules.rul": ""}, "", 0, DOG),
]

# Files of the call that cannot be used, in the order dictionary, rules, input, output, and what is said.
REFUSED = [
    ("", "", "", "folder", MISSING.format("Output File")),
    ("none", "", "", "", DICTIONARY),
    ("folder", "", "", "", DICTIONARY),
    ("no.dic", "", "", "", "CW : No Index in Dictionary File : {}!"),
    ("folder/words.dic", "", "", "", MISSING.format("Dictionary Index File")),
    ("", "", "none", "", MISSING.format("Input File")),
    ("", "none", "", "", RULE_FILE),
    ("", "none.rul", "", "", RULE_FILE),
    ("", "none.mtx", "", "", RULE_FILE),
]

# What is said where a folder stands in the place of a file.
FOLDERS = [
    ("words.idx", "Can't Open Dictionary Index File : "),
    ("rules.txt", "Can't Open Generation Rule : "),
    ("rules.rul", "Can't Open Generation Rule : "),
    ("rules.mtx", "Can't Open Generation Rule : "),
    ("input.txt", "Can't Open Input File : "),
]

# Compiled files by the times of text, rules and matrix (None: missing), and which are made anew.
DATES = [
    ("all current", "rules.txt", (0, 1, 2), ""),
    ("all of one time", "rules.txt", (0, 0, 0), ""),
    ("text newer", "rules.txt", (2, 1, 3), "rul mtx"),
    ("rules missing", "rules.txt", (0, None, 2), "rul mtx"),
    ("matrix older", "rules.txt", (0, 2, 1), "mtx"),
    ("matrix missing", "rules.txt", (0, 1, None), "mtx"),
    ("compiled rules named", "rules.rul", (9, 1, 2), ""),
    ("compiled rules named, matrix older", "rules.rul", (9, 2, 1), "mtx"),
    ("compiled rules named, matrix missing", "rules.rul", (9, 2, None), "mtx"),
]


class Case:
    """A folder with a dictionary, rules and two sentences."""

    def __init__(self, folder, changed=(), entries=ENTRIES):
        self.at = pathlib.Path(folder)
        for name, text in {"entries.txt": entries, "rules.txt": RULES, "input.txt": INPUT, **dict(changed)}.items():
            (self.at / name).write_bytes(text.encode())
        table.run("lexon-dict", "build", "entries.txt", "words.dic", folder=self.at)

    def words(self, switches="", changed=()):
        usual = ["words.dic", "rules.txt", "input.txt", "output.txt"]
        changed = [*changed, *[""] * 4]
        return [self.at / (new or old) for new, old in zip(changed, usual)] + ["--quiet", "-L0", *switches.split()]

    def run(self, switches="", changed=()):
        return table.run("lexon", *self.words(switches, changed), folder=self.at)

    def start(self, switches=""):
        return subprocess.Popen([table.PROGRAMS / "lexon", *self.words(switches)], cwd=self.at, stderr=subprocess.DEVNULL,
                                start_new_session=True)

    def output(self):
        return table.TIME_LINE.sub("", table.text(self.at / "output.txt"))

    def bytes(self, name):
        return (self.at / name).read_bytes()


def cases():
    for name, changed, switches, status, output in RUNS:
        with table.folder() as folder:
            case = Case(folder, changed)
            made = case.run(switches)
            table.check(name, (made.returncode, case.output()), (status, output))


def refusals():
    with table.folder() as folder:
        case = Case(folder, {"no.dic": "not a dictionary"})
        (case.at / "folder").mkdir()
        shutil.copy(case.at / "words.dic", case.at / "folder")
        for *changed, message in REFUSED:
            path = str(case.at / next(filter(None, changed)))
            made = case.run("", changed)
            table.check(f"no {changed}", (made.returncode, made.stderr.startswith(message.format(path))), (1, True))
        case.run("-R")
        for name, message in FOLDERS:
            (case.at / name).rename(case.at / "kept")
            (case.at / name).mkdir()
            made = case.run()
            table.check(f"a folder {name}", (made.returncode, made.stderr.startswith(message)), (1, True))
            (case.at / name).rmdir()
            (case.at / "kept").rename(case.at / name)
        (case.at / "rules.rul").unlink()
        shutil.copy(case.at / "rules.txt", case.at / "rules.mtx")
        table.check("a matrix is named", case.run("", ["", "rules.mtx"]).stderr,
                    'Please assign rule file with extension ".rul" or ".txt"\n')
        table.check("the output is emptied first", case.output(), "")
        for switches in ("-X", "fifth", "--other", "^"):
            (case.at / "output.txt").unlink(missing_ok=True)
            made = case.run(switches)
            table.check(switches, (made.returncode, "usage: lexon" in made.stderr, (case.at / "output.txt").exists()), (2, True, False))
        for words, status, front in (([], 2, ""), (["--help"], 0, "usage"), (["--version"], 0, "lexon ")):
            made = table.run("lexon", *words)
            table.check(words, (made.returncode, made.stdout[:len(front)]), (status, front))
        question = f"Can't Open Cooccurrence Dictionary File : {case.at}/none.dic! continue?"
        made = case.run("-Cnone.dic")
        table.check("no co-occurrence dictionary", (made.returncode, made.stderr[:len(question)], case.output()), (1, question, ""))
        made = case.run("-Cnone.dic --yes")
        table.check("none, and it goes on", (made.returncode, case.output()), (0, DOG))
        (case.at / "words.idx.stamp").unlink()
        os.truncate(case.at / "words.dic", 4096)
        table.check("a damaged dictionary", (case.run("-N0").stderr, ";;Failed!" in case.output()),
                    (f"lexon: {case.at}/words.dic: damaged at offset 8192; damaged blocks were met 2 times in all; "
                     '"lexon-dict check" tells more\n', True))
        # A failure on the last line alone fails the conversion: the compiled files stay empty and nothing matches.
        case = Case(folder, {"rules.txt": RULES + "R{a)}{}P1;\n"})
        made = case.run()
        table.check("a failure on the last line", (made.returncode, case.bytes("rules.rul"), case.bytes("rules.mtx"),
                    case.output().endswith(";;return code -2\n;;Failed!\n")), (3, b"", b"", True))


def dates():
    old = 1_000_000_000
    with table.folder() as folder:
        case = Case(folder)
        case.run("-R")
        whole = {name: case.bytes(f"rules.{name}") for name in ("txt", "rul", "mtx")}
        for name, rule_file, times, anew in DATES:
            for (kind, content), seconds in zip(whole.items(), times):
                path = case.at / f"rules.{kind}"
                path.unlink(missing_ok=True)
                if seconds is not None:
                    path.write_bytes(content)
                    os.utime(path, (old + seconds, old + seconds))
            case.run("", ["", rule_file])
            made = [kind for kind in ("rul", "mtx") if (case.at / f"rules.{kind}").stat().st_mtime > old + 100]
            same = [case.bytes(f"rules.{kind}") == whole[kind] for kind in ("rul", "mtx")]
            table.check(name, (" ".join(made), same, case.output()), (anew, [True, True], DOG))


def endless_case(folder):
    texts = {"rules.txt": table.ENDLESS_RULES, "input.txt": word("dog", 1) + table.ENDLESS.format(2) + word("cat", 3)}
    return Case(folder, texts, ENTRIES + table.ENDLESS_ENTRIES)


def wait_for(happens, process):
    while not happens() and process.poll() is None:
        time.sleep(0.001)


def stops():
    with table.folder() as folder:
        case = endless_case(folder)
        made = case.run("-N0 -T1")
        table.check("a sentence over its time", (made.returncode, case.output()), (3, DOG + "[S:2]\n;;Time Over!\n" + CAT.replace("2", "3")))
        for number in (signal.SIGINT, signal.SIGTERM):
            (case.at / "output.txt").write_text("")
            process = case.start("-N0")
            wait_for(lambda: "[S:2]" in case.output(), process)
            process.send_signal(number)
            table.check(f"cancelled by {number.name}", (process.wait(), case.output()), (130, DOG + "[S:2]\n;;Cancelled!\n"))
        table.check("rules that were whole stay", (case.at / "rules.rul").exists(), True)


cases()
refusals()
dates()
stops()
table.finish()
