#!/usr/bin/env python3
"""Every limit that docs/limits.md names, at its value and one above: what is printed there must not stand in the first
output and must stand in the second. limits.py PROGRAMS"""
import pathlib

import _table as table

ENTRIES = '[dog]{} "dog" (N);\n[cat]{} "cat" (N);\n'
RULES = "R{SHEAD:::}{:::}P1;\nR{:::}{STAIL:::}P1;\n"
CHAIN = 'R{SHEAD:::}{:::}P1;\n:{:::}"::nxt:"P9;\nR{:::}{^STAIL:::}P5;\nR{:::}{STAIL:::}P1;\n'
DIGITS = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
PAGE = table.text(table.ROOT / "docs" / "limits.md")


def graph(text):
    return {"input": f"[S]\n{text}\n[/S]\n"}


def entry(line):
    return {"entries": f"{ENTRIES}{line}\n"}


def each(count, text):
    return "\n".join(text.format(n) for n in range(count))


def long_sentence(length):
    """A sentence of one word of `length` characters, of pieces."""
    words = [f'"{chr(97 + i)}{"x" * (min(240, length - at) - 1)}"' for i, at in enumerate(range(0, length, 240))]
    pairs = zip([words[0] + ".@entry", *words[1:]], [*words[1:], '""'])
    return {**graph("\n".join(f"nxt({a},{b})" for a, b in pairs)), "rules": CHAIN}


def word_data(data):
    return {"entries": f'[dog]{{}} "dog" (N) {data};\n', "switches": ["-L4"]}


