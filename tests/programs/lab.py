#!/usr/bin/env python3
"""lexon-lab on the English example: what stands, what was refused and why, what was counted; one row a fact."""
import json
import os
import re
import shutil
import signal

import _table as table

FAILS = """[S:tired]
thm(tired(>state).@entry.@past, dog(>animal).@def)
pat(tired(>state), cat(>animal).@def)
[/S]
"""
GRAMMAR = ["-d", "entries.dic", "-r", "rules.txt", "-c", "cr.dic"]
SHELL = """pick 1
render
word dog
word walk* +V
steps 3
explain
steps 0
rule {line} ;
render
reload
render
check
bad command
steps inf
"""


def line_of(folder, start):
    """The line of the first rule that begins so, blanks apart."""
    for number, line in enumerate(table.text(folder / "rules.txt").splitlines(), 1):
        if re.sub(r"\s+", "", line).startswith(start):
            return number
    raise LookupError(start)


def main():
    with table.folder() as name:
        folder = table.pathlib.Path(name)
        words = table.build_case(table.ROOT / "examples" / "english", folder)
        shutil.copy(words[2], folder / "input.txt")
        (folder / "fails.txt").write_text(FAILS)
        first = line_of(folder, ":{[<<]}{V,PAST,@past")

        def lab(*words, given=None):
            made = table.subprocess.run([table.PROGRAMS / "lexon-lab", *map(str, words)], cwd=folder, input=given or "",
                                        capture_output=True, encoding="utf-8", errors="surrogateescape")
            return made.returncode, made.stdout, made.stderr

        def shows(name, words, status, wanted, given=None, unwanted=()):
            """The status, and that each of the expressions is found in what is shown."""
            code, out, err = lab(*words, given=given)
            missing = [each for each in wanted if not re.search(each, out + err, re.M)]
            missing += [f"not: {each}" for each in unwanted if re.search(each, out + err, re.M)]
            if not table.check(name, (code, missing), (status, [])):
                print(out + err)
            return out

        one = ["-s", "1", "input.txt", *GRAMMAR]
        rows = [
            ("the steps that stand", ["explain", *one], 0, [r"^input.txt:\d+: \[S:1\]  done, .* taken back$", rf"^rules.txt:{first}  ", r"^= The dog slept\.$"]),
            ("with what was taken back", ["explain", "-a", "-s", "38", "input.txt", *GRAMMAR], 0, [r"^x rules.txt:\d+ ", r"asks for a step back in \|"]),
            ("one word", ["explain", "-w", "dog", *one], 0, [r"^  \[dog\]\{", r'^Rules that touched "dog":$', r"^  rules.txt:\d+  .*dog"]),
            ("what could not be said", ["explain", "fails.txt", *GRAMMAR], 1, [r"^The deepest list, \d+ steps in:$", r"^  pat\(tired\(>state\), cat\(>animal\)\)$", r"^  tired: >pat \(asked about by rules.txt:\d+\)$", r"^The tests that took back most:$"]),
            ("a limit of steps", ["explain", "--steps", "3", *one], 1, [r"over steps", r"^The last steps:$"]),
            ("a rule that worked", ["why", first, *one], 0, [r"^  it worked at ", r"it was not offered at "]),
            ("by its file too", ["why", f"rules.txt:{first}", *one], 0, [rf"^rules.txt:{first}: :"]),
            ("a line without a rule", ["why", "1", *one], 1, [r"rules.txt:1: no rule in force stands there; the one behind it is in line \d+"]),
            ("another file", ["why", "other.txt:3", *one], 1, ["other.txt:3: the rules are those of rules.txt"]),
            ("no such sentence", ["explain", "-s", "999", "input.txt", *GRAMMAR], 1, ['no sentence has the label "999"']),
            ("cost", ["profile", *one], 0, [r"^1 sentence, ", r"^ +ms +tried", r"rules.txt:\d+: ", r"input.txt:\d+: \[S:1\] done"]),
        ]
        for row in rows:
            shows(*row)

        # Lines of compiled rules come from the text beside them, as long as that says the same.
        table.run("lexon", *words, "-R", folder=folder)
        compiled = ["-d", "entries.dic", "-r", "rules.rul", "-c", "cr.dic", "-s", "1", "input.txt"]
        before = {path.name: path.stat().st_mtime_ns for path in folder.iterdir()}
        shows("lines of compiled rules", ["explain", *compiled], 0, [rf"^rules.txt:{first}  "])
        table.check("nothing is written", {path.name: path.stat().st_mtime_ns for path in folder.iterdir()}, before)
        kept = table.text(folder / "rules.txt")
        (folder / "rules.txt").write_text(kept.replace("P240;", "P241;", 1))
        shows("text and compiled rules", ["explain", *compiled], 0, ["text and compiled rules differ", "^rules.rul  "])
        (folder / "rules.txt").write_text(kept)

        # Coverage: what is merged is counted twice, and what is pruned still renders all.
        expected = table.text(table.ROOT / "examples" / "english" / "expected.txt")
        shows("coverage", ["coverage", "input.txt", *GRAMMAR, "--data", "one.json", "--html", "page.html", "--lcov", "trace.info", "--prune", "pruned.txt"], 0, [])
        shows("coverage on threads", ["coverage", "input.txt", *GRAMMAR, "-j", "3", "--data", "three.json"], 0, [])
        table.check("the same counts on threads", table.text(folder / "three.json"), table.text(folder / "one.json"))
        (folder / "all.lxr").write_text('%include "rules.txt"\n')
        shows("coverage of what is included", ["coverage", "input.txt", "-r", "all.lxr", *GRAMMAR[:2], *GRAMMAR[4:], "--html", "all.html"], 0, [])
        table.check("its rules are shown", 'class="hit"' in table.text(folder / "all.html"), True)
        shows("coverage merged", ["coverage", "input.txt", *GRAMMAR, "-m", "one.json", "--data", "two.json"], 0, [])
        single, double = (json.loads(table.text(folder / name))["rules"] for name in ("one.json", "two.json"))
        table.check("merged counts", [(rule["hits"], rule["undone"]) for rule in double], [(2 * rule["hits"], 2 * rule["undone"]) for rule in single])
        fired = [rule for rule in single if rule["hits"]]
        table.check("an example for each", [rule["text"] for rule in fired if not rule["example"]], [])
        trace = table.text(folder / "trace.info")
        table.check("LCOV counts", (f"LF:{len(single)}\nLH:{len(fired)}\n" in trace, len(re.findall(r"^DA:\d+,\d+$", trace, re.M))), (True, len(single)))
        table.check("the page stands alone", re.findall(r"(?:src|href)=", table.text(folder / "page.html")), [])
        pruned = [*GRAMMAR]
        pruned[3] = "pruned.txt"
        table.check("pruned rules render the same", lab("render", "input.txt", *pruned)[1], expected)
        shows("rules are not overwritten", ["coverage", "input.txt", *GRAMMAR, "--prune", "rules.txt"], 1, ["give --prune another name"])

        # Reports: the same rows from the lab and from a run, on one thread and on four, as TSV and as JSON.
        def rows_of(path):
            lines = table.text(folder / path).splitlines()
            if path.endswith(".tsv"):
                return [line.split("\t")[:2] + line.split("\t")[3:] for line in lines[1:]]
            found = []
            for line in map(json.loads, lines):
                found.append([line["label"], line["status"], str(line["steps"]), str(line["steps_back"]),
                              "; ".join(line["unused_relations"]), "; ".join(line["unknown_words"]), line["text"], line["fallback"]])
            return found

        lab("report", "input.txt", *GRAMMAR, "-o", "lab.tsv")
        run = [*words, "-N0", "--report"]
        table.run("lexon", *run, "one.tsv", folder=folder)
        table.run("lexon", *run, "four.jsonl", "-J4", folder=folder)
        table.check("a row a sentence", [row[-2] for row in rows_of("lab.tsv")], expected.splitlines())
        for path in ("one.tsv", "four.jsonl"):
            table.check(f"{path} and lab.tsv", rows_of(path), rows_of("lab.tsv"))
        lab("report", "fails.txt", *GRAMMAR, "-o", "fails.jsonl")
        table.check("of what failed", rows_of("fails.jsonl")[0][:2] + rows_of("fails.jsonl")[0][-2:],
                    ["[S:tired]", "failed", "", "tired dog cat"])
        table.check("a report in the way", table.run("lexon", *run, "rules.txt", folder=folder).returncode, 1)

        # The interrupt key ends a check at once, here while it waits for entries.
        os.mkfifo(folder / "pipe")
        with table.subprocess.Popen([table.PROGRAMS / "lexon-lab", "check", "rules.txt", "-d", "pipe"], cwd=folder, encoding="utf-8",
                                    stderr=table.subprocess.PIPE, preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL)) as waiting:
            with open(folder / "pipe", "w"):
                waiting.send_signal(signal.SIGINT)
                waiting.wait()
            told = waiting.stderr.read()
        table.check("interrupted", (waiting.returncode, told), (-signal.SIGINT, "lexon-lab: interrupted\n"))

        # The shell, from a script.
        out = shows("a script", ["shell", "input.txt", *GRAMMAR], 1, ["over steps", "^0 errors, 0 warnings", "line 13: ", "steps N: a number"], given=SHELL.format(line=first))
        table.check("before, and after the reload", out.count("The dog slept.\n"), 2)

        # A reload reads no more than has changed on the disk.
        with table.subprocess.Popen([table.PROGRAMS / "lexon-lab", "shell", "input.txt", *GRAMMAR], cwd=folder, encoding="utf-8",
                                    stdin=table.subprocess.PIPE, stdout=table.subprocess.PIPE) as shell:
            told = []
            for changed in ("", "", "rules.txt", "entries.dic", "cr.dic"):
                if changed:
                    (folder / changed).touch()
                shell.stdin.write("reload\n")
                shell.stdin.flush()
                told.append(re.sub(r"\d+ rules", "N rules", shell.stdout.readline().rstrip()))
            shell.stdin.write("render 1\n")
            shell.stdin.close()
            told += shell.stdout.read().splitlines()[1:]
        table.check("reload", told, ["N rules loaded", "the grammar has not changed", "read again: rules.txt (N rules); not changed: entries.dic, cr.dic",
                                     "read again: entries.dic; not changed: cr.dic, rules.txt (N rules)",
                                     "read again: cr.dic; not changed: entries.dic, rules.txt (N rules)", "The dog slept."])
    table.finish()


main()
