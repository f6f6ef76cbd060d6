#!/usr/bin/env python3
"""lexon-lab serve from outside: who is refused, what files it lets out and takes in, and that no rules keep it busy."""
import http.client
import json
import os
import shutil
import signal
import socket
import stat
import subprocess
import threading
import time
import urllib.parse

from _table import ENDLESS as ENDLESS_GRAPH
from _table import ENDLESS_ENTRIES, ENDLESS_RULES, PROGRAMS, ROOT, check, finish, folder

EXAMPLE = ROOT / "examples" / "english"


class Page:
    def __init__(self, work, *words, **places):
        self.process = subprocess.Popen([PROGRAMS / "lexon-lab", "serve", work, *map(str, words)], stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True, env=os.environ | places)
        self.address = self.process.stdout.readline().strip()
        parts = urllib.parse.urlsplit(self.address)
        self.port, self.path = parts.port, parts.path

    def send(self, method, path, body=None, headers=None, host=None):
        """Status and body of an answer; headers that are None are left out."""
        link = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        link.putrequest(method, path, skip_host=True, skip_accept_encoding=True)
        sent = {"Host": host or f"127.0.0.1:{self.port}"}
        if body is not None:
            sent |= {"Content-Type": "application/json", "Content-Length": str(len(body))}
        for name, value in (sent | (headers or {})).items():
            if value is not None:
                link.putheader(name, value)
        link.endheaders()
        if body is not None:
            link.send(body)
        answer = link.getresponse()
        return answer.status, answer.read().decode("utf-8", "replace")

    def ask(self, name, **asked):
        status, text = self.send("POST", self.path + "api/" + name, json.dumps({"client": "test"} | asked).encode())
        return status, json.loads(text) if text.startswith("{") else text

    def end(self, how=signal.SIGINT):
        self.process.send_signal(how)
        _, told = self.process.communicate(timeout=60)
        return self.process.returncode, told.splitlines()[-1]


def refusals(page):
    """Requests that are not the page's own."""
    own = page.path
    asked = b'{"path":"rules.lxr"}'
    port = f":{page.port}"
    rows = [
        # method, path, body, headers, status
        ("GET", own, None, {}, 200),
        ("GET", own, None, {"Host": "localhost" + port}, 200),
        ("GET", own, None, {"Sec-Fetch-Site": "cross-site"}, 200),  # a link that the browser was opened with
        ("GET", own[:-1], None, {}, 302),
        ("GET", own + "app.js", None, {}, 200),
        ("GET", own + "../app.js", None, {}, 404),
        ("GET", own + "rules.lxr", None, {}, 404),
        ("GET", "/", None, {}, 403),
        ("GET", "/app.js", None, {}, 403),
        ("GET", own[:-2] + "/", None, {}, 403),
        ("GET", own[:-2] + ("0" if own[-2] != "0" else "1") + "/", None, {}, 403),
        ("GET", own.upper(), None, {}, 403),
        ("GET", "/x/.." + own, None, {}, 403),
        ("POST", "/api/read", asked, {}, 403),
        ("POST", own + "api/read", asked, {}, 200),
        ("GET", own, None, {"Host": None}, 421),
        ("GET", own, None, {"Host": "evil.example" + port}, 421),
        ("GET", own, None, {"Host": "127.0.0.1.evil.example" + port}, 421),
        ("GET", own, None, {"Host": "127.0.0.1"}, 421),
        ("GET", own, None, {"Host": "127.0.0.1:1"}, 421),
        ("POST", own + "api/read", asked, {"Origin": f"http://127.0.0.1{port}"}, 200),
        ("POST", own + "api/read", asked, {"Origin": "http://evil.example"}, 403),
        ("POST", own + "api/read", asked, {"Origin": "null"}, 403),
        ("POST", own + "api/read", asked, {"Origin": f"http://localhost{port}"}, 403),
        ("POST", own + "api/read", asked, {"Sec-Fetch-Site": "same-site"}, 403),
        ("POST", own + "api/read", asked, {"Content-Type": "text/plain"}, 415),
        ("POST", own + "api/read", asked, {"Content-Encoding": "gzip"}, 415),
        ("POST", own + "api/read", asked, {"Content-Length": None, "Transfer-Encoding": "chunked"}, 411),
        ("POST", own + "api/read", asked, {"Content-Length": str(1 << 40)}, 413),
        ("POST", own + "api/read", b"[" * 100000, {}, 422),
        ("POST", own + "api/read", b"{", {}, 400),
        ("POST", own + "api/read", b'{"path":7}', {}, 400),
        ("POST", own + "api/nothing", b'{"client":"a"}', {}, 404),
        ("POST", own + "rules.lxr", b"{}", {}, 404),
        ("PUT", own + "api/read", asked, {}, 405),
        ("DELETE", own, None, {}, 405),
        ("GET", own + "a" * 400, None, {}, 414),
    ]
    for method, path, body, headers, status in rows:
        name = f"{method} {path.replace(own, '<own>')[:60]} {body and body[:30]} {headers}"
        check(name, page.send(method, path, body, headers)[0], status)


