#!/usr/bin/env python3
"""The dictionary program from outside: what it prints where, and its exit statuses. dictionary_tool.py PROGRAMS"""
import os
import pathlib

import _table as table

RAN = '[ran]{} "run(>move)" (V,PAST) <E,1,5>;\n'
RUNS = '[runs]{} "run(>move)" (V,PRES) <E,1,9>;\n'
BAD = 'bad.txt:1: an entry begins with "["\n'
NOTHING = "nothing is found\n"

# Words of the call, exit status, standard output, standard error.
CALLS = [
    (["build", "entries.txt", "words.dic"], 0, "2 entries in words.dic (3 blocks), index in words.idx (2 blocks)\n", ""),
    (["build", "entries.txt", "k.dic", "--keys", "id,extra1", "--memory", "1"], 0, "2 entries in k.dic (5 blocks), index in k.idx (4 blocks)\n", ""),
    (["build", "bad.txt", "bad.dic"], 1, "", BAD + "bad.txt: 1 bad line, nothing has been built\n"),
    (["build", "--skip-bad", "bad.txt", "bad.dic"], 0, "1 entry in bad.dic (3 blocks), index in bad.idx (2 blocks), 1 bad line left out\n", BAD),
    (["build", "none.txt", "none.dic"], 1, "", "none.txt: cannot be opened: No such file or directory\n"),
    (["build", "entries.txt", "none/words.dic"], 1, "", "none/words.dic: cannot be created: No such file or directory\n"),
    (["list", "words.dic"], 0, RAN + RUNS, ""),
    (["list", "none.dic"], 1, "", "none.dic: cannot be opened: No such file or directory\n"),
    (["find", "words.dic", "--hw", "ran"], 0, RAN, ""),
    (["find", "words.dic", "--cw", "run(>move)"], 0, RUNS + RAN, ""),
    (["find", "words.dic", "--hw", "run"], 1, "", NOTHING),
    (["find", "words.dic", "--hw", ""], 1, "", NOTHING),
    (["find", "words.dic", "--hw=-"], 1, "", NOTHING),
    (["check", "words.dic"], 0, "words.dic: sound: 2 entries, each found once by each of 3 keys\n", ""),
    (["check", "entries.txt"], 1, "", "entries.txt: offset 0: not a dictionary: the file is shorter than its header\n"),
]
WRONG = ["", "make", "build entries.txt", "build entries.txt a.dic third", "build entries.txt a.dic --keys attrs",
         "build entries.txt a.dic --memory 0", "find words.dic", "list", "check words.dic --all"]

with table.folder() as name:
    folder = pathlib.Path(name)
    (folder / "entries.txt").write_bytes(("; two words\n" + RAN + RUNS.replace("\n", "\r\n")).encode())
    (folder / "bad.txt").write_text("bad\n" + RAN)
    for words, status, out, error in CALLS:
        made = table.run("lexon-dict", *words, folder=folder)
        table.check(words, (made.returncode, made.stdout, made.stderr), (status, out, error))
    for words in WRONG:
        made = table.run("lexon-dict", *words.split(), folder=folder)
        table.check(words, (made.returncode, made.stdout, made.stderr != "", (folder / "a.dic").exists()), (2, "", True, False))
    table.check("--version", table.run("lexon-dict", "--version").stdout[:11], "lexon-dict ")
    for command in ("build", "list", "find", "check", "import", "inflect"):
        table.check(f"{command} --help", table.run("lexon-dict", command, "--help").returncode, 0)
    os.truncate(folder / "words.idx", 1024)
    made = table.run("lexon-dict", "check", "words.dic", folder=folder)
    table.check("damage", (made.returncode, made.stdout, made.stderr), (1, "words.dic: damaged in 3 places\n",
                "words.idx: is not the file that was built with words.dic: it has been exchanged, cut or changed since; build the "
                "dictionary again (words.idx.stamp holds the sizes and checksums of the build)\n"
                "words.dic: offset 47: a slot without a tree\nwords.dic: offset 8192: a block that no tree leads to\n"))
table.finish()
