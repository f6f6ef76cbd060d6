#!/usr/bin/env python3
"""Runs in parts: however many, joined they are what one run writes, and what is missing or does not fit is named.
shards.py PROGRAMS"""
import os
import pathlib
import re
import shutil
import signal
import subprocess
import time

import _table as table

GOLDEN = table.ROOT / "tests" / "golden"
DOG = "[S:{}]\natt(dog.@entry, dog)\n[/S]\n"
MANY = [DOG.format(i) for i in range(30)]

SUMMARY = re.compile(r"(\d+ done.*?); [0-9.]+ s\n")


def lexon(words, target):
    return table.run("lexon", *words, folder=target)


def join(target, *words):
    return lexon(["join", "out.txt", *words], target)


def output(target, name="out.txt"):
    return table.TIME_LINE.sub("", table.text(target / name))


def in_parts(words, of, target):
    """Renders all parts, those that a join asks for once more. What the join says."""
    made = [lexon([*words, "--shard", f"{i}/{of}"], target) for i in range(1, of + 1)]
    for _ in range(of):
        joined = join(target)
        again = re.findall(r"run --shard (\d+)/\d+( --forced-target)? again", joined.stderr)
        if not again:
            break
        for number, bit in again:
            made[int(number) - 1] = lexon([*words, "--shard", f"{number}/{of}", *bit.split()], target)
    return made, joined


def compare(name, words, target, parts=(1, 5)):
    one = lexon(words, target)
    wanted = output(target)
    for of in parts:
        (target / "out.txt").unlink()
        made, joined = in_parts(words, of, target)
        table.check(f"{name} in {of} parts", output(target) if (target / "out.txt").exists() else joined.stderr, wanted)
        table.check(f"{name} in {of} parts: status", joined.returncode, one.returncode)
        counts = SUMMARY.search(one.stderr)
        if counts and ";" not in counts[1]:
            table.check(f"{name} in {of} parts: counts", re.sub(r", \d+ unclosed", "", counts[1]) in joined.stderr, True)
        for file in target.glob("out.txt.*"):
            file.unlink()


def language(target):
    (target / "entries.txt").write_text('[dog]{} "dog" (OK);\n')
    (target / "rules.txt").write_text("R{SHEAD:::}{OK:::}P9;\n:{OK:::}\"OK::att:\"P8;\nR{OK:::}{:::}P5;\n")
    table.run("lexon-dict", "build", "entries.txt", "words.dic", folder=target)
    return ["words.dic", "rules.txt", "input.txt", "out.txt", "-L1"]


def texts():
    with table.folder() as name:
        target = pathlib.Path(name)
        words = language(target)
        lexon([*words, "-R"], target)
        for title, sentences, switches in table.hard_texts(MANY):
            (target / "input.txt").write_bytes("".join(sentences).encode("utf-8", "surrogateescape"))
            compare(title, [*words, *switches.split()], target)


def cases():
    """Parts of the golden runs, whose rules print messages as they are converted; forced targets cross the borders."""
    for case in ("search-forced", "rules-errors", "reading-errors"):
        with table.folder() as name:
            target = pathlib.Path(name)
            words = [w for w in table.build_case(GOLDEN / case, target) if w != "--quiet"]
            text = table.text(words[2])
            if case == "search-forced":
                parts = ["[S" + part for part in text.split("[S")[1:]]
                text = "".join(parts + table.targets_left(parts) * 3)
                words.append("--blocks=4")
            (target / "input.txt").write_bytes((text * 5).encode("utf-8", "surrogateescape"))
            words[2] = "input.txt"
            for more, numbers in (("-L3", (2, 11)), ("-j2", (5,))):
                for of in numbers:
                    for file in target.glob("rules.*[lxp]"):
                        if file.suffix != ".txt":
                            file.unlink()
                    compare(f"{case} {more}", [*words, "-N0", more, "--rebuild"], target, (of,))