def paths(page, work, outside):
    """Files that are not the project's, by every road."""
    rows = ["../secret.txt", "/etc/passwd", str(outside), "", ".", "..", "a/../../secret.txt", "./rules.lxr", "rules.lxr/",
            "a//b", "..\\secret.txt", "%2e%2e/secret.txt", "..%2fsecret.txt", "rules.lxr\0.txt", "link.txt", "linked/secret.txt",
            ".hidden", ".git/config", "pipe", "folder", "a" * 5000, "file:///etc/passwd", "C:\\secret.txt", "~/secret.txt"]
    stamp = page.ask("read", path="rules.lxr")[1]["stamp"]
    for path in rows:
        status, answer = page.ask("read", path=path)
        check(f"read {path!r:.40} is refused", (status in (403, 404), "hush" in str(answer)), (True, False))
        for its in ("", stamp):
            status, answer = page.ask("save", path=path, text="taken", stamp=its)
            check(f"save {path!r:.40} is refused", status in (403, 404, 409, 422) or path.startswith("%2e"), True)
    for path in ("../secret.txt", "link.txt", str(outside)):
        status, answer = page.ask("render", graphs="input.txt", line=9, texts={
            "rules.lxr": f'%include "{path}"\n'})
        check(f"include {path!r:.40} tells nothing", "hush" in json.dumps(answer), False)
        check(f"include {path!r:.40} is told", "no path of a file" in str(answer) or "symbolic link" in str(answer), True)
    check("nothing outside has changed", outside.read_text(), "hush\n")
    check("a text for a file outside is refused", page.ask("check", texts={"../x": ""})[0], 422)
    check("other graphs are refused", page.ask("render", graphs="rules.lxr", line=1)[0], 422)


