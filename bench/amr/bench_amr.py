#!/usr/bin/env python3
"""Measures examples/amr-english on a meaning bank: `make bench-amr DATA="bank.txt ..."`.

    bench_amr.py PROGRAMS DATA ... [--dictionary words.dic | --frames F --forms F --wordnet F] [--every N]
        [--compare OUT]

DATA are PENMAN files with `::snt`, or UMR files with `Words:`. Without a dictionary or sources for one, the entries of
the example are used alone. It tells the share of sentences that were rendered, BLEU-4 (one reference, lower-cased, 13a
tokens) for all, for every Nth sentence (which you set aside) and for the others, and by length of the reference, once with the steps for direct speech and once without, the relations
that went unsaid, the words that no dictionary knew, and the time."""
import argparse
import collections
import json
import math
import pathlib
import re
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLE = HERE.parents[1] / "examples" / "amr-english"


def tokens(text):
    """The tokenization that is called 13a: punctuation apart, but not inside numbers."""
    text = f" {text.lower()} "
    text = re.sub(r"([{-~\[-` -&(-+:-@/])", r" \1 ", text)
    text = re.sub(r"([^0-9])([.,])", r"\1 \2 ", text)
    text = re.sub(r"([.,])([^0-9])", r" \1 \2", text)
    return re.sub(r"([0-9])(-)", r"\1 \2 ", text).split()


def bleu(pairs):
    """BLEU-4 of a corpus of (sentence, reference), 0 to 100; no smoothing."""
    hits, totals, said, wanted = [0] * 4, [0] * 4, 0, 0
    for sentence, reference in pairs:
        sentence, reference = tokens(sentence), tokens(reference)
        said, wanted = said + len(sentence), wanted + len(reference)
        for n in range(4):
            grams = [collections.Counter(zip(*(words[i:] for i in range(n + 1)))) for words in (sentence, reference)]
            totals[n] += sum(grams[0].values())
            hits[n] += sum((grams[0] & grams[1]).values())
    if not said or 0 in hits:
        return 0.0
    brevity = min(0.0, 1 - wanted / said)
    return 100 * math.exp(brevity + sum(math.log(h / t) for h, t in zip(hits, totals)) / 4)


def run(*command):
    return subprocess.run([str(part) for part in command], capture_output=True, text=True, errors="replace")


def sentences(path):
    """The rows of a report by label: text, status, unused_relations, unknown_words, ..."""
    with open(path, encoding="utf-8", errors="replace") as lines:
        return {row["label"][3:].rstrip("]"): row for row in map(json.loads, lines)}


def measure(name, programs, data, dictionary, work, every, flags):
    graphs, gold, report = work / "graphs.txt", work / "gold.txt", work / "report.json"
    imported = run(programs / "lexon-import", *data, "-o", graphs, "--gold", gold, *flags)
    references = dict(re.findall(r"^\[S:(.*)\]\n\\?(.*)$", gold.read_text(encoding="utf-8"), re.M))
    begin = time.time()
    run(programs / "lexon", dictionary, work / "rules.lxr", graphs, work / "out.txt", "-L0", "-N0", "-T10", "--quiet",
        "--report", report)
    took = time.time() - begin
    found = sentences(report)
    pairs = [(found.get(label, {"text": ""})["text"], text, label) for label, text in references.items()]
    rendered = sum(bool(text) for text, _, _ in pairs)
    print(f"{name}: {len(pairs)} sentences, rendered {100 * rendered / max(1, len(pairs)):.1f} %, "
          f"BLEU-4 {bleu([(s, r) for s, r, _ in pairs]):.2f}, {took:.1f} s")
    if every:
        print(f"  every {every}th: BLEU-4 {bleu([(s, r) for s, r, _ in pairs[::every]]):.2f}, the others "
              f"{bleu([(s, r) for i, (s, r, _) in enumerate(pairs) if i % every]):.2f}")
    for low, high in ((1, 10), (11, 20), (21, 40), (41, 1000)):
        part = [(s, r) for s, r, _ in pairs if low <= len(r.split()) <= high]
        if part:
            print(f"  references of {low} to {high} words: {len(part)}, BLEU-4 {bleu(part):.2f}")
    print(f"  relations unsaid: {sum(len(one['unused_relations']) for one in found.values())}")
    unknown = collections.Counter(word for one in found.values() for word in one["unknown_words"])
    print(f"  words without an entry: {sum(unknown.values())}, " + ", ".join(f"{w} {n}" for w, n in unknown.most_common(12)))
    return imported.stderr, pairs


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("programs", type=pathlib.Path)
    parser.add_argument("data", nargs="+")
    parser.add_argument("--dictionary", type=pathlib.Path)
    for source in ("frames", "forms", "wordnet"):
        parser.add_argument("--" + source)
    parser.add_argument("--every", type=int, default=0, metavar="N", help="score every Nth sentence apart")
    parser.add_argument("--compare", type=pathlib.Path, help="write label, reference and sentence there")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="lexon-bench-") as name:
        work = pathlib.Path(name)
        (work / "rules.lxr").write_text((EXAMPLE / "rules.lxr").read_text())
        dictionary = arguments.dictionary
        if dictionary is None:
            dictionary, entries = work / "words.dic", work / "entries.txt"
            own = ["--own", EXAMPLE / "words.txt"]
            if arguments.frames or arguments.forms or arguments.wordnet:
                given = [part for source in ("frames", "forms", "wordnet") if getattr(arguments, source)
                         for part in ("--" + source, getattr(arguments, source))]
                if arguments.frames:
                    senses = work / "senses.txt"
                    run(arguments.programs / "lexon-dict", "import", "--from", "propbank", arguments.frames, "-o", senses)
                    own += ["--senses", senses]
                made = run(sys.executable, HERE / "make_dictionary.py", *own, *given, "-o", entries)
                print(made.stdout.strip() or made.stderr.strip())
            else:
                files = ("words.txt", "entries.txt")
                entries.write_text("".join((EXAMPLE / file).read_text(encoding="utf-8") for file in files))
            run(arguments.programs / "lexon-dict", "build", "--skip-bad", entries, dictionary)
        told, pairs = measure("all steps", arguments.programs, arguments.data, dictionary, work,
                              arguments.every, [])
        measure("without direct speech", arguments.programs, arguments.data, dictionary, work, arguments.every,
                ["--no-quotation"])
        print(told.strip())
        if arguments.compare:
            arguments.compare.write_text("".join(f"{label}\n R {reference}\n O {said}\n" for said, reference, label in pairs))


if __name__ == "__main__":
    main()
