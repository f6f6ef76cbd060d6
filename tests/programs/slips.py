#!/usr/bin/env python3
"""Slips, one at a time, planted in the English example: `lexon-lab check` has to name the line. A row: what slipped,
the file, the old text, the new text, the code of the finding, and, where that is about another line than the new text,
file and text of that line. As they stand, all examples are clean."""
import json
import pathlib
import shutil

import _table as table

EXAMPLES = table.ROOT / "examples"
FILES = ("rules.txt", "entries.txt", "cr.txt", "input.txt")
R, E, C, I = FILES

SLIPS = [
    ("no colon in front of an action", R, "{[am],AUX: ['m],+tight}", "{[am],AUX ['m]+tight}", "rule-syntax"),
    ("no comma between conditions", R, "{!lead,be,ag1,^@past,", "{!lead,be,ag1^@past,", "unknown-name"),
    ("attribute of graphs misspelt", R, "{V,ING,@progress,", "{V,ING,@progres,", "unknown-name"),
    ("class of an entry misspelt", E, "(N,!art,HUM,VOW)", "(N,!art,HUM,VWO)", "unused-name"),
    ("entry missing", E, '[yesterday]{}  "yesterday(>time)"  (ADV);', "; none", "unknown-word",
     (I, "yesterday(>time)")),
    ("label of a rule misspelt", R, "+!lead:ins\"   P170", "+!lead:inx\"   P170", "unknown-label"),
    ("label of a graph misspelt", I, "ins(cut(>do)", "inx(cut(>do)", "unfollowed-label"),
    ("label of a graph too long", I, "loc(walk(>move), park", "place(walk(>move), park", "label-cut"),
    ("special rule below the general", R, "{[not]: [n't],+tight}   P230", "{[not]: [n't],+tight}   P220",
     "rule-never-first"),
    ("two rules that move to and fro", R, "R{PUNCT} {STAIL}", "L{N} {V}   P180;\nR{PUNCT} {STAIL}", "endless-pair"),
    ("its own result", R, "P:{[a],DET: [an]}", "P:{[a],DET: [a]}", "endless-rule"),
    ("brace for quote", R, ':"[because],COMP"', ":{[because],COMP}", "form-never-there"),
    ("entry without the condition", E, '[because]{}  ""                (COMP);', '[because]{}  ""                ();',
     "literal-never-fits", (R, '"[because],COMP"')),
    ("priority above 255", R, "PSR{} {SCOPE,^spelt: +spelt}   P240", "PSR{} {SCOPE,^spelt: +spelt}   P300",
     "priority-wraps"),
    ("no priority", R, "PSR{} {SCOPE,^spelt: +spelt}   P240;", "PSR{} {SCOPE,^spelt: +spelt}   ;", "no-priority"),
    ("third pattern", R, "P:{AUX,^[am]} {[not]: [n't],+tight}", "P:{AUX,^[am]} {[not]: [n't],+tight} {V}",
     "third-pattern"),
    ("last line", R, "PL{} {}   P1;", "PL{} { without", "last-line"),
    ("parenthesis missing in an entry", E, '"cat(>animal)"        (N,PL);', '"cat(>animal)"        (N,PL;',
     "entry-syntax"),
    ("scope without its entry", I, "agn:01(sleep(>rest).@entry", "agn:01(sleep(>rest)", "scope-entry"),
    ("sentence without its entry", I, "[S:1]\nagn(sleep(>rest).@entry", "[S:1]\nagn(sleep(>rest)", "no-entry"),
    ("parenthesis missing in a relation", I, "pat(see(>perceive), bird(>animal).@indef)",
     "pat(see(>perceive), bird(>animal).@indef", "graph-syntax"),
    ("sentence not closed", I, "bird(>animal).@indef)\n[/S]", "bird(>animal).@indef)\n", "sentence-in-sentence",
     (I, "[S:4]")),
    ("section misplaced", R, '"P1,^PL,^@pl,^ACC,^POSS::thm"', '"P1,^PL,^@pl,^ACC,^POSS:thm"', "section-misplaced"),
    ("semicolon for colon", R, "{set,>thm: ->thm,+agp}", "{set,>thm; ->thm,+agp}", "unknown-name"),
    ("two entries alike", E, '[very]{}       "very(>degree)"     (ADV);',
     '[very]{}       "very(>degree)"     (ADV);\n[very]{} "very(>degree)" (ADV);', "duplicate-entry",
     (E, '[very]{} "very(>degree)" (ADV)')),
    ("byte order mark", R, "; A small grammar", "\ufeff; A small grammar", "encoding"),
    # the test's own
    ("bracket that runs on", R, '"[y]: [ies],-pres,+tight"', '"[y] V: [ies],-pres,+tight"', "bracket-runs-on"),
    ("form in PRE", R, '(SHEAD)"[a]: [A]"', '([<<])"[a]: [A]"', "form-in-pre"),
    ("debt that is not paid", R, "{!of:              -!of}", "{!of}", "endless-insertion"),
    ("action among the conditions", R, ":{inner,^@not: +@not}", ":{inner,^@not,+@not}", "sign-in-condition"),
    ("label of a rule too long", R, "+!lead:ins\"   P170", "+!lead:inst\"   P170", "label-cut"),
    ("block not closed", I, "[S:4]", "[S:4]\n{org}", "unclosed", (I, "{org}")),
    ("relation outside", I, "[S:4]\n", "\n", "stray-relation", (I, "agn(give(>do).@entry.@past, she(>person))")),
    ("mark of a relation as its label", R, "+!lead:ins\"   P170", "+!lead:<ins\"   P170", "section-misplaced"),
    ("rule written twice", R, "R{PUNCT} {STAIL}", "R{END} {CTAIL} P1;\nR{PUNCT} {STAIL}", "rule-never-first",
     (R, "R{END} {CTAIL}        P1")),
    ("number of a scope", I, "agn:01(sleep(>rest).@entry", "agn:02(sleep(>rest).@entry", "scope-unused"),
    ("concept word misspelt", R, '"[[support(>past)]]', '"[[suport(>past)]]', "unknown-concept"),
    ("mark of an action misspelt", R, "+set,+!lead,+be,+psv}", "+set,+!lead,+be,+spv}", "unused-name"),
    ("class of another word class", R, "{V,ING,@progress,", "{ADJ,ING,@progress,", "never-together"),
    ("a condition that is forbidden too", R, "?{ASK} {SCOPE,stated}", "?{ASK,^ASK} {SCOPE,stated}", "contradiction"),
    ("below what leaves out boundaries alone", R, "R{PUNCT} {STAIL}", "R{N} {V} P1;\nR{PUNCT} {STAIL}", "rule-never-first",
     (R, "R{N} {V} P1")),
    ("literal misspelt", R, '"[with],PREP"', '"[wiht],PREP"', "literal-misspelt"),
    ("relation of co-occurrence misspelt", R, ":::/time/\"", ":::/tme/\"", "unknown-relation"),
    ("relation of a pair misspelt", C, "[decision/support/make]", "[decision/suport/make]", "pair-idle"),
    ("word of a pair misspelt", C, "[decision/support/make]", "[desicion/support/make]", "pair-idle"),
    ("class of a member misspelt", C, '[sup]{cup} "sup#unit"', '[sup]{cup} "sup#unnit"', "pair-idle"),
    ("strength above 255", C, '[day/time/on]{} "" () <E,0,200>', '[day/time/on]{} "" () <E,0,300>', "priority-wraps"),
    ("two words that govern all others", I, "pat(see(>perceive), bird(>animal).@indef)",
     "pat(see(>perceive), bird(>animal).@entry)", "second-entry"),
    ("mark of the relation kept", R, "{>fre: ->fre}", "{>fre}", "relation-mark"),
    ("mark of another relation taken", R, "{>fre: ->fre}", "{>fre: ->loc}", "relation-mark"),
    ("mark of another relation paid", R, "{>fre: ->fre}", "{>loc: ->loc}", "relation-mark"),
    ("priority without its last digit", R, '+!lead:ins"   P170;', '+!lead:ins"   P17;', "priority-stands-out"),
    ("another priority within a row", R, "{!lead,will: -!lead}  P200", "{!lead,will: -!lead}  P150", "priority-stands-out"),
    ("concept word without quotes", E, '"very(>degree)"     (ADV)', 'very(>degree)     (ADV)', "concept-unquoted"),
    ("entry without its class", E, '"cat(>animal)"        (N,PL);', '"cat(>animal)"        (PL);', "entry-class"),
    ("plural without its mark", E, '"cat(>animal)"        (N,PL);', '"cat(>animal)"        (N,!art);', "entry-twin",
     (E, "[cats]{}")),
    ("label of another sentence", I, "[S:4]\nagn(give", "[S:3]\nagn(give", "label-twice"),
    ("two rules in a line", R, "P190;  often\n", "P190;  ", "line-runs-on"),
    ("two entries in a line", E, "(N,!art);\n[cats]", "(N,!art); [cats]", "line-runs-on"),
    ("one file in another encoding", E, "[tea]", "[t\udce9a]", "encoding"),
    ("parenthesis for brace", R, "{!of:              -!of}", "{!of:              -!of)", "rule-syntax"),
]