def saving(page, work):
    rules = work / "rules.lxr"
    rules.chmod(0o640)
    text = rules.read_text()
    read = page.ask("read", path="rules.lxr")[1]
    check("the text is that of the file", read["text"], text)
    status, saved = page.ask("save", path="rules.lxr", text=text + "; é\n", stamp=read["stamp"])
    check("saved", (status, rules.read_text()), (200, text + "; é\n"))
    check("the mode stays", stat.S_IMODE(rules.stat().st_mode), 0o640)
    check("no draft is left", [path.name for path in work.iterdir() if path.name.startswith(".lexon")], [])
    status, answer = page.ask("save", path="rules.lxr", text="mine", stamp=read["stamp"])
    check("an old stamp is a conflict", (status, answer["stamp"], rules.read_text()), (409, saved["stamp"], text + "; é\n"))
    rules.write_text("theirs")
    check("a change from elsewhere is noticed", page.ask("stamps", paths=["rules.lxr"])[1]["stamps"]["rules.lxr"] != saved["stamp"], True)
    status, _ = page.ask("save", path="rules.lxr", text="mine", stamp=saved["stamp"])
    check("and nothing is overwritten", (status, rules.read_text()), (409, "theirs"))
    rules.unlink()
    status, answer = page.ask("save", path="rules.lxr", text="mine", stamp=saved["stamp"])
    check("a file that has gone is a conflict", (status, answer["stamp"], rules.exists()), (409, "", False))
    check("it can be made anew", (page.ask("save", path="rules.lxr", text=text, stamp="")[0], rules.read_text()), (200, text))

    (work / "latin.txt").write_bytes(b"ok\nd\xe9j\xe0\n")
    status, answer = page.ask("read", path="latin.txt")
    check("what is no UTF-8 is refused with its line", (status, "latin.txt:2:" in answer["error"]), (415, True))
    check("and stays", page.ask("save", path="latin.txt", text="x", stamp="")[0], 422)
    check("as it was", (work / "latin.txt").read_bytes(), b"ok\nd\xe9j\xe0\n")


def working(page):
    graphs = (EXAMPLE / "input.txt").read_text()
    line = graphs[:graphs.index("[S:2]")].count("\n") + 1
    status, answer = page.ask("render", graphs="input.txt", line=line + 1)
    check("the sentence under the keys", (answer["label"], answer["text"], answer["line"]), ("S:2", "Two dogs are walking in the park.", line))
    typed = graphs.replace("agn(walk(>move).@entry.@progress", "agn(walk(>move).@entry.@past")
    check("what is not saved counts", page.ask("render", graphs="input.txt", line=line, texts={"input.txt": typed})[1]["text"],
          "Two dogs walked in the park.")
    words = (EXAMPLE / "entries.txt").read_text().replace("[dogs]", "[hounds]")
    check("words too", page.ask("render", graphs="input.txt", line=line, texts={"entries.txt": words})[1]["text"],
          "Two hounds are walking in the park.")
    rules = (EXAMPLE / "rules.lxr").read_text()
    typed = rules + ":{new} {} P3;\n"
    _, answer = page.ask("check", texts={"rules.lxr": typed})
    check("findings of what is not saved", [(each["file"], each["line"]) for each in answer["findings"] if each["code"] == "endless-rule"],
          [("rules.lxr", typed.count("\n"))])
    run = {"sentences": [], "next": 0}
    while run["next"] is not None:
        _, part = page.ask("run", **{"from": run["next"]})
        run = part | {"sentences": run["sentences"] + part["sentences"]}
    check("all sentences are as expected", {each["good"] for each in run["sentences"]}, {True})
    check("with coverage", any(row[0] == "rules.lxr" and row[2] > 0 for row in run["coverage"]), True)
    _, view = page.ask("view", graphs="input.txt", line=line)
    check("the steps", view["view"]["text"], "Two dogs are walking in the park.")


ENDLESS = {"rules.lxr": ENDLESS_RULES, "entries.txt": ENDLESS_ENTRIES, "input.txt": ENDLESS_GRAPH.format(1)}


def endless(page):
    """Rules without end: the next request gives the former up, the time limit ends the last, and others go on."""
    found = []
    thread = threading.Thread(target=lambda: found.append(page.ask("render", graphs="input.txt", line=1, texts=ENDLESS)[1]))
    thread.start()
    statuses = set()
    while thread.is_alive():  # the first turns may come before the request without end
        statuses |= {page.ask("render", client=client, graphs="input.txt", line=20)[1]["status"] for client in ("other", "test")}
        time.sleep(0.05)
    check("another page is served meanwhile, and the same page", statuses, {"done"})
    check("the former is given up", found, [{"superseded": True}])
    status, answer = page.ask("render", graphs="input.txt", line=1, texts=ENDLESS)
    check("the time limit ends it", answer["status"], "over time")
    check("a request that was overtaken is given up", [page.ask("render", graphs="input.txt", line=20, turn=turn)[1].get("status")
                                                       for turn in (100, 99, 101)], ["done", None, "done"])
    idle = [socket.create_connection(("127.0.0.1", page.port)) for _ in range(12)]
    check("connections that say nothing do no harm", page.send("GET", page.path)[0], 200)
    for each in idle:
        each.close()


