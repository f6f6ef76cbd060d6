#!/usr/bin/env python3
"""Grammar sources from outside: what runs make of them. source.py PROGRAMS"""
import os
import pathlib

import _table as table

ENTRIES = '[dog]{} "dog" (N) <E,0,0>;\n'
INPUT = "[S:1]\n[W]\ndog.@entry;\n[/W]\n[/S]\n"
RULES = "R{SHEAD} {}  P1;\nR{N} {STAIL}  P1;\n"
BAD = "%for x in (a b)\n:{N,%x: ^y} {}  P9;\n%end\n"
ACTION = "an action adds (mark) or deletes (-mark): ^ is for conditions"


def noted(line, x, expanded):
    return f"g.lxr:{line}:9: {ACTION} (with x={x}, expanded to g.lxr.txt:{expanded})\n  :{{N,%x: ^y}} {{}}  P9;\n          ^\n"


class Case:
    def __init__(self, folder):
        self.at = pathlib.Path(folder)
        self.write("entries.txt", ENTRIES)
        self.write("input.txt", INPUT)
        table.run("lexon-dict", "build", "entries.txt", "words.dic", folder=self.at)

    def write(self, name, content):
        (self.at / name).write_text(content)

    def names(self):
        return " ".join(sorted(name.name for name in self.at.glob("g.*")))

    def run(self, name, *words):
        """Exit status, standard error, the output without its time line."""
        made = table.run("lexon", "words.dic", name, "input.txt", "out.txt", "-L0", "-Q", *words, folder=self.at)
        return made.returncode, made.stderr.replace(f"{self.at}/", ""), table.TIME_LINE.sub("", table.text(self.at / "out.txt"))


DOG = "[S:1]\ndog\n;;Done!\n"
FILES = "g.lxr g.lxr.map g.lxr.mtx g.lxr.rul g.lxr.rul.stamp g.lxr.txt"
ERRORS = ";;^y} {}  P9;\n;;ERR(7,1) in ACTION in LNODE\n;;^y} {}  P9;\n;;ERR(7,2) in ACTION in LNODE\n"

with table.folder() as name:
    case = Case(name)
    case.write("g.lxr", RULES)
    table.check("no directive: rule text", (case.run("g.lxr"), case.names()), ((0, "", DOG), "g.lxr g.mtx g.rul g.rul.stamp"))
    for path in case.at.glob("g.*"):
        path.unlink()
    case.write("more.txt", RULES)
    case.write("g.lxr", BAD + '%include "more.txt"\n')
    notes = noted(2, "a", 1) + noted(2, "b", 2)
    table.check("refused rules", case.run("g.lxr"), (0, notes, ERRORS + DOG))
    table.check("what is written", (case.names(), table.text(case.at / "g.lxr.txt")),
                (FILES, ":{N,a: ^y} {}  P9;\n:{N,b: ^y} {}  P9;\n" + RULES))
    (case.at / "g.lxr.rul").unlink()
    table.check("compiled again from the expansion that stands", case.run("g.lxr"), (0, notes, ERRORS + DOG))
    refused = "lexon: g.lxr.rul: 2 rules were refused when these were compiled; --rebuild tells them again\n"
    table.check("nothing has changed", case.run("g.lxr"), (0, refused, DOG))
    table.check("--rebuild", case.run("g.lxr", "--rebuild"), (0, notes, ERRORS + DOG))
    case.write("g.lxr", "%; c\n" + BAD + '%include "more.txt"\n')
    before = os.stat(case.at / "g.lxr.txt").st_mtime_ns, os.stat(case.at / "g.lxr.rul").st_mtime_ns
    table.check("a comment is not compiled", case.run("g.lxr"), (0, refused, DOG))
    table.check("and leaves the rules alone", (os.stat(case.at / "g.lxr.txt").st_mtime_ns, os.stat(case.at / "g.lxr.rul").st_mtime_ns), before)
    case.write("more.txt", "R{SHEAD} {}  P1;\nR{N} {STAIL}  P1;\n:{N,^s: [cat],+s} {}  P2;\n")
    table.check("an included file has changed", case.run("g.lxr"), (0, noted(3, "a", 1) + noted(3, "b", 2), ERRORS + DOG.replace("dog", "cat")))
    case.write("g.lxr", "%for\n")
    out = case.run("g.lxr")
    table.check("what cannot be expanded does not run", out, (1, "g.lxr:1:5: the name of a variable is missing here: write %for NAME in LIST\n"
                "  %for\n      ^\ng.lxr:1:1: this %for has no end: write %end behind the last line that belongs to it\n  %for\n  ^\n"
                "g.lxr: cannot be expanded\n", ""))
    for path in case.at.glob("g.lxr.*"):
        path.unlink()
    case.write("g.lxr", '%include "more.txt"\n')
    table.check("--in-memory", (case.run("g.lxr", "--in-memory"), case.names()), ((0, "", DOG.replace("dog", "cat")), "g.lxr"))
    made = table.run("lexon", "words.dic", "g.lxr", "input.txt", "g.lxr.txt", folder=case.at)
    table.check("the output is no file of the source", (made.returncode, "the expanded rules" in made.stderr, case.names()), (1, True, "g.lxr"))
table.finish()
