#!/usr/bin/env python3
"""What the programs say on standard error, and the status they end with: a row a case.

messages.py BIN_FOLDER
"""
import os
import pty
import subprocess
import sys
import tempfile

BIN = os.path.abspath(sys.argv[1])
ENTRIES = '[dog]{} "dog" (N);\n[cat]{} "cat" (N);\n'
RULES = "R{SHEAD:::}{:::}P1;\nR{N:::}{STAIL:::}P1;\n"
DOG = "[S:1]\n[W]\ndog.@entry\n[/W]\n[/S]\n"
CAT = "[S:2]\n[W]\ncat.@entry\n[/W]\n"
LONG = "x" * 300
BIG = RULES + "".join("R{A%d,[f%d]:+B::}{C%d:[g%d]::}P1;\n" % (i % 50, i % 60, i % 70, i % 80) for i in range(100000))

# name, files beside the usual ones, words of the command line (the first that are no switches take the place of the
# usual dictionary, rules, input and output; "." is the usual one), status, what standard error holds, what it does not
RUNS = [
    # paths and numbers of the command line
    ("-C without a value", {}, "-C", 0, "lexon: -C: no path behind it"),
    ("-C with an empty value", {}, ["-C", ""], 0, "lexon: -C: no path behind it"),
    ("-C too long", {}, "-C " + LONG, 0, "characters, and 260 is the limit: no co-occurrence dictionary"),
    ("-C without a value, strictly", {}, "-C --strict", 2, "lexon: -C: no path behind it"),
    ("a path too long", {}, ". . " + LONG, 1, "lexon: the path of INPUT made absolute has"),
    ("a path too long, strictly", {}, ". . " + LONG + " --strict", 2, "usage:"),
    ("a number with letters", {}, "-L0x -N0", 0, 'lexon: -L: "0x" is read as 0\n2 done;'),
    ("no number", {}, "-Nall", 0, 'lexon: -N: "all" is read as 0\n2 done;'),
    ("a number beyond 32 bits", {}, "-N4294967296", 0, '"4294967296" is read as 2147483647'),
    ("a number with a sign and zeros", {}, "-N+02", 0, "2 done;", "is read as"),
    ("number 0 and a time limit", {}, "-S0 -T2", 0, "lexon: the sentence that -S makes number 0 has no time limit"),
    ("numbers from 1 and a time limit", {}, "-S1 -T2", 0, "1 done;", "time limit"),
    ("no number of blocks", {}, "--blocks=0", 2, "--blocks wants a number from 1 to 65535"),
    # why a file cannot be opened
    ("no input", {}, ". . none", 1, "none! (No such file or directory)\n"),
    ("an output that is a folder", {}, ". . . .", 1, "Can't Open Output File : ", "done"),
    ("no index", {"lone.dic": None}, "lone.dic", 1, "lone.dic! (its index @/words.idx cannot be opened: No such file or directory)\n"),
    ("no dictionary", {}, "none", 1, "Can't Open Dictionary File : @/none! (No such file or directory)\n"),
    ("no dictionary at all", {"text.dic": ENTRIES}, "text.dic", 1, "(no dictionary that lexon-dict has built)\n"),
    ("no co-occurrence dictionary", {}, "-Cnone", 1, "/none! continue? (No such file or directory) [y/N] no\n"),
    ("no path", {}, "--bare", 1, "Can't Open Output File : ! (no path is given)\n"),
    # input that is lost
    ("an unclosed end", {"i": DOG + CAT}, ". . i -N0", 0, "/i:6: this sentence is not closed"),
    ("an unclosed end is counted", {"i": DOG + CAT}, ". . i -N0", 0, "2 done, 1 unclosed;"),
    ("an unclosed end, strictly", {"i": DOG + CAT}, ". . i -N0 --strict -q", 3, "not closed", "done"),
    ("an open block", {"i": DOG + "{note}\n" + DOG}, ". . i -N0", 0, "/i:6: this block is not closed, and hides"),
    ("a closed block", {"i": DOG + "{note}\nx\n{/note}\n"}, ". . i -N0 --strict", 0, "1 done;", "unclosed"),
    ("a mark among words", {"i": CAT.replace("[/W", " [/W") + "[/S]\n"}, ". . i -N0", 3,
     "line 5 (inside a block of words)"),
    ("behind the end", {}, "-S3", 0, "/input.txt: -S 3 is behind its end: it has 2 sentences that are closed\n0 done;"),
    ("far behind the end, strictly", {}, "-S9 --strict", 3, "-S 9 is behind its end"),
    ("the last sentence, strictly", {}, "-S2 -N9 --strict", 0, "1 done;", "behind"),
    ("UTF-16", {"i": (DOG).encode("utf-16")}, ". . i --strict", 3, "/i:1: this text is UTF-16: save it as UTF-8\n"),
    ("UTF-16 without its mark", {"i": DOG.encode("utf-16-le")}, ". . i", 0, "/i:1: a NUL character hides"),
    ("a byte order mark", {"i": b"\xef\xbb\xbf" + DOG.encode()}, ". . i --strict", 3, "/i:1: a byte order mark"),
    ("two encodings", {"i": b"; \xc3\xa4\n; \xe4\n" + DOG.encode()}, ". . i --strict", 0, "/i:2: characters that are not"),
    ("UTF-8", {"i": "; \u00e4\u20ac\U0001f600\n" + DOG}, ". . i", 0, "1 done;", "characters"),
    ("no sentence", {"i": "dog\n"}, ". . i --strict", 3, "/i: holds no sentence"),
    ("an empty input", {"i": ""}, ". . i --strict", 0, "0 done;", "sentence"),
    ("lines left out", {"i": "[S]\nr(dog.@entry,cat)\nr dog\nr(,b)\n(a,b)\nr(a,)\n[/S]\n"}, ". . i", 0,
     "1 done; 4 lines left out: line 3 (no relation: label(from, to)), line 4 (From-CW is not found), line 5 (Rel is "
     "not found), ...;"),
    ("a relation outside", {"i": DOG + "r(a,b)\nso it is (here, there)\n"}, ". . i -N0 --strict", 3,
     "1 line left out: line 6 (outside of a sentence)"),
    ("a line in pieces", {"i": ";" + "x" * 2000 + "\n" + DOG}, ". . i", 0, "/i:1: this line has more than 1022"),
    # rules
    ("a caret", {"r": "; \n  :(N)\t{\u00e9,^a:^b}{}P1;\n" + RULES}, ". r", 0,
     "/r:2:14: an action adds (mark) or deletes (-mark): ^ is for conditions\n"
     "    :(N)\t{\u00e9,^a:^b}{}P1;\n        \t      ^\n"),
    ("a caret in a long line", {"r": "R{" + "abc," * 100 + "}Z\n" + RULES}, ". r", 0,
     "/r:1:404: no right pattern", "abc," * 40),
    ("the last line is refused", {"r": RULES + "R{a)}{}P1;\n"}, ". r -R", 0, "/r: no rule is in force, as the last line"),
    ("an earlier line is refused", {"r": "R{a)}{}P1;\n" + RULES}, ". r -R", 0, "/r:1:4: this ) closes nothing"),
    ("the last line, strictly", {"r": RULES + "R{a)}{}P1;\n"}, ". r -R --strict", 3, "/r:3:4:"),
    ("an earlier line, strictly", {"r": "R{a)}{}P1;\n" + RULES}, ". r -R --strict", 3, "/r:1:4:"),
    ("a warning, strictly", {"r": RULES + "R{}{};\n"}, ". r -R --strict", 0, "/r:3:6: warning: no priority"),
    ("rules without room", {"r": BIG}, ". r -R", 3, ": no room for the rules: rules use 13.1 of 13.1 MB; --blocks 400"),
    ("rules with room", {"r": BIG}, ". r --blocks 2000 --strict", 0, "1 done;", "room"),
    ("little room", {}, "--blocks 20", 0, "/rules.txt: little room is left for sentences: rules use 0.0 of 1.3 MB"),
    ("no room for a sentence", {}, "--blocks 1", 3, "lexon: 1 sentence failed for want of memory: rules use 0.0 of 0.1"),
]

