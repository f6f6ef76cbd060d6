#!/usr/bin/env python3
"""examples/amr-english: what lexon-import and the grammar make of its graphs reads as written; the files that make-rules
writes are up to date; a walk takes no step back."""
import pathlib
import sys

import _table as table

SOURCE = table.ROOT / "examples" / "amr-english"

with table.folder() as name:
    here = pathlib.Path(name)
    made = table.run(sys.executable, SOURCE / "make-rules", table.ROOT / "src/import/roles.tsv", here / "literals.txt")
    table.check("rules.txt is what make-rules writes", made.stdout == table.text(SOURCE / "rules.txt"), True)
    table.check("literals.txt is what make-rules writes", table.text(here / "literals.txt"), table.text(SOURCE / "literals.txt"))
    (here / "all.txt").write_text("".join(table.text(SOURCE / file) for file in ("words.txt", "literals.txt", "entries.txt")))
    (here / "rules.txt").write_text(table.text(SOURCE / "rules.txt"))
    table.check("the dictionary", table.run("lexon-dict", "build", "all.txt", "words.dic", folder=here).stderr, "")
    table.check("the graphs", table.run("lexon-import", SOURCE / "graphs.txt", "-q", "-o", "graphs.txt", "--gold", "gold.txt",
                                        folder=here).stderr, "")
    output = table.output(["words.dic", "rules.txt", "graphs.txt", "out.txt", "-L3", "-N0", "--quiet"], here)
    table.check("no step back", output.count("BACKTRACK"), 0)
    told = table.run("lexon-lab", "test", "gold.txt", "graphs.txt", "-d", "words.dic", "-r", "rules.txt", folder=here)
    table.check("the sentences", (told.returncode, told.stdout), (0, ""))
table.finish()
