#!/usr/bin/env python3
"""lexon-lab lsp by its bytes: frames, broken messages, order of life, and what a place answers; one row a fact. The
protocol as an editor's own client speaks it is tested by tools/editor-test."""
import json
import shutil

import _table as table

SOURCE = table.ROOT / "examples" / "english"


class Client:
    """A server, and the messages that came from it."""

    def __init__(self, folder):
        self.process = table.subprocess.Popen([table.PROGRAMS / "lexon-lab", "lsp"], cwd=folder, stdin=table.subprocess.PIPE,
                                              stdout=table.subprocess.PIPE, stderr=table.subprocess.DEVNULL)
        self.number = 0
        self.told = []

    def raw(self, data):
        self.process.stdin.write(data)
        self.process.stdin.flush()

    def send(self, **message):
        body = json.dumps({"jsonrpc": "2.0", **message}).encode()
        self.raw(b"Content-Length: %d\r\n\r\n" % len(body) + body)

    def read(self):
        length = 0
        while line := self.process.stdout.readline().strip():
            length = int(line.split(b":")[1])
        return json.loads(self.process.stdout.read(length))

    def tell(self, method, **params):
        self.send(method=method, params=params)

    def ask(self, method, **params):
        """The result, or the code of the error."""
        self.number += 1
        self.send(id=self.number, method=method, params=params)
        return self.answer(self.number)

    def answer(self, number):
        while True:
            message = self.read()
            if "id" in message and "method" not in message and message["id"] == number:
                return message["result"] if "result" in message else message["error"]["code"]
            self.told.append(message)

    def findings(self, uri, wanted):
        """The findings of a document, read on till `wanted` holds for their codes."""
        while True:
            for message in self.told:
                params = message.get("params", {})
                if message.get("method") == "textDocument/publishDiagnostics" and params["uri"] == uri:
                    if wanted([each.get("code") for each in params["diagnostics"]]):
                        self.told.clear()
                        return params["diagnostics"]
            self.told = [self.read()]

    def begin(self, folder, **options):
        return self.ask("initialize", processId=None, rootUri=folder.as_uri(), capabilities={}, initializationOptions={"delay": 1, **options})

    def open(self, path):
        self.tell("textDocument/didOpen", textDocument={"uri": path.as_uri(), "languageId": "", "version": 1, "text": table.text(path)})

    def end(self):
        self.ask("shutdown")
        self.tell("exit")
        return self.process.wait(60)


def place(path, line_text, column):
    """The place `column` characters into the first line that holds the text."""
    for number, line in enumerate(table.text(path).splitlines()):
        if line_text in line:
            return {"textDocument": {"uri": path.as_uri()}, "position": {"line": number, "character": line.index(line_text) + column}}
    raise LookupError(line_text)


def applied(path, edits):
    """The text with the edits, which lie in one line each."""
    lines = table.text(path).split("\n")
    for edit in sorted(edits, key=lambda each: (each["range"]["start"]["line"], -each["range"]["start"]["character"])):
        begin, end = edit["range"]["start"], edit["range"]["end"]
        line = lines[begin["line"]].encode("utf-16-le")
        lines[begin["line"]] = (line[:2 * begin["character"]] + edit["newText"].encode("utf-16-le") + line[2 * end["character"]:]).decode("utf-16-le")
    return "\n".join(lines)