# a line of rules, the column of its fault, how its text begins
FAULTS = [
    ("Z{}{}P1;", 1, "no rule type"),
    ("R P1;", 3, "no left pattern"),
    ('R"x"{}P1;', 2, "no inserted word here"),
    ("P<<{}{}P1;", 4, "the type P<< puts in text"),
    ("R{a}P1;", 5, "no right pattern"),
    ('R{}"x"P1;', 4, "no inserted word here"),
    ("P>>{a}{b}P1;", 7, "the type P>> puts in text"),
    (":{}(a){b}P1;", 7, "groups between the patterns"),
    ("R{}(a){}P1;", 4, "no group between the patterns"),
    ("R{a", 3, "the line ends in this word"),
    ("R{[a}{}P1;", 3, "this bracket is not closed"),
    ("R(a,b,", 7, "the line ends in this word"),
    ("R(a{}{}P1;", 5, "a group has conditions alone"),
    ("R{a)}{}P1;", 4, "this ) closes nothing"),
    ("R{:^a}{}P1;", 4, "an action adds"),
    ("R{:a)}{}P1;", 5, "this ) closes nothing"),
    ("R{[a],[b]}{}P1;", 3, "two surface forms"),
    ("R{[[a]],[[b]]}{}P1;", 3, "two concept words"),
    ("R{::a)}{}P1;", 6, "no relation label"),
    ("R{:::a)}{}P1;", 7, "this ) closes nothing"),
    ("R{:::a", 6, "the line ends in this name"),
    ("R{:::a:b}{}P1;", 7, "a pattern has four sections"),
    (":{a:+b}{}P1;", 1, "the rule would fit again"),
    ("<{}{}P1;", 1, "warning: a rule of type < or >"),
    ("R{}{}P256;", 10, "warning: no priority"),
]


