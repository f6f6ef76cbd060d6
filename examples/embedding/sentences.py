"""sentences.py DICTIONARY RULES [COOCCURRENCE]: renders the graphs on standard input, on all processors."""
import sys

import lexon


def main():
    grammar = lexon.Grammar(*sys.argv[1:])
    lost = 0
    for sentence in grammar.render_all(lexon.split(sys.stdin.read()), time_limit=10):
        for message in sentence.messages:
            print(message, file=sys.stderr)
        print(sentence.label, sentence.status, sentence.text, sep="\t")
        lost += sentence.status != "done"
    return 3 if lost else 0


if __name__ == "__main__":
    sys.exit(main())
