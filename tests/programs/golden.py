#!/usr/bin/env python3
"""Whole runs: each folder of tests/golden holds entries.txt, rules.txt, input.txt, perhaps cr.txt (co-occurrence
entries) and settings.txt (switches; else -L0 -N0), about.txt (what the case is for) and expected.txt. Each case runs
from the rule text, from its compiled files, and from the rules as they print, unless not_printable.txt says why their
printed form cannot carry them.

expected.txt begins with a checksum of the whole output without its time lines, so every byte counts. Below stand the
lines to read: rules with the lists that they lead to, ";;" lines and sentences. A case whose first line is "full" shows the whole trace.

golden.py PROGRAMS [--update] [--full FOLDER]
  --update  writes each expected.txt anew: read every changed line
  --full    keeps the whole outputs in FOLDER; made with two builds, `diff -r` shows all that has changed
"""
import hashlib
import pathlib
import re
import sys

import _table as table

GOLDEN = table.ROOT / "tests" / "golden"
RULE = re.compile(r"\S.*P\d+;$")
OF_TRACE = re.compile(r"\[.*\]\{.*\} .*;$|=====|--|[<>]{5} |[lr]node >>>>>$")


def shown_lines(output):
    """The lines that a reader follows a run by. A rule and the list that it leads to share a line, and a list that is
    printed again unchanged is left out."""
    shown, last_list, in_graph, before = [], None, False, ""
    for line in output.splitlines():
        bare = line.lstrip("\t")
        is_graph_text = before == "rnode >>>>>" and not bare.startswith("/")
        if bare.startswith("====="):
            in_graph = " SEM " in bare or " WORD LISTS " in bare
        elif in_graph or OF_TRACE.match(bare) or (is_graph_text and not bare.startswith(";;")):
            pass
        elif not (bare.startswith("/") and bare.endswith("/")):
            shown.append(line)
        elif bare != last_list:
            last_list = bare
            if shown and RULE.match(shown[-1].lstrip("\t")):
                shown[-1] += "  " + bare
            else:
                shown.append(line)
        before = bare
    return shown


def as_expected(output, is_full):
    total = hashlib.sha256(output.encode("utf-8", "surrogateescape")).hexdigest()
    lines = output.splitlines() if is_full else shown_lines(output)
    return "\n".join(["full" if is_full else "shown", f"sha256 {total}", *lines, ""])


def from_first_sentence(output):
    return output[max(0, ("\n" + output).find("\n[S")):]


def golden_case(source, update, full):
    with table.folder() as name:
        target = pathlib.Path(name)
        words = table.build_case(source, target)
        settings = source / "settings.txt"
        words += (table.text(settings) if settings.exists() else "-L0 -N0").split()
        output = table.output(words, target)
        path = source / "expected.txt"
        is_full = path.exists() and table.text(path).startswith("full\n")
        found = as_expected(output, is_full)
        if update:
            path.write_bytes(found.encode("utf-8", "surrogateescape"))
        if full:
            (full / f"{source.name}.txt").write_bytes(output.encode("utf-8", "surrogateescape"))
        table.check(source.name, found, table.text(path))
        wanted = from_first_sentence(output)
        table.check(f"{source.name} from compiled files", from_first_sentence(table.output(words, target)), wanted)
        if (source / "not_printable.txt").exists():
            return
        printed = table.run("lexon-print-rules", "rules.txt", "printed.txt", folder=target)
        table.check(f"{source.name}: its rules print", printed.returncode, 0)
        words[1] = "printed.txt"
        table.check(f"{source.name} from printed rules", from_first_sentence(table.output(words, target)), wanted)


def main():
    full = pathlib.Path(sys.argv[sys.argv.index("--full") + 1]).resolve() if "--full" in sys.argv else None
    if full:
        full.mkdir(parents=True, exist_ok=True)
    for source in sorted(GOLDEN.iterdir()):
        golden_case(source, "--update" in sys.argv, full)
    table.finish()


main()