def life(folder):
    client = Client(folder)
    rows = [
        ("nothing before initialize", lambda: client.ask("textDocument/hover"), -32002),
        ("initialize with a folder that is none", lambda: client.ask("initialize", workspaceFolders=[{}]), -32602),
        ("nothing behind it either", lambda: client.tell("textDocument/didOpen", textDocument={"uri": "file:///a", "version": 1, "text": ""}), None),
        ("initialize", lambda: client.begin(folder)["capabilities"]["positionEncoding"], "utf-16"),
        ("initialize twice", lambda: client.begin(folder), -32600),
        ("a method that is none", lambda: client.ask("textDocument/none"), -32601),
        ("a place without a place", lambda: client.ask("textDocument/hover", textDocument=3), -32602),
        ("a document that is not open", lambda: client.ask("textDocument/hover", textDocument={"uri": "file:///none"}, position={"line": 0, "character": 0}), None),
        ("shutdown", lambda: client.ask("shutdown"), None),
        ("nothing behind shutdown", lambda: client.ask("textDocument/hover"), -32600),
    ]
    for name, found, wanted in rows:
        table.check(name, found(), wanted)
    client.tell("exit")
    table.check("exit behind shutdown", client.process.wait(60), 0)
    for name, data in [("exit without shutdown", b'Content-Length: 33\r\n\r\n{"jsonrpc":"2.0","method":"exit"}'), ("the end of the input", b""), ("half a message", b"Content-Length: 900\r\n\r\n{")]:
        client = Client(folder)
        client.raw(data)
        client.process.stdin.close()
        table.check(name, client.process.wait(60), 1)

    client = Client(folder)
    client.begin(folder)
    broken = [
        ("no JSON", b'Content-Length: 5\r\n\r\n{"a":', -32700),
        ("no object", b"Content-Length: 2\r\n\r\n[]", -32600),
        ("no method", b'Content-Length: 8\r\n\r\n{"id":1}', -32600),
        ("no length", b"Content-Type: text\r\n\r\n", -32600),
        ("a length that is no number", b"Content-Length: x\r\n\r\n", -32600),
        ("an empty message", b"Content-Length: 0\r\n\r\n", -32700),
        ("bytes that are no UTF-8", b'Content-Length: 11\r\n\r\n{"id":"\xff"} ', -32700),
        ("ends of lines of one character, and another head", b"content-length:2\nX-Other: 1\n\n[]", -32600),
    ]
    for name, data, code in broken:
        client.raw(data)
        table.check(name, client.read()["error"]["code"], code)
    deep = b"[" * 200000
    client.raw(b"Content-Length: %d\r\n\r\n" % len(deep) + deep)
    table.check("deep nesting", client.read()["error"]["code"], -32700)
    client.tell("$/cancelRequest", id=77)
    client.tell("textDocument/didChange", textDocument={"uri": "file:///none", "version": 2}, contentChanges=[{"text": ""}])
    client.tell("$/unknown")
    table.check("still there", client.ask("none"), -32601)
    table.check("ends", client.end(), 0)


def changes(folder):
    """Changes that come together: each counts in the text that those before it have left."""
    path = folder / "rules.txt"
    path.write_text("one P1;\ntwo P1;\nthree P1;\n")
    client = Client(folder)
    client.begin(folder)
    for name, made, wanted in [
        ("from the end", [(2, 0, 2, 5, "drei"), (0, 0, 0, 3, "eins")], [("eins", 0), ("two", 1), ("drei", 2)]),
        ("from the begin, with more lines", [(0, 0, 0, 0, "null P1;\n\n"), (2, 0, 2, 3, "eins")], [("null", 0), ("eins", 2), ("two", 3), ("three", 4)]),
        ("with fewer lines", [(0, 3, 1, 3, ""), (1, 0, 1, 5, "drei")], [("one", 0), ("drei", 1)]),
        ("ends of lines that become one", [(0, 7, 1, 0, "\r"), (1, 0, 1, 0, "\n")], [("one", 0), ("two", 1), ("three", 2)]),
        ("the last line", [(3, 0, 3, 0, "four P1;"), (99, 0, 99, 9, "\nfive P1;")], [("one", 0), ("two", 1), ("three", 2), ("four", 3), ("five", 4)]),
        ("the whole text among them", [(0, 0, 3, 0, ""), "six P1;\n", (0, 0, 0, 3, "\U0001d11e"), (0, 2, 0, 2, "7")], [("\U0001d11e7", 0)]),
    ]:
        client.open(path)
        texts = [{"text": each} if isinstance(each, str) else
                 {"range": {"start": {"line": each[0], "character": each[1]}, "end": {"line": each[2], "character": each[3]}}, "text": each[4]} for each in made]
        client.tell("textDocument/didChange", textDocument={"uri": path.as_uri(), "version": 2}, contentChanges=texts)
        outline = client.ask("textDocument/documentSymbol", textDocument={"uri": path.as_uri()})
        table.check(f"changes: {name}", [(each["name"], each["location"]["range"]["start"]["line"]) for each in outline], wanted)
    table.check("ends", client.end(), 0)