def write(folder, name, content):
    with open(os.path.join(folder, name), "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())


def start(words, folder, **more):
    more = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **more}
    return subprocess.Popen([os.path.join(BIN, words[0]), *words[1:]], cwd=folder, **more)


def run(words, folder, **more):
    process = start(words, folder, **more)
    out, error = process.communicate(timeout=120)
    return process.returncode, (out or b"").decode(errors="replace"), (error or b"").decode(errors="replace")


def fresh(root, files=()):
    folder = tempfile.mkdtemp(dir=root)
    for file, content in {"entries.txt": ENTRIES, "rules.txt": RULES, "input.txt": DOG + CAT + "[/S]\n"}.items():
        write(folder, file, content)
    run(["lexon-dict", "build", "entries.txt", "words.dic"], folder)
    for file, content in dict(files).items():
        if content is not None:
            write(folder, file, content)
        else:  # the dictionary without its index
            os.rename(os.path.join(folder, "words.dic"), os.path.join(folder, file))
            os.remove(os.path.join(folder, "words.idx"))
    return folder


def command(words, folder):
    words = words.split() if isinstance(words, str) else words
    if words == ["--bare"]:
        return ["lexon", "words.dic"]
    paths = ["words.dic", "rules.txt", "input.txt", "out.txt"]
    given = 0
    while given < len(words) and not words[given].startswith("-"):
        if words[given] != "." or given == 3:
            paths[given] = words[given]
        given += 1
    return ["lexon", *paths, *words[given:]]


def check_run(root, files, words, status, holds, lacks=None):
    folder = fresh(root, files)
    got, _, error = run(command(words, folder), folder)
    holds = holds.replace("@", os.path.realpath(folder))
    if got != status or holds not in error or (lacks is not None and lacks in error):
        return "status %d, and on standard error:\n%s" % (got, error)
    return None


def check_fault(root, line, column, begin):
    folder = fresh(root, {"r": line + "\n;\n"})
    _, _, error = run(["lexon", "words.dic", "r", "input.txt", "out.txt", "-R"], folder)
    wanted = "/r:1:%d: %s" % (column, begin)
    return None if wanted in error and error.count("/r:") == 1 else "not %s, but:\n%s" % (wanted, error)


# ---- descriptors and terminals: each gives what is wrong, or None

def closed_pipe(root):
    folder = fresh(root, {"i": DOG * 20000})
    process = start(["lexon", "words.dic", "rules.txt", "i", "/dev/stdout", "-N0", "-L0"], folder)
    process.stdout.close()
    error = process.stderr.read().decode()
    status = process.wait(timeout=60)
    whole = "20000 done" in error
    return None if status == 4 and not whole and "could not be written whole" in error else "%d\n%s" % (status, error)


