#!/usr/bin/env python3
"""examples/amr-english: what lexon-import and the grammar make of its graphs reads as written; a walk takes no step back;
the grammar has no mistake that can be found without rendering."""
import pathlib

import _table as table

SOURCE = table.ROOT / "examples" / "amr-english"

with table.folder() as name:
    here = pathlib.Path(name)
    (here / "all.txt").write_text("".join(table.text(SOURCE / file) for file in ("words.txt", "entries.txt")))
    (here / "rules.lxr").write_text(table.text(SOURCE / "rules.lxr"))
    table.check("the dictionary", table.run("lexon-dict", "build", "all.txt", "words.dic", folder=here).stderr, "")
    table.check("the graphs", table.run("lexon-import", SOURCE / "graphs.txt", "-q", "-o", "graphs.txt", "--gold", "gold.txt",
                                        folder=here).stderr, "")
    output = table.output(["words.dic", "rules.lxr", "graphs.txt", "out.txt", "-L3", "-N0", "--quiet"], here)
    table.check("no step back", output.count("BACKTRACK"), 0)
    told = table.run("lexon-lab", "test", "gold.txt", "graphs.txt", "-d", "words.dic", "-r", "rules.lxr", folder=here)
    table.check("the sentences", (told.returncode, told.stdout), (0, ""))
    told = table.run("lexon-lab", "check", "rules.lxr", "-d", "all.txt", "-i", "graphs.txt", folder=here)
    table.check("no errors", told.stderr.splitlines()[-1].startswith("0 errors, "), True)
table.finish()
