#!/usr/bin/env python3
"""lexon-lab view: the data that a page holds, and what no text of a graph can do to it; one row a fact."""
import base64
import hashlib
import json
import os
import re
import shutil

import _table as table

GRAMMAR = ["-d", "entries.dic", "-r", "rules.txt", "-c", "cr.dic"]
SCRIPT = re.compile(r'<script type="application/json" id="(\w+)">(.*?)</script>', re.S)
FAILS = """[S:</script><!--]
thm(tired(>state).@entry.@past, dog(>animal).@def)
pat(tired(>state), "</script>\\"\udce9\x01")
[/S]
"""
LOOP = "agn(walk(>move).@entry, dog(>animal))\n"


def main():
    with table.folder() as name:
        folder = table.pathlib.Path(name)
        words = table.build_case(table.ROOT / "examples" / "english", folder)
        shutil.copy(words[2], folder / "input.txt")
        (folder / "fails.txt").write_bytes(FAILS.encode("utf-8", "surrogateescape"))

        def view(*words, path=None, grammar=GRAMMAR):
            """The status, what was told, the page, and its data by name."""
            environment = os.environ if path is None else {**os.environ, "PATH": path}
            made = table.subprocess.run([table.PROGRAMS / "lexon-lab", "view", *words, *grammar], cwd=folder, env=environment,
                                        capture_output=True, encoding="utf-8", errors="surrogateescape")
            page = table.text(folder / "view.html") if (folder / "view.html").exists() else ""
            return made.returncode, made.stderr, page, {key: json.loads(value) for key, value in SCRIPT.findall(page)}

        def texts(data, number):
            return [data["states"][state][1] for state in data["lists"][number]]

        # One sentence: its words, its steps, the window in its lists.
        status, told, page, data = view("input.txt", "-s", "1")
        table.check("told", (status, told), (0, "view.html: 1 sentence, 0 failed\n"))
        one = data["s0"]
        table.check("the words make the text", "".join(" " if text == "' '" else text for text in texts(one, one["final"])), "The dog slept.")
        table.check("relations", [(each["label"], each["used"]) for each in one["graph"]["relations"]], [("agn", True)])
        entry = one["graph"]["scopes"][0]["entry"]
        table.check("entry", one["graph"]["nodes"][entry]["name"], "sleep(>rest)")
        first = one["steps"][0]
        table.check("the first window", (texts(one, first[5]), first[6], one["rules"][first[3]]["place"].split(":")[0]), (["|", "[sleep(>rest)]", "|"], 0, "rules.txt"))
        line = int(one["rules"][first[3]]["place"].split(":")[1])
        table.check("the line of the rule", one["rules"][first[3]]["source"], table.text(folder / "rules.txt").splitlines()[line - 1])
        dog = next(state for state in one["states"] if state[1] == "dog")
        table.check("its entry", one["entries"][dog[3]][0].startswith("[dog]{"), True)
        table.check("scripts and style are those that the policy names", sorted(re.findall(r"'sha256-([^']+)'", page)),
                    sorted(base64.b64encode(hashlib.sha256(each.encode()).digest()).decode() for each in re.findall(r"<(?:script|style)>(.*?)</(?:script|style)>", page, re.S)))
        table.check("nothing is fetched", re.findall(r"<[^>]*(?:src|href)=", page), [])

        # All of them: what was taken back nests, and what stands is what explain shows.
        status, told, page, data = view("input.txt")
        for key, each in data.items():
            if key == "index" or not each["steps"]:
                continue
            ends, faults = [], []
            for number, size, kind, *_ in each["steps"]:
                while ends and number >= ends[-1][0]:
                    ends.pop()
                if ends and (number + size > ends[-1][0] or (ends[-1][1] and not kind & 16)):
                    faults.append(number)
                ends.append((number + size, kind & 16))
            out_of_sight = [step[0] for step in each["steps"] if step[5] >= 0 and not 0 <= step[6] < len(each["lists"][step[5]]) - 1]
            words = "".join(" " if text == "' '" else "" if text == "''" else text for text in texts(each, each["final"]))
            table.check(f"{key}: nesting, windows, words", (faults, out_of_sight, words.strip()), ([], [], each["text"]))
        scopes = [each for key, each in data.items() if key != "index" and len(each["graph"]["scopes"]) > 1]
        table.check("steps in scopes", all(any(step[4] > 0 for step in each["steps"]) for each in scopes) and len(scopes) > 0, True)

        # A sentence that fails, with hostile text; and without Graphviz.
        status, told, page, data = view("fails.txt", path="/nowhere")
        failed = data["s0"]
        table.check("it failed", (status, failed["status"], data["index"]["sentences"][0]["label"]), (1, "failed", "[S:</script><!--]"))
        table.check("its trouble", [line.split("(")[0] for line in failed["trouble"]["unfollowed"]], ["pat"])
        table.check("text cannot end a script", (len(SCRIPT.findall(page)), page.count("</script")), (2, 4))
        table.check("bytes that are no text", [node["name"] for node in failed["graph"]["nodes"] if "xE9" in node["name"]], ['</script>"\\xE9\x01'])
        table.check("without Graphviz", (failed["graph"]["layout"], "Graphviz (the program dot) is not installed" in told), (None, True))
        if shutil.which("dot"):
            layout = view("fails.txt")[3]["s0"]["graph"]["layout"]
            table.check("with it", [len(layout["nodes"]), [relation is None for relation in layout["relations"]]], [3, [False, False]])

        # Limits.
        (folder / "many.txt").write_text("".join(f"[S:{n}]\n{LOOP}[/S]\n" for n in range(203)))
        status, told, page, data = view("many.txt")
        table.check("the first 200", (len(data), "200 of 203 sentences" in told), (201, True))
        table.check("all", len(view("many.txt", "--all")[3]), 204)
        table.check("only what failed", len(view("many.txt", "--failed")[3]), 1)
        (folder / "loop.txt").write_text("R{}{^p:+p}P8;\nL{p:-p}{}P9;\n")
        endless = ["-d", "entries.dic", "-r", "loop.txt"]
        long = view("input.txt", "-s", "1", "--keep", "100", "--steps", "20000", grammar=endless)[3]["s0"]
        table.check("a long search keeps few steps", (len(long["steps"]) <= 150, long["kept"]["of"] > 1000, long["steps"][0][0]), (True, True, 1))
        table.check("inputs are not overwritten", (view("input.txt", "-o", "rules.txt")[0], table.text(folder / "rules.txt")[:1]), (1, ";"))
    table.finish()


if __name__ == "__main__":
    main()