def check(folder, *more):
    made = table.run("lexon-lab", "check", "rules.txt", "-d", "entries.txt", "-c", "cr.txt", "-i", "input.txt",
                     "--format", "json", *more, folder=folder)
    return made.returncode, json.loads(made.stdout or "[]")


def line_of(text, piece):
    return text[:text.index(piece)].count("\n") + 1


def slip(source, what, file, old, new, code, place=None):
    with table.folder() as name:
        target = pathlib.Path(name)
        for one in FILES:
            shutil.copy(source / one, target / one)
        text = table.text(target / file)
        if not table.check(f"{what}: the text is there", old in text, True):
            return
        text = text.replace(old, new, 1)
        (target / file).write_bytes(text.encode(errors="surrogateescape"))
        place_file, piece = place or (file, new)
        if not table.check(f"{what}: the line is there", piece in table.text(target / place_file), True):
            return
        line = line_of(table.text(target / place_file), piece)
        _, findings = check(target)
        found = {(f["file"], f.get("line"), f["code"]) for f in findings}
        if not table.check(what, (place_file, line, code) in found, True):
            for one in sorted(found, key=str):
                print("   ", *one)


def clean():
    """No errors and no warnings where nothing is wrong, with entries as text and built."""
    for source in sorted(path.parent for path in EXAMPLES.glob("**/rules.txt")):
        if not (source / "expected.txt").exists():
            continue
        graphs = source / "input.txt" if (source / "input.txt").exists() else source.parent / "input.txt"
        pairs = ["-c", "cr.txt"] if (source / "cr.txt").exists() else []
        with table.folder() as name:
            built = pathlib.Path(name) / "words.dic"
            table.run("lexon-dict", "build", source / "entries.txt", built)
            for words in ("entries.txt", built):
                made = table.run("lexon-lab", "check", "rules.txt", "-d", words, *pairs, "-i", graphs, "--strict",
                                 folder=source)
                table.check(f"{source.name} is clean with {words}", made.returncode, 0)
                if made.returncode:
                    print("\n".join(line for line in made.stdout.splitlines() if ": note:" not in line))


