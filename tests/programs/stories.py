#!/usr/bin/env python3
"""The stories: one file of graphs, rendered by every language of examples/stories (a folder with rules.txt). A sentence
must come out as written, wherever it stands in the file and in whatever order its relations stand. What a language
cannot hold to that is named in its folder, in order.txt: the number of the sentence, and the reason. The English example
reads as written, too."""
import pathlib
import random
import re

import _table as table

EXAMPLES = table.ROOT / "examples"
STORIES = EXAMPLES / "stories"
SENTENCE = re.compile(r"^\[S.*?^\[/S[^\n]*\n", re.M | re.S)
GRAPHS = SENTENCE.findall(re.sub(r"^(;.*)?\n", "", table.text(STORIES / "input.txt"), flags=re.M))


def number_of(tag):
    return int(re.search(r":\s*(\d+)", tag)[1])


def shuffled(seed):
    """All sentences in another order, and their relations too."""
    chance = random.Random(seed)
    sentences = [graph.splitlines() for graph in GRAPHS]
    chance.shuffle(sentences)
    return "\n".join("\n".join([first, *chance.sample(middle, len(middle)), last])
                     for first, *middle, last in sentences) + "\n"


def sentences_of(output):
    """The sentences by their numbers. A message stays in place of its sentence, so that a failure shows what it was."""
    pieces = re.findall(r"^(\[S:.*)\n((?:(?!\[S:).*\n)*)", output, re.M)
    return {number_of(tag): text.replace(";;Done!\n", "").rstrip("\n") for tag, text in pieces}


def language(source):
    with table.folder() as name:
        target = pathlib.Path(name)
        words = table.build_case(source, target) + ["-L0", "-N0", "-T30"]
        written = table.text(source / "expected.txt").splitlines()
        expected = dict(zip(map(number_of, GRAPHS), written, strict=True))
        words[2] = STORIES / "input.txt"
        table.check(f"{source.name} reads as written", sentences_of(table.output(words, target, (0,))), expected)
        exceptions = source / "order.txt"
        for line in table.text(exceptions).splitlines() if exceptions.exists() else []:
            if line and line[0] != ";":
                del expected[int(line.split()[0].rstrip(":"))]
        (target / "shuffled.txt").write_text(shuffled(1))
        words[2] = "shuffled.txt"
        found = sentences_of(table.output(words, target, (0,)))
        table.check(f"{source.name} in another order", {n: found.get(n) for n in expected}, expected)


def main():
    for source in sorted(EXAMPLES.rglob("rules.lxr")):
        made = table.run("lexon-lab", "expand", source)
        table.check(f"{source}: rules.txt is its expansion", made.stdout, table.text(source.with_suffix(".txt")))
    for source in sorted(path.parent for path in STORIES.glob("*/rules.txt")):
        language(source)
    with table.folder() as name:
        target = pathlib.Path(name)
        words = table.build_case(EXAMPLES / "english", target) + ["-L0", "-N0"]
        lines = table.output(words, target, (0,)).splitlines()
        sentences = "".join(line + "\n" for line in lines if not line.startswith((";;", "[S")))
        table.check("the English example", sentences, table.text(EXAMPLES / "english" / "expected.txt"))
    table.finish()


main()