def many_at_once():
    """All start together: one finds the borders for all, and each has its own part."""
    with table.folder() as name:
        target = pathlib.Path(name)
        words = [*language(target), "-N0", "-Q"]
        (target / "input.txt").write_text("".join(DOG.format(i) for i in range(5000)))
        lexon(words, target)
        wanted = output(target)
        for parts in (8,):
            running = [subprocess.Popen([table.PROGRAMS / "lexon", *words, f"--shard={i}/{parts}"], cwd=target)
                       for i in range(1, parts + 1)]
            table.check("statuses of parts that start together", [p.wait() for p in running], [0] * parts)
            table.check("they join", join(target, "--quiet").returncode, 0)
            table.check("parts that start together", output(target) == wanted, True)
        table.check("one file of offsets, nothing left behind", sorted(p.name for p in target.glob("input*")),
                    ["input.txt", "input.txt.offsets"])


def restarts():
    with table.folder() as name:
        target = pathlib.Path(name)
        words = [*language(target), "-N0"]
        source = target / "input.txt"
        source.write_text("".join(MANY))
        def shard(i, *more):
            return lexon([*words, "--shard", f"{i}/3", *more], target)
        table.check("no shards", ("there are no shards" in join(target).stderr, join(target).returncode), (True, 1))
        shard(1), shard(3)
        missing = join(target)
        table.check("a missing one is named", (missing.returncode, missing.stderr),
                    (1, "out.txt.2-of-3: is missing: run --shard 2/3 again\n"))
        shard(2)
        at = (target / "out.txt.2-of-3").stat().st_mtime_ns
        table.check("one that is done is not done again", ("is done already: 10 done" in shard(2).stderr,
                    (target / "out.txt.2-of-3").stat().st_mtime_ns), (True, at))
        table.check("joined", join(target).stderr, "3 shards: 30 done\n")

        (target / "out.txt.2-of-3.done").unlink()
        table.check("an unfinished one", join(target).stderr, "out.txt.2-of-3: is unfinished: run --shard 2/3 again\n")
        with open(target / "out.txt.2-of-3", "a") as file:
            file.write("x")
        shard(2, "--forced-target")
        table.check("the wrong bit", join(target).stderr.splitlines()[0], "out.txt.2-of-3: begins with a forced target, which the shard "
                    "before it does not leave: run --shard 2/3 again")
        shard(2)
        table.check("the right bit", join(target).returncode, 0)

        text = (target / "out.txt.3-of-3").read_bytes()
        (target / "out.txt.3-of-3").write_bytes(text[:-2] + b"?\n")
        table.check("an altered output", join(target).stderr, "out.txt.3-of-3: is not what was written: run --shard 3/3 again\n")
        (target / "out.txt.3-of-3").write_bytes(text[:-2])
        table.check("a cut output", join(target).stderr, "out.txt.3-of-3: is not what was written: run --shard 3/3 again\n")
        shard(3)
        (target / "rules.txt").write_text((target / "rules.txt").read_text() + "R{z}{z}P1;\n")
        shard(3)
        table.check("other rules", join(target).stderr,
                    "out.txt.3-of-3: was made with another rules than out.txt.1-of-3: run --shard 3/3 again\n")
        shard(1), shard(2, "--report", "r.tsv")
        table.check("the report of a part", table.text(target / "r.tsv").count("\n"), 11)
        table.check("all with the other rules", join(target).returncode, 0)
        shard(3, "-L2")
        table.check("other switches", "another switches than" in join(target).stderr, True)

        source.write_text("".join(MANY[:29] + ["; \n", MANY[29]]))
        table.check("a changed input is rendered again", "is done already" in shard(1).stderr, False)
        (target / "input.txt.offsets").write_text("nonsense")
        table.check("damaged offsets are made again", shard(1).returncode, 0)
        (target / "out.txt.1-of-2").write_text("")
        table.check("two sets", "sets of 2, 3 shards" in join(target).stderr, True)
        table.check("one of the sets", join(target, "--of", "3").returncode, 1)