def english(folder):
    for each in ("rules.txt", "entries.txt", "cr.txt", "input.txt"):
        shutil.copy(SOURCE / each, folder)
    pairs = table.build_case(folder, folder / "built") if (folder / "built").mkdir() is None else []
    table.run("lexon-lab", "coverage", "../input.txt", "-d", pairs[0], "-r", "rules.txt", "-c", "cr.dic", "--data", "../coverage.json", folder=folder / "built")
    rules, entries, graphs = folder / "rules.txt", folder / "entries.txt", folder / "input.txt"
    client = Client(folder)
    client.begin(folder)
    client.open(rules)
    client.open(graphs)
    before = client.findings(rules.as_uri(), lambda codes: True)
    table.check("no error in the example", [each for each in before if each["severity"] == 1], [])

    def hover(*words):
        found = client.ask("textDocument/hover", **place(*words))
        return found and found["contents"]["value"]

    for name, words, wanted in [
        ("an attribute", (rules, "V,PAST,@past", 8), ["attribute @past", "given in graphs in", "asked for by"]),
        ("a label", (graphs, "agn(sleep", 1), ["relation agn", "stands in", "followed by"]),
        ("the mark of a label", (rules, "->agn", 2), ["relation agn"]),
        ("a rule", (rules, ":{[<<]} {V,PAST", 0), ["fired 28 times in the last run", "over 64 sentences"]),
        ("a word", (graphs, "dog(>animal)", 1), ["concept word dog(>animal)", "[dogs]", "entries.txt:"]),
    ]:
        found = hover(*words)
        table.check(f"hover: {name}", [each for each in wanted if each not in str(found)], [])

    # A rename changes whole names in all files, and what is then rendered is the same.
    for old, new, at in [("@past", "@früher", (rules, "V,PAST,@past", 8)), ("agn", "sub", (graphs, "agn(sleep", 1)), ("/time/", "/zeit/", (rules, "/time/", 1))]:
        changes = client.ask("textDocument/rename", newName=new, **place(*at))["changes"]
        copy = folder / f"renamed-{new.strip('@/')}"
        copy.mkdir()
        for each in ("rules.txt", "entries.txt", "cr.txt", "input.txt"):
            uri = (folder / each).as_uri()
            (copy / each).write_text(applied(folder / each, changes.get(uri, [])))
        texts = []
        for source in (folder, copy):
            words = table.build_case(source, copy / "built") if (copy / "built").mkdir(exist_ok=True) is None else []
            words[2] = source / "input.txt"
            table.run("lexon", *words, "-L0", "-N0", folder=copy / "built")
            texts.append(table.TIME_LINE.sub("", table.text(copy / "built" / "out.txt")))
        table.check(f"rename: {old} to {new} says the same", texts[0], texts[1])
        left = table.run("lexon-lab", "check", "rules.txt", "-d", "entries.txt", "-c", "cr.txt", "-i", "input.txt", "--format", "json", folder=copy)
        table.check(f"rename: no new finding for {new}", len(json.loads(left.stdout)), len(json.loads(table.run("lexon-lab", "check", "rules.txt", "-d", "entries.txt", "-c", "cr.txt", "-i", "input.txt", "--format", "json", folder=folder).stdout)))
    for name, new, at in [
        ("a built-in", "other", (rules, "@entry,+set", 1)), ("to a built-in", "SHEAD", (rules, "V,PAST,@past", 8)), ("to nothing", "", (rules, "V,PAST,@past", 8)),
        ("to two names", "a,b", (rules, "V,PAST,@past", 8)), ("to a name that is there", "@def", (rules, "V,PAST,@past", 8)), ("a label of four", "subj", (graphs, "agn(sleep", 1)),
        ("a form", "x", (entries, "[dog]", 2)),
    ]:
        client.open(at[0])
        table.check(f"rename refused: {name}", client.ask("textDocument/rename", newName=new, **place(*at)), -32803)

    # Unsaved text: found while it is typed, mended by its remedy, in units of UTF-16.
    lines = table.text(rules).split("\n")
    at = len(lines) - 1
    typed = "R{[\U0001d11e],@pasd} {N} P1;\n"
    client.tell("textDocument/didChange", textDocument={"uri": rules.as_uri(), "version": 2},
                contentChanges=[{"range": {"start": {"line": at, "character": 0}, "end": {"line": at, "character": 0}}, "text": typed}])
    found = [each for each in client.findings(rules.as_uri(), lambda codes: "unknown-name" in codes) if each["code"] == "unknown-name"]
    table.check("found while it is typed", [(each["range"]["start"], each["range"]["end"]) for each in found], [({"line": at, "character": 7}, {"line": at, "character": 12})])
    actions = client.ask("textDocument/codeAction", textDocument={"uri": rules.as_uri()}, range=found[0]["range"], context={"diagnostics": found})
    table.check("its remedy", [edit["newText"] for action in actions for edit in action["edit"]["changes"][rules.as_uri()] if edit["range"] == found[0]["range"]], ["@past"])
    for name, typed, column, wanted in [("attributes", ":{@pa", 5, "@past"), ("actions", ":{V: +!ar", 9, "!art"), ("labels", ':"N::ag', 7, "agn"), ("concepts", ":{[[dog", 7, "dog(>animal)"), ("behind a comma", ":{V,", 4, "PAST")]:
        client.tell("textDocument/didChange", textDocument={"uri": rules.as_uri(), "version": 3}, contentChanges=[{"text": typed + "\n" + "\n".join(lines)}])
        items = client.ask("textDocument/completion", textDocument={"uri": rules.as_uri()}, position={"line": 0, "character": column})["items"]
        table.check(f"completion: {name}", wanted in [item["label"] for item in items], True)
    client.tell("textDocument/didChange", textDocument={"uri": rules.as_uri(), "version": 4}, contentChanges=[{"text": "\n".join(lines)}])
    outline = client.ask("textDocument/documentSymbol", textDocument={"uri": graphs.as_uri()})
    table.check("outline", "[S:1]" in [each["name"] for each in outline], True)
    folds = client.ask("textDocument/foldingRange", textDocument={"uri": graphs.as_uri()})
    table.check("sentences fold", len(folds) >= table.text(graphs).count("[/S]"), True)
    definition = client.ask("textDocument/definition", **place(graphs, "dog(>animal)", 1))
    table.check("definition of a word", {each["uri"] for each in definition}, {entries.as_uri()})
    # Places come under the name that the editor has for them.
    (folder / "over").symlink_to(folder)
    client.tell("textDocument/didClose", textDocument={"uri": graphs.as_uri()})
    linked = folder / "over" / "input.txt"
    client.open(linked)
    found = client.ask("textDocument/references", context={"includeDeclaration": True}, **place(linked, "agn(sleep", 1))
    table.check("over a link", {each["uri"] for each in found}, {linked.as_uri(), rules.as_uri()})
    table.check("ends in the midst", client.end(), 0)


