#!/usr/bin/env python3
"""Grammar sources in the workbench: what `lexon-lab expand` makes of them, and where other commands say that a fault lies.
expand.py PROGRAMS"""
import pathlib

import _table as table

for source in sorted((table.ROOT / "examples").rglob("rules.lxr")):
    if source.with_suffix(".txt").exists():
        made = table.run("lexon-lab", "expand", source)
        table.check(f"{source}: rules.txt is its expansion", made.stdout, table.text(source.with_suffix(".txt")))

with table.folder() as name:
    at = pathlib.Path(name)
    (at / "entries.txt").write_text('[dog]{} "dog" (N);\n')
    table.run("lexon-dict", "build", "entries.txt", "words.dic", folder=at)
    (at / "input.txt").write_text("[S:1]\n[W]\ndog.@entry;\n[/W]\n[/S]\n")
    rules = "R{SHEAD} {}  P1;\nR{N} {STAIL}  P1;\n"
    (at / "more.txt").write_text(rules)
    (at / "g.lxr").write_text('%for x in (a b)\n:{N,%x: ^y} {}  P9;\n%end\n%include "more.txt"\n')
    made = table.run("lexon-lab", "render", "-d", "words.dic", "-r", "g.lxr", "input.txt", folder=at)
    table.check("a fault is named in the source", made.stderr,
                "".join(f"g.lxr:2:9: an action adds (mark) or deletes (-mark): ^ is for conditions (with x={x})\n" for x in "ab"))
    (at / "b.lxr").write_text("%for x in (a)\nR%x\n%end\n%for x in ()\n%end\n")
    warning = "b.lxr:4:1: warning: this loop makes nothing: its list is empty\n  %for x in ()\n  ^\n"
    for words, status, out, error in [
            ("b.lxr", 0, "Ra\n", warning), ("more.txt", 0, rules, ""), ("b.lxr -o r.txt --map r.map", 0, "", warning),
            ("none.lxr", 1, "", "none.lxr: the source cannot be opened: No such file or directory\n"),
            ("b.lxr -o no/r.txt", 1, "", warning + "lexon-lab: no/r.txt: cannot be written: No such file or directory\n")]:
        made = table.run("lexon-lab", "expand", *words.split(), folder=at)
        table.check(f"expand {words}", (made.returncode, made.stdout, made.stderr), (status, out, error))
    table.check("the files", (table.text(at / "r.txt"), table.text(at / "r.map").splitlines()[3:]),
                ("Ra\n", ["end", "loop\t0\tx\ta", "line\t0\t1\t1:2:1 2:2:2="]))
    table.check("--map alone", table.run("lexon-lab", "expand", "b.lxr", "--map", "m", folder=at).returncode, 2)
table.finish()