def killed():
    """One that is killed is known as unfinished, and done whole the next time."""
    with table.folder() as name:
        target = pathlib.Path(name)
        words = [*language(target), "-N0", "-L4", "--quiet"]
        # The last sentence has no end, so that neither is done before the signal comes.
        for file, more in (("entries.txt", table.ENDLESS_ENTRIES), ("rules.txt", table.ENDLESS_RULES)):
            (target / file).write_text(table.text(target / file) + more)
        table.run("lexon-dict", "build", "entries.txt", "words.dic", folder=target)
        (target / "input.txt").write_text("".join(DOG.format(i) for i in range(2000)) + table.ENDLESS.format(2000))
        process = subprocess.Popen([table.PROGRAMS / "lexon", *words, "--shard=1/1"], cwd=target)
        part = target / "out.txt.1-of-1"
        while process.poll() is None and (not part.exists() or part.stat().st_size < 100000):
            time.sleep(0.005)
        process.kill()
        process.wait()
        table.check("a killed one", join(target).stderr, "out.txt.1-of-1: is unfinished: run --shard 1/1 again\n")
        part.unlink()
        process = subprocess.Popen([table.PROGRAMS / "lexon", *words, "--shard=1/1"], cwd=target)
        while process.poll() is None and (not part.exists() or part.stat().st_size < 100000):
            time.sleep(0.005)
        process.send_signal(signal.SIGTERM)
        table.check("a cancelled one", (process.wait(), join(target).returncode), (130, 1))


# What is refused: a name, the words, status and a word of the message.
REFUSED = [
    ("no number", ["--shard", "3"], 2, "such as 3/10"),
    ("beyond the last", ["--shard", "4/3"], 2, "such as 3/10"),
    ("number 0", ["--shard=0/3"], 2, "such as 3/10"),
    ("a conversion", ["--shard=1/3", "-R"], 2, "-R"),
    ("a bit without a shard", ["--forced-target"], 2, "--shard"),
    ("no input", ["--shard=1/3"], 1, "cannot be opened"),
    ("offsets of no input", ["--index-input"], 1, "cannot be opened"),
]


def refused():
    with table.folder() as name:
        target = pathlib.Path(name)
        words = language(target)
        for title, more, status, word in REFUSED:
            made = lexon([*words, *more], target)
            table.check(title, (made.returncode, word in made.stderr), (status, True))
        os.mkfifo(target / "input.txt")
        table.check("a pipe", "no file" in lexon([*words, "--shard=1/2"], target).stderr, True)
        (target / "input.txt").unlink()
        (target / "input.txt").write_text("".join(MANY))
        made = lexon([*words, "--index-input"], target)
        table.check("offsets alone", (made.returncode, made.stdout.endswith("input.txt.offsets: 30 sentences\n"),
                    (target / "out.txt").exists()), (0, True, False))
        table.check("join wants a name", join(target, "another").returncode, 2)



def parallel():
    """The line of the manual."""
    manual = (table.ROOT / "docs" / "cluster.md").read_text()
    line = re.search(r"^(?:seq|parallel) .*$", manual, re.M)[0]
    if not shutil.which("parallel"):
        return
    with table.folder() as name:
        target = pathlib.Path(name)
        language(target)
        (target / "input.txt").write_text("".join(MANY))
        lexon(["words.dic", "rules.txt", "input.txt", "out.txt", "-N0", "-Q"], target)
        wanted = output(target)
        environment = {**os.environ, "PATH": f"{table.PROGRAMS}:{os.environ['PATH']}", "HOME": name}
        done = subprocess.run(["sh", "-c", line], cwd=target, env=environment, capture_output=True, text=True)
        table.check("the line of the manual", (done.returncode, join(target).returncode, output(target)), (0, 0, wanted))


texts()
cases()
many_at_once()
restarts()
killed()
refused()
parallel()
table.finish()