# What has the limit, its number, what is run with n of it, and what is printed one above.
LIMITS = [
    ("words of a sentence", 512, lambda n: graph("[W]\na.@entry\n" + each(n - 1, "w{}") + "\n[/W]"), ";;the graph has more than 512 words"),
    ("relations", 128, lambda n: graph(each(n, "nxt(a.@entry,b{})")), ";;the graph has more than 128 relations"),
    ("concept word", 259, lambda n: graph(f"nxt({'x' * n}.@entry,b)"), ";;the graph has a word of more than 259 characters"),
    ("attributes in a scope", 1024, lambda n: graph(f"[W]\na.@entry.@{'x' * 900}\na.@{'x' * (n - 910)}\n[/W]\nr(a,b)"),
     ";;the graph has a word with more than 1024 characters of attributes"),
    ("graph line", 1023, lambda n: graph(f"nxt(a.@entry,{' ' * (n - 16)}b)x\nr(a,b)"), ";;Syntactic Error"),
    ("relation label", 5, lambda n: graph("x" * n + "(a.@entry,b)"), ";;Rel is too long"),
    ("block tag", 9, lambda n: graph(f"{{{'x' * (n - 1)}a}}\n{{/{'x' * (n - 1)}b}}\nnxt(a.@entry,b)"), ";;Done!"),
    ("number of a scope", 99, lambda n: {**graph(f"nxt(a.@entry,:{DIGITS[n // 36]}{DIGITS[n % 36]})"), "switches": ["-L1"]}, "ANUM"),
    ("sentence", 1023, long_sentence, ";;the sentence is longer than 1023 characters"),
    ("rule line", 1023, lambda n: {"rules": f"R{{SHEAD:::}}{{:::}}P1;{' ' * (n - 20)}Z\n{RULES}"}, "in TYPE"),
    ("priority of a rule", 255, lambda n: {"rules": f"R{{SHEAD:::}}{{dog_first:::}}P{n};\n{RULES}"}, ";;WARNING(0,1), no priority"),
    ("attribute in a rule", 256, lambda n: {"rules": f"R{{SHEAD:::}}{{{'x' * n}:::}}P1;\nR{{:::}}{{STAIL:::}}P1;\n",
                                            "entries": f'[dog]{{}} "dog" ({"x" * n});\n'}, ";;return code -2"),
    ("surface forms without ^", 1, lambda n: {"rules": f"R{{SHEAD:::}}{{{'[w],' * n}N:::}}P2;\n{RULES}"}, "more than 2 affirmative condtions of HW"),
    ("sections", 4, lambda n: {"rules": f"R{{SHEAD{':' * (n - 1)}}}{{:::}}P1;\n{RULES}"}, "ROLE ERR"),
    ("label in a rule", 3, lambda n: {**graph("x" * n + "(dog.@entry,cat)"), "switches": ["-L2"],
                                      "rules": f':{{N:::}}"N::{"x" * n}:"P9;\nR{{:::}}{{^STAIL:::}}P5;\n{RULES}'}, "dog>xxxx"),
    ("fourth section", 64, lambda n: {"rules": f"R{{SHEAD:::}}{{:::<{'x' * (n - 1)}y}}P1;\nR{{:::}}{{STAIL:::}}P1;\n", "switches": ["-L2"]}, "x" * 64 + "}"),
    ("attributes of a word", 1023, lambda n: {"rules": f"R{{SHEAD:::}}{{N,^{'x' * 200}:{'x' * 200}::}}P9;\n{RULES}", "switches": ["-L3"],
                                              "entries": f'[dog]{{}} "dog" (N,{"x" * (n - 203)});\n'}, ";;attributes will be longer the 1024"),
    ("entry line", 8191, lambda n: entry(f'[w]{{}} "w" (N);{" " * (n - 14)}'), "the line has more than 8191 characters"),
    ("surface form", 1003, lambda n: entry(f'[{"x" * n}]{{}} "w" (N);'), "bytes, and a key of the index at most 1003"),
    ("concept word and a long name", 887, lambda n: {**entry(f'[w]{{}} "{"x" * n}" (N);'), "dictionary": "longername.dic"}, "and a key of the index at most 887"),
    ("attributes of an entry", 1024, lambda n: entry(f'[w]{{}} "w" ({"x" * n});'), "the attribute list is missing, not closed or too long"),
    ("bytes of an entry", 4091, lambda n: entry(f'[w]{{}} {"x" * (n - 25)} "w" (N);'), "bytes, and a block holds 4091"),
    ("frequency", 4294967295, lambda n: word_data(f"<E,{n},7>"), "<E,0,7>"),
    ("priority of a word", 255, lambda n: word_data(f"<E,0,{n}>"), "<E,0,0>"),
    ("name of the index", 128, lambda n: {"dictionary": "x" * (n - 4) + ".dic"}, "the index name is too long"),
    ("numbers behind switches", 2147483647, lambda n: {"switches": ["-L0", f"-N{n}"]}, "is read as"),
    ("path", 260, lambda n: {"rule_path": n}, "Can't Open Generation Rule : !"),
]


def printed(subject):
    with table.folder() as name:
        folder = pathlib.Path(name).resolve()
        length = subject.get("rule_path", 0)
        rules = folder / ("x" * (length - len(str(folder)) - 5) + ".txt" if length else "rules.txt")
        (folder / "entries.txt").write_text(subject.get("entries", ENTRIES))
        rules.write_text(subject.get("rules", RULES))
        (folder / "input.txt").write_text(subject.get("input", graph("[W]\ndog.@entry\n[/W]")["input"]))
        dictionary = subject.get("dictionary", "words.dic")
        built = table.run("lexon-dict", "build", "entries.txt", dictionary, folder=folder)
        made = table.run("lexon", dictionary, rules, "input.txt", "out.txt", "--quiet", "-T5", *subject.get("switches", ["-L0"]), folder=folder)
        out = folder / "out.txt"
        return built.stderr + made.stderr + (table.text(out) if out.exists() else "")


for what, limit, subject, beyond in LIMITS:
    table.check(f"{what}: the page names {limit}", str(limit) in PAGE, True)
    table.check(f"{what}: {limit}", beyond in printed(subject(limit)), False)
    table.check(f"{what}: {limit + 1}", beyond in printed(subject(limit + 1)), True)
shown = printed({"entries": each(101, "bad")})
table.check("bad lines that a build shows", ("entries.txt:100:" in shown, "entries.txt:101:" in shown), (True, False))
table.finish()
