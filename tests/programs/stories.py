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


def rendered(words, graphs, target):
    """What the sentences of `graphs` read like: pairs of a label and a text."""
    words[2] = graphs
    return re.findall(r"^(\[S.*)\n([^;\n].*)$", table.output([*words, "-N0", "-L0", "-T30", "-j2"], target), re.M)


def language(source, graphs):
    name = source.relative_to(EXAMPLES)
    with table.folder() as folder:
        target = pathlib.Path(folder)
        words = table.build_case(source, target)
        expected = table.text(source / "expected.txt").splitlines()
        table.check(f"{name} reads as written", [text for _, text in rendered(words, graphs, target)], expected)
        if source.parent != STORIES:
            return
        exceptions = source / "order.txt"
        lines = table.text(exceptions).splitlines() if exceptions.exists() else []
        left_out = {f"[S:{line.split()[0].rstrip(':')}]" for line in lines if line and line[0] != ";"}
        wanted = {label: text for label, text in zip(map(label_of, GRAPHS), expected, strict=True) if label not in left_out}
        (target / "shuffled.txt").write_text(shuffled(1, left_out))
        table.check(f"{name} in another order", dict(rendered(words, "shuffled.txt", target)), wanted)


def main():
    for rules in sorted(EXAMPLES.rglob("rules.txt")):
        if not (rules.parent / "expected.txt").exists():
            continue
        own = rules.parent / "input.txt"
        language(rules.parent, own if own.exists() else STORIES / "input.txt")
    table.finish()


main()
