"""What the tables of programs share: a folder of its own, the programs, and a count of what holds."""
import difflib
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAMS = pathlib.Path(sys.argv[1]).resolve()
TIME_LINE = re.compile(r"^;;Time +[0-9.]+\tSec\n", re.M)
passed = failed = 0


def check(name, found, expected):
    """One fact. What differs is shown, of texts the lines."""
    global passed, failed
    if found == expected:
        passed += 1
        return True
    failed += 1
    print(f"FAILED {name}")
    if isinstance(found, str) and isinstance(expected, str):
        lines = difflib.unified_diff(expected.splitlines(), found.splitlines(), "expected", "found", n=1, lineterm="")
        print("\n".join(list(lines)[:60]))
    else:
        print(f"  expected {expected!r}\n  found    {found!r}")
    return False


def run(program, *words, folder=None):
    path = PROGRAMS / program if "/" not in program else program
    return subprocess.run([path, *map(str, words)], cwd=folder, capture_output=True, stdin=subprocess.DEVNULL,
                          encoding="utf-8", errors="surrogateescape", start_new_session=True)


def folder():
    """A fresh folder, to be used with `with`."""
    return tempfile.TemporaryDirectory(prefix="lexon-test-")


def text(path):
    return path.read_bytes().decode("utf-8", "surrogateescape")


def build_case(source, target):
    """Brings rules and dictionaries of a folder of cases to `target`. The words of a run with them."""
    (target / "rules.txt").write_bytes((source / "rules.txt").read_bytes())
    words = ["entries.dic", "rules.txt", source / "input.txt", "out.txt", "--quiet"]
    for name in ("entries", "cr"):
        if (source / f"{name}.txt").exists():
            built = run("lexon-dict", "build", source / f"{name}.txt", f"{name}.dic", folder=target)
            check(f"{source.name}: {name}.txt builds", built.stderr, "")
            words += ["-Ccr.dic"] if name == "cr" else []
    return words


# A search without end: ten words for every concept of a chain of nine, none of which may end a sentence.
CHAIN = "abcdefghi"
ENDLESS_ENTRIES = "".join(f'[{c}{n}]{{}} "{c}" (N);\n' for c in CHAIN for n in range(10))
ENDLESS_RULES = ':{N:::}"N::nxt:"P9;\nR{:::}{^STAIL:::}P5;\nR{OK:::}{STAIL:::}P1;\n'
ENDLESS = "[S:{}]\n" + "".join(f"nxt({a}{'.@entry' if a == 'a' else ''},{b})\n" for a, b in zip(CHAIN, CHAIN[1:])) + "[/S]\n"


def targets_left(parts):
    """Of the sentences of search-forced, with `--blocks 4`: one that leaves a forced target, one that still looks for it,
    and one that finds no memory, which makes an end of it."""
    hungry = "".join(f"mod(n{i}.@entry.{'x' * 500}, m{i})\n" for i in range(200))
    return [parts[4], parts[5], f"[S:hungry]\n{hungry}[/S]\n"]


def hard_texts(some):
    """Texts whose sentences are hard to part: a name, the pieces, switches. `some`: a list of sentences, ten or more."""
    open_end = some[0].replace("[/S]\n", "")
    return [
        ("plain", some[:30], "-N0"),
        ("fewer than workers", some[:3], "-N0"),
        ("nothing", [], "-N0"),
        ("blanks", ["\n \n"], "-N0"),
        ("no end", [*some[:5], open_end], "-N0"),
        ("text behind the last", [*some[:5], "; text\nnxt(\n"], "-N0"),
        ("text between sentences", ["\ufeff; text\n", *[s + "\u00e9 \udce9 [S stray\n\n {x}\n{/x}\n" for s in some[:9]]], "-N0"),
        ("an open tag", [*some[:5], "{hide}\n", *some[:5]], "-N0"),
        ("tags across ends", ["{note}\n[/S]\n{/note}\n", some[0], "{a}\n{b}\n[/S]\n{//b}\n", *some[:4]], "-N0"),
        ("ends in blocks", ["[S:1]\n[W]\n[/S]\ndog.@entry\n[/W]\n[/S]\n[R]\n[/S]\n[/R]\n", *some[:4]], "-N0"),
        ("an open block", [*some[:5], "[S:6]\n[W]\ndog.@entry\n", *some[:3]], "-N0"),
        ("CR LF", [s.replace("\n", "\r\n") for s in some[:9]] + ["nxt(\r\n"], "-N0"),
        ("ends in long lines", ["x" * 1023 + "[/S]" + "y" * 2000 + "\n", some[0], ";" * 1023 + "[/S]\n", *some[:4]], "-N0"),
        ("an end that is longer than a line", [some[0][:-1], "x" * 2100, "\n[S]\nnxt(\n[/S]\n", some[1]], "-N0"),
        ("a zero", [some[0], ";\0[/S]\n", *some[:4]], "-N0"),
        ("bad lines", ["[S:1]\nagn(dog\n[/S]\n", open_end + "nxt a b\n.x(,)\n[/S]\n", "stray(a, b)\n", *some[:4], "[S]\nq\n[/S]\n"], "-N0"),
        ("from the fourth on", some[:9], "-S4 -N3"),
        ("from the fourth to the end", some[:30], "-S4 -N0"),
        ("more than there are", some[:5], "-S2 -N9"),
        ("behind the last", some[:3], "-S5 -N0"),
        ("skipped by another mark", [some[0].replace("[/S]", "[/T]"), "  [/S]\n", *some[:6]], "-S2 -N0"),
        ("counted from below", some[:9], "-S-1 -N5"),
        ("one alone", some[:3], "-N-3"),
    ]


def output(words, target, statuses=(0, 3)):
    """What a run writes, without its time lines."""
    made = run("lexon", *words, folder=target)
    if made.returncode not in statuses:
        check(f"exit status of {words}", made.returncode, statuses)
        print(made.stderr)
    return TIME_LINE.sub("", text(target / "out.txt"))


def finish():
    print(f"{passed} passed, {failed} failed")
    sys.exit(failed != 0)