def source(folder):
    shutil.copy(SOURCE / "entries.txt", folder)
    path = folder / "rules.lxr"
    path.write_text("%list MARKS = @past @pasd\n%for m in MARKS\nR{V,%m} {N} P1;\n%end\n")
    client = Client(folder)
    client.begin(folder, project={"rules": "rules.lxr", "entries": "entries.txt", "graphs": str(SOURCE / "input.txt")})
    client.open(path)
    found = client.findings(path.as_uri(), lambda codes: "unknown-name" in codes)
    table.check("a finding lies in the source", [each["range"]["start"]["line"] for each in found if each["code"] == "unknown-name"], [2])
    table.check("the loop is named", "with m=@pasd" in str(found), True)
    definition = client.ask("textDocument/definition", **place(path, "in MARKS", 4))
    table.check("definition of a list", [each["range"]["start"]["line"] for each in definition], [0])
    changes = client.ask("textDocument/rename", newName="@gone", **place(path, "= @past", 3))["changes"]
    table.check("a value is renamed", applied(path, changes[path.as_uri()]).splitlines()[0], "%list MARKS = @gone @pasd")
    client.tell("textDocument/didChange", textDocument={"uri": path.as_uri(), "version": 2}, contentChanges=[{"text": "%for m in NONE\n%end\n"}])
    table.check("a source that fails", len(client.findings(path.as_uri(), lambda codes: "source-syntax" in codes)), 1)
    table.check("ends", client.end(), 0)


def main():
    for part in (life, changes, english, source):
        with table.folder() as name:
            part(table.pathlib.Path(name).resolve())
    table.finish()


main()
