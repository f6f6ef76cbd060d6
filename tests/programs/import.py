#!/usr/bin/env python3
"""lexon-import as a program: its files, statuses and messages, and that lexon reads what it writes."""
import pathlib
import sys

from _table import check, finish, folder, run

BANK = "# ::id a.1\n# ::snt Dogs ran .\n(r / run-02 :ARG0 (d / dog))\n\n# ::id a.2\n(p / possible-01 :ARG1 (g / go-02 :wiki \"x\"))\n"
TREE = "# sent_id = t.1\n# text = Dogs run.\n1\tDogs\tdog\tNOUN\t_\tNumber=Plur\t2\tnsubj\t_\t_\n2\trun\trun\tVERB\t_\t_\t0\troot\t_\t_\n\n"

# name, words of the command line, status, what standard error holds
ROWS = [
    ("no_file_named", [], 2, "no FILE is given"),
    ("no_such_file", ["none.txt"], 2, "none.txt cannot be opened"),
    ("unknown_step", ["bank.txt", "--no-such"], 2, "--no-such"),
    ("bad_roles", ["bank.txt", "--roles", "bad.tsv"], 2, "bad.tsv:1:7: error: a label has at most three letters"),
    ("bad_attributes", ["bank.txt", "--attributes", "bad.tsv"], 2, "bad.tsv:1:1: error: a line is the label"),
    ("attributes_of_nobody", ["bank.txt", "--attributes", "nobody.tsv"], 1, "nobody.tsv: error: no sentence has the label zz"),
    ("mistake_in_the_input", ["broken.txt"], 1, "broken.txt:1:1: error: the graph has 1 parentheses"),
    ("output_cannot_be_made", ["bank.txt", "-o", "no/folder/x"], 2, "no/folder/x cannot be written"),
    ("output_is_an_input", ["bank.txt", "--gold", "./bank.txt"], 2, "./bank.txt is read and cannot be written"),
    ("summary", ["bank.txt"], 0, "2 graphs, 7 triples: 1 as relations, 3 as words, 2 as attributes, 1 left out"),
    ("a_graph_that_says_there_is_none", ["empty.txt"], 0, "1 graphs, 1 triples: 0 as relations, 1 as words, 0 as attributes, 0 left out\n  not written: 1"),
]

with folder() as name:
    here = pathlib.Path(name)
    for file, text in (("bank.txt", BANK), ("tree.conllu", TREE), ("bad.tsv", ":ARG0\ttoolong\n"), ("nobody.tsv", "zz b @pl\n"),
                       ("broken.txt", "(a / b"), ("empty.txt", "(s / umr-empty)\n\n(b / boy)\n"), ("mine.tsv", ":ARG0\tagn\n"), ("entries.txt", '[dog]{} "dog" (N);\n'),
                       ("rules.txt", "R{} {} P1;\n")):
        (here / file).write_text(text)
    for row, words, status, message in ROWS:
        made = run("lexon-import", *words, folder=here)
        check(f"{row}: status", made.returncode, status)
        check(f"{row}: message", message in made.stderr, True)

    made = run("lexon-import", "bank.txt", "tree.conllu", "-q", "--roles", "mine.tsv", "-o", "out.txt", "--gold", "gold.txt",
               "--left-out", "left.txt", folder=here)
    check("two sources: status", (made.returncode, made.stderr), (0, ""))
    check("two sources: gold", (here / "gold.txt").read_text(), "[S:a.1]\nDogs ran .\n\n[S:t.1]\nDogs run.\n\n")
    check("two sources: left out", (here / "left.txt").read_text(), "a.2\tbank.txt:6:35\tg :wiki x\twiki\n")
    graphs = (here / "out.txt").read_text()
    for part in ("agn(run(>02).@entry.@v.@cl, dog)", "go(>02).@entry.@v.@can", "agn(run.@entry.@verb, dog.@noun.@pl)"):
        check(f"two sources: {part}", part in graphs, True)

    run("lexon-dict", "build", "entries.txt", "words.dic", folder=here)
    made = run("lexon", "words.dic", "rules.txt", "out.txt", "said.txt", "-L0", "-N0", "--quiet", folder=here)
    said = (here / "said.txt").read_text()
    check("lexon reads them", (made.returncode, said.count(";;Done!"), "Error" in said), (0, 3, False))

    plain = run("lexon-import", "bank.txt", "-q", "--no-rewriting", folder=here)
    check("the graph as it is", "a1(possible(>01).@entry.@v, go(>02).@v)" in plain.stdout, True)
    steps = run("lexon-import", "--steps", folder=here)
    check("every step has a flag", all(run("lexon-import", line.split()[0], "bank.txt", folder=here).returncode == 0
                                       for line in steps.stdout.splitlines()), True)
finish()
