"""A list of graphs in, a table of sentences out. The cells (`# %%`) run one by one in editors that know them.

table.py DICTIONARY RULES
"""

# %% The grammar: a dictionary made by `lexon-dict build`, and rules
import sys

import lexon

grammar = lexon.Grammar(*sys.argv[1:])

# %% The graphs, made by a program: who sleeps, and when
WHO = {"dog": "dog(>animal).@def", "cats": "cat(>animal).@pl"}
WHEN = {"now": "", "before": ".@past"}
graphs = [
    f"[S:{who} {when}]\nagn(sleep(>rest).@entry{mark}, {noun})\n[/S]\n"
    for who, noun in WHO.items()
    for when, mark in WHEN.items()
]

# %% The table
print(f"{'graph':<16}{'status':<8}{'steps':>6}  sentence")
for sentence in grammar.render_all(graphs):
    print(f"{sentence.label:<16}{sentence.status:<8}{sentence.steps:>6}  {sentence.text}")
    for message in sentence.messages:
        print(f"{'':<16}{message}")