SOURCE = """%list TENSES = past progres

%for t in TENSES
?{V,@%t}   {^STAIL}   P40;
%end
R{} {}   P1;
R{N} {}   P300;
"""


def forms():
    """Findings in a grammar source lie there; the three forms of the output, codes that are left out, and the status."""
    with table.folder() as name:
        target = pathlib.Path(name)
        (target / "main.lxr").write_text(SOURCE)
        (target / "entries.txt").write_text('[see]{} "see" (V);\n[dog]{} "dog" (N);\n')
        (target / "input.txt").write_text("[S:1]\nagn(see.@entry.@past, dog)\npat(see.@progress, dog)\n[/S]\n")
        words = ["check", "main.lxr", "-d", "entries.txt", "-i", "input.txt", "--no", "unfollowed-label", "--no",
                 "unused-name"]
        for more, status, told in [
            ([], 1, "main.lxr:4:5: warning: nothing gives @progres (with t=progres) [unknown-name]\n"
                    "  fix: did you mean @progress?\n"
                    "main.lxr:7:11: error: P300 counts as P44 [priority-wraps]\n"
                    "  fix: use a priority of 1 to 255\n"),
            (["--no", "priority-wraps", "--no", "unknown-name"], 0, ""),
            (["--no", "priority-wraps", "--strict"], 1, ...),
            (["--no", "nonsense"], 1, ""),
        ]:
            made = table.run("lexon-lab", *words, *more, folder=target)
            table.check(f"check {more}: status", made.returncode, status)
            if told is not ...:
                table.check(f"check {more}", made.stdout, told)
        (target / "more.txt").write_text('[cat]{} "cat" (N);\n[dog]{} "dog" (N);\n')
        made = table.run("lexon-lab", "check", "main.lxr", "-d", "entries.txt", "-d", "more.txt", folder=target)
        table.check("an entry in two files", "more.txt:2:1: warning: the same entry stands in entries.txt, line 2 "
                    "[duplicate-entry]" in made.stdout, True)
        (target / "bad.lxr").write_text("%for t in TENSES\nR{} {} P1;\n")
        made = table.run("lexon-lab", "check", "bad.lxr", "--format", "json", folder=target)
        table.check("a source that cannot be expanded", [(f["line"], f["code"]) for f in json.loads(made.stdout)],
                    [(1, "source-syntax")])
        made = table.run("lexon-lab", *words, "--format", "sarif", folder=target)
        run = json.loads(made.stdout)["runs"][0]
        codes = {rule["id"] for rule in run["tool"]["driver"]["rules"]}
        table.check("SARIF: codes", {result["ruleId"] for result in run["results"]} <= codes, True)
        region = run["results"][0]["locations"][0]["physicalLocation"]["region"]
        table.check("SARIF: place", region, {"startLine": 4, "startColumn": 5, "endColumn": 7})


def main():
    clean()
    forms()
    for row in SLIPS:
        slip(EXAMPLES / "english", *row)
    table.finish()


main()