def ends(base):
    """What is left of a program that was killed, and what a program that ends waits for."""
    room = base / "temporary"
    room.mkdir()
    pages = [Page(EXAMPLE, TMPDIR=str(room)) for _ in range(2)]
    for page in pages:
        page.ask("render", graphs="input.txt", line=1)
    check("each has a folder for its words and one for its pairs", len(list(room.iterdir())), 4)
    for each in room.iterdir():
        os.utime(each, (0, 0))
    pages[0].process.kill()
    pages[0].process.communicate()
    after = Page(EXAMPLE, TMPDIR=str(room))
    after.ask("render", graphs="input.txt", line=1)
    check("those of the killed one are gone", len(list(room.iterdir())), 4)
    check("those of the other one are in use", pages[1].ask("render", graphs="input.txt", line=1)[1]["status"], "done")
    tools = base / "tools"
    tools.mkdir()
    (tools / "dot").write_text(f"#!/bin/sh\necho > {base}/begun\nexec sleep 600\n")
    (tools / "dot").chmod(0o755)
    slow = Page(EXAMPLE, TMPDIR=str(room), PATH=f"{tools}:{os.environ['PATH']}")
    asking = threading.Thread(target=lambda: slow.ask("view", graphs="input.txt", line=1))
    asking.start()
    while not (base / "begun").exists() and asking.is_alive():
        time.sleep(0.05)
    check("a picture that takes long keeps none from ending", slow.end(), (0, "ended"))
    asking.join()
    check("ended", [page.end() for page in (pages[1], after)], [(0, "ended")] * 2)
    check("nothing is left", list(room.iterdir()), [])


with folder() as base:
    base = os.path.realpath(base)
    import pathlib
    work = pathlib.Path(base) / "project"
    shutil.copytree(EXAMPLE, work)
    outside = work.parent / "secret.txt"
    outside.write_text("hush\n")
    (work / "link.txt").symlink_to(outside)
    (work / "linked").symlink_to(work.parent)
    (work / ".hidden").write_text("hush\n")
    os.mkfifo(work / "pipe")
    (work / "folder").mkdir()
    page = Page(work, "-T", 3)
    check("it prints its address", page.address.startswith("http://127.0.0.1:") and len(page.path) > 40, True)
    try:
        with socket.socket() as other:
            other.settimeout(2)
            reached = other.connect_ex(("127.0.0.2", page.port))
        check("it listens on one address", reached != 0, True)
        refusals(page)
        working(page)
        paths(page, work, outside)
        saving(page, work)
        endless(page)
        second = subprocess.run([PROGRAMS / "lexon-lab", "serve", work, "--port", str(page.port)], capture_output=True, text=True)
        check("a port that is taken is told", (second.returncode, "cannot be had" in second.stderr), (1, True))
    finally:
        status = page.end()
    check("an interrupt ends it", status, (0, "ended"))
    empty = subprocess.run([PROGRAMS / "lexon-lab", "serve", work / "folder"], capture_output=True, text=True)
    check("a folder without rules is told", (empty.returncode, "name them with -r" in empty.stderr), (1, True))
    both = pathlib.Path(base) / "stories"
    shutil.copytree(ROOT / "examples" / "stories", both)
    page = Page(both / "german")
    files = page.ask("files")[1]
    check("graphs of the folder above", (files["graphs"], files["rules"][0]), (["input.txt", "german/expected.txt"], "german/rules.lxr"))
    check("a termination ends it too", page.end(signal.SIGTERM), (0, "ended"))
    ends(pathlib.Path(base))

finish()
