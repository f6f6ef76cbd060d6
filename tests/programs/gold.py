#!/usr/bin/env python3
"""lexon-lab test: files of expected sentences in both forms, what differs, what changed, and what is written back. A row:
the expected texts, further words, what is told on standard output, the status, and the expected texts afterwards."""
import pathlib
import xml.etree.ElementTree as xml

import _table as table

CASE = table.ROOT / "docs" / "tutorial" / "step5"
S1, S2, S3 = "the dog sleeps.", "the dogs sleep.", "cats see a dog."
PLAIN = f"{S1}\n{S2}\n{S3}\n"
LABELS = f"; by label\n[S:1]\n{S1}\n\n[S:2]\nthe dogs doze.\n{S2}\n[S:3]\n{S3}\n"
UPDATE = ["--update"]

ROWS = [
    ("plain, as it should be", PLAIN, [], "", 0, None),
    ("by label, several texts", LABELS, ["-j3"], "", 0, None),
    ("one of several, plain", PLAIN.replace(S2, "the dogs doze.\t" + S2), [], "", 0, None),
    ("a limit of steps", PLAIN, ["--steps", "1"], ..., 1, None),
    ("a selection by label", LABELS, ["-s2"], "", 0, None),
    ("a word differs", PLAIN.replace("sleeps", "slept"), [],
     "input.txt:1: S:1: differs\n  expected: the dog slept.\n  found:    the dog [-slept.-] {+sleeps.+}\n", 1, None),
    ("words more and less", PLAIN.replace(S3, "cats now see dogs."), [],
     "input.txt:9: S:3: differs\n  expected: cats now see dogs.\n"
     "  found:    cats [-now-] see [-dogs.-] {+a dog.+}\n", 1, None),
    ("a line is missing", f"{S1}\n{S2}\n", [],
     f"input.txt:9: S:3: nothing is expected\n  found:    {S3}\n", 1, None),
    ("a line too many", PLAIN + "x\n", [], "gold.txt:4: no graph for this line\n", 1, None),
    ("a label too many", LABELS + "[S:4]\nx\n", [], "gold.txt:10: no graph for [S:4]\n", 1, None),
    ("expected to fail", LABELS.replace(f"[S:1]\n{S1}\n", "[S:1]\n"), [],
     f"input.txt:1: S:1: was expected to fail\n  found:    {S1}\n", 1, None),
    ("updated, plain, as Windows writes it", "\ufeff" + PLAIN.replace("sleeps", "slept").replace("\n", "\r\n"), UPDATE, ..., 1,
     "\ufeff" + PLAIN.replace("\n", "\r\n")),
    ("updated among several", LABELS.replace(S2, "x"), UPDATE, ..., 1,
     LABELS.replace("the dogs doze.", f"{S2}\nthe dogs doze.").replace(f"doze.\n{S2}", "doze.\nx")),
    ("updated with a new one", LABELS.replace(f"[S:3]\n{S3}\n", ""), UPDATE, ..., 1, LABELS),
    ("nothing to update", LABELS, UPDATE, "", 0, LABELS),
    ("against itself", PLAIN, ["--against", "rules.txt"], "", 0, None),
    ("against other rules", PLAIN, ["--against", "older.txt"],
     "input.txt:9: S:3: mended\n  before: some cats see a dog.\n  now:    [-some-] cats see a dog.\n", 1, None),
    ("against another dictionary", PLAIN, ["--against", "older.dic"],
     "input.txt:1: S:1: mended\n  before: the dog snores.\n  now:    the dog [-snores.-] {+sleeps.+}\n", 1, None),
    ("against a saved run", PLAIN, ["--against", "saved.txt"],
     "input.txt:5: S:2: mended\n  before: the dogs slept.\n  now:    the dogs [-slept.-] {+sleep.+}\n", 1, None),
]


def main():
    with table.folder() as name:
        target = pathlib.Path(name)
        table.build_case(CASE, target)
        rules, entries = table.text(target / "rules.txt"), table.text(CASE / "entries.txt")
        (target / "input.txt").write_bytes((CASE / "input.txt").read_bytes())
        (target / "older.txt").write_text(rules.replace(':{} {N,PL,@indef', ':"[some],DET" {N,PL,@indef'))
        (target / "older.txt.entries").write_text(entries.replace("[sleeps]", "[snores]"))
        table.run("lexon-dict", "build", "older.txt.entries", "older.dic", folder=target)
        (target / "saved.txt").write_text(f"[S:1]\n{S1}\n;;Done!\n[S:2]\nthe dogs slept.\n;;Done!\n[S:3]\n{S3}\n")
        for what, gold, words, told, status, after in ROWS:
            (target / "gold.txt").write_bytes(gold.encode())
            made = table.run("lexon-lab", "test", "gold.txt", "input.txt", "-d", "entries.dic", "-r", "rules.txt",
                             *words, folder=target)
            if told is not ...:
                table.check(what, made.stdout, told)
            table.check(f"{what}: status", made.returncode, status)
            if after is not None:
                table.check(f"{what}: afterwards", table.text(target / "gold.txt"), after)
        (target / "gold.txt").write_text(PLAIN.replace("sleeps", "<slept>"))
        table.run("lexon-lab", "test", "gold.txt", "input.txt", "-d", "entries.dic", "-r", "rules.txt", "--junit",
                  "out.xml", "--save", "run.txt", folder=target)
        suite = xml.parse(target / "out.xml").getroot()[0]
        table.check("JUnit counts", (suite.get("tests"), suite.get("failures")), ("3", "1"))
        table.check("JUnit shows the text", "<slept>" in suite[0][0].text, True)
        table.check("a saved run", table.text(target / "run.txt"), f"[S:1]\n{S1}\n[S:2]\n{S2}\n[S:3]\n{S3}\n")
    table.finish()


main()
