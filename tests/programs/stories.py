#!/usr/bin/env python3
"""The examples read as written, in every language. The stories have one file of graphs for all (examples/stories): there a
sentence must come out as written wherever it stands in the file and in whatever order its relations stand. What a
language cannot hold to that is named in its folder, in order.txt: the number of the sentence, and the reason."""
import pathlib
import random
import re

import _table as table

EXAMPLES = table.ROOT / "examples"
STORIES = EXAMPLES / "stories"
SENTENCE = re.compile(r"^\[S.*?^\[/S[^\n]*\n", re.M | re.S)
GRAPHS = SENTENCE.findall(re.sub(r"^(;.*)?\n", "", table.text(STORIES / "input.txt"), flags=re.M))


def label_of(graph):
    return graph.partition("\n")[0]


def shuffled(seed, left_out):
    """All sentences in another order, and their relations too."""
    chance = random.Random(seed)
    sentences = [graph.splitlines() for graph in GRAPHS if label_of(graph) not in left_out]
    chance.shuffle(sentences)
    return "\n".join("\n".join([first, *chance.sample(middle, len(middle)), last])
                     for first, *middle, last in sentences) + "\n"


def read_as_expected(what, target, gold, graphs, has_pairs):
    pairs = ["-c", "cr.dic"] if has_pairs else []
    made = table.run("lexon-lab", "test", gold, graphs, "-d", "entries.dic", "-r", "rules.txt", *pairs, "-T30", "-j2",
                     folder=target)
    table.check(what, made.stdout + made.stderr * made.returncode, "")


def language(source, graphs):
    name = source.relative_to(EXAMPLES)
    with table.folder() as folder:
        target = pathlib.Path(folder)
        table.build_case(source, target)
        has_pairs = (target / "cr.dic").exists()
        read_as_expected(f"{name} reads as written", target, source / "expected.txt", graphs, has_pairs)
        if source.parent != STORIES:
            return
        exceptions = source / "order.txt"
        lines = table.text(exceptions).splitlines() if exceptions.exists() else []
        left_out = {f"[S:{line.split()[0].rstrip(':')}]" for line in lines if line and line[0] != ";"}
        expected = dict(zip(map(label_of, GRAPHS), table.text(source / "expected.txt").splitlines(), strict=True))
        gold = "".join(f"{label}\n{text}\n" for label, text in expected.items() if label not in left_out)
        (target / "gold.txt").write_text(gold)
        (target / "shuffled.txt").write_text(shuffled(1, left_out))
        read_as_expected(f"{name} in another order", target, "gold.txt", "shuffled.txt", has_pairs)


def main():
    for source in sorted(EXAMPLES.rglob("rules.lxr")):
        if not source.with_suffix(".txt").exists():
            continue
        made = table.run("lexon-lab", "expand", source)
        table.check(f"{source}: rules.txt is its expansion", made.stdout, table.text(source.with_suffix(".txt")))
    for rules in sorted(EXAMPLES.rglob("rules.txt")):
        if not (rules.parent / "expected.txt").exists():
            continue
        own = rules.parent / "input.txt"
        language(rules.parent, own if own.exists() else STORIES / "input.txt")
    table.finish()


main()