def full_answer(_):
    for program in "lexon", "lexon-dict":
        for word in "--help", "--version":
            with open("/dev/full", "w") as full:
                if run([program, word], ".", stdout=full)[0] != 4:
                    return program + " " + word
    return None


def closed_descriptors(root):
    folder = fresh(root)
    words = [os.path.join(BIN, "lexon"), "words.dic", "rules.txt", "input.txt", "out.txt", "-L0", "-N0"]
    status = subprocess.call(["sh", "-c", 'exec "$@" <&- >&- 2>&-', "sh", *words, "-Cnone", "--yes"], cwd=folder)
    with open(os.path.join(folder, "out.txt")) as file:
        text = file.read()
    return None if status == 0 and text.count(";;Done!") == 2 and text.startswith("[S:1]\n") else text


def on_terminal(words, folder, stream):
    """The status, and what a terminal gets that is behind one of the two streams."""
    ours, theirs = pty.openpty()
    status = run(words, folder, **{stream: theirs})[0]
    os.close(theirs)
    shown = os.read(ours, 10000).decode()
    os.close(ours)
    return status, shown.replace("\r\x1b[K", "")  # without the progress line that is wiped out


NAME, SHOWN = "a\x1b[31m\u009b", "a\\x1B[31m\\xC2\\x9B"
TERMINAL = [  # words of a program, the stream that is a terminal, status, what is shown there
    (["lexon", "words.dic", "rules.txt", NAME + "\n", "out.txt"], "stderr", 1, SHOWN + "\\x0A! (No such"),
    (["lexon", "words.dic", "rules.txt", "input.txt", "out.txt", "--" + NAME], "stderr", 2, SHOWN),
    (["lexon", "words.dic", "bad.txt", "input.txt", "out.txt", "-R"], "stderr", 0, "Z\\x1B[31m"),
    (["lexon-dict", "build", "e.txt", NAME + ".dic"], "stdout", 0, "1 entry in " + SHOWN + ".dic ("),
    (["lexon-dict", "build", "e.txt", "b.dic", "--keys", NAME], "stderr", 2, SHOWN),
    (["lexon-dict", "build", NAME, "b.dic"], "stderr", 1, SHOWN + ": cannot be opened: No such"),
    (["lexon-dict", "list", NAME + ".dic"], "stdout", 0, "[a\\x1B[31m\u00e4]"),
    (["lexon-dict", "list", NAME], "stderr", 1, SHOWN + ": cannot be opened"),
    (["lexon-dict", "find", "--cw", "a", NAME + ".dic"], "stdout", 0, "[a\\x1B[31m\u00e4]"),
    (["lexon-dict", "check", NAME + ".dic"], "stdout", 0, SHOWN + ".dic: sound: 1 entry"),
]


def terminal(root):
    folder = fresh(root, {"e.txt": '[a\x1b[31m\u00e4]{} "a" (N);\n', "bad.txt": "Z\x1b[31m{}{}P1;\n" + RULES})
    wrong = []
    for words, stream, status, holds in TERMINAL:
        got, shown = on_terminal(words, folder, stream)
        if got != status or holds not in shown or "\x1b" in shown or "\u009b" in shown: wrong.append((words, got, shown))
    plain = run(["lexon-dict", "find", "--cw", "a", NAME + ".dic"], folder)[1]
    return wrong or (None if "[a\x1b[31m" in plain else plain)


SCENES = [closed_pipe, full_answer, closed_descriptors, terminal]


def main():
    passed, failed = 0, 0
    with tempfile.TemporaryDirectory() as root:
        rows = [(row[0], check_run, root, *row[1:]) for row in RUNS]
        rows += [(row[0], check_fault, root, *row) for row in FAULTS]
        rows += [(scene.__name__, scene, root) for scene in SCENES]
        for name, check, *arguments in rows:
            wrong = check(*arguments)
            passed += wrong is None
            failed += wrong is not None
            if wrong is not None:
                print("%s: %s" % (name, wrong))
    print("%d passed, %d failed" % (passed, failed))
    sys.exit(failed != 0)


main()
