"""What happens on the workers: the grammar is loaded once for each, chunks are rendered."""

from __future__ import annotations

import dataclasses
import hashlib
import json
import os
import signal
import subprocess
import sys
import threading
import warnings
import zlib
from typing import Any, Dict, List, Optional

import lexon
from lexon import _core

# Grammars that this process has loaded, or why it could not.
_loaded: Dict[str, Any] = {}


@dataclasses.dataclass(frozen=True)
class Settings:
    """How sentences are rendered, and what is wanted of them: "text", or "jsonl" for a record of each."""

    level: int = 0
    post_edit: bool = True
    time_limit: Optional[float] = None
    form: str = "text"
    # Results go through a network that is slower than packing them.
    packs: bool = True
    # For tests: a sentence that holds this text ends the process that renders it.
    poison: str = ""


@dataclasses.dataclass
class Result:
    """What came of a chunk. `lost` names sentences that ended their process: number in the chunk, label, reason."""

    output: bytes = b""
    is_packed: bool = False
    done: int = 0
    failed: int = 0
    over_time: int = 0
    messages: int = 0
    begins_with_target: bool = False
    leaves_target: bool = False
    lost: List[Any] = dataclasses.field(default_factory=list)

    @property
    def tried(self) -> int:
        return self.done + self.failed + self.over_time

    def pack(self) -> None:
        self.output, self.is_packed = zlib.compress(self.output, 1), True

    def unpacked(self) -> bytes:
        return zlib.decompress(self.output) if self.is_packed else self.output


class GrammarFiles:
    """The files of a grammar, which every worker gets when it starts and keeps in its own folder.

    A plugin of dask.distributed, so that workers that come later have it too.
    """

    def __init__(self, grammar: lexon.Grammar, rules: str, encoding: str, blocks: int) -> None:
        paths = [os.fsdecode(path) for path in grammar._renderer.dictionary_files()]
        self.contents = []
        for path in [rules, *paths]:
            with open(path, "rb") as file:
                self.contents.append((os.path.basename(path), file.read()))
        if expansion := grammar._renderer.expansion():  # what a source includes is in there
            self.contents[0] = (os.path.basename(rules) + ".txt", expansion)
        self.encoding, self.blocks, self.version = encoding, blocks, lexon.__version__
        digest = hashlib.sha256(repr((encoding, blocks, self.version)).encode())
        for name, content in self.contents:
            digest.update(name.encode("utf-8", "surrogateescape") + b"\0" + hashlib.sha256(content).digest())
        self.stamp = digest.hexdigest()
        self.name = f"lexon-{self.stamp}"

    def write(self, folder: str) -> List[str]:
        """Writes the files into folders of their own there: rules and dictionaries. Their paths."""
        paths = []
        for number, (name, content) in enumerate(self.contents):
            # A dictionary lies beside its index.
            path = os.path.join(folder, self.name, str((number + 1) // 2), name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            if not os.path.exists(path) or os.path.getsize(path) != len(content):
                temporary = f"{path}.{os.getpid()}"
                with open(temporary, "wb") as file:
                    file.write(content)
                os.replace(temporary, path)
            paths.append(path)
        return paths

    def setup(self, worker: Any) -> None:
        try:
            if lexon.__version__ != self.version:
                raise RuntimeError(f"has version {lexon.__version__} of lexon, and the client {self.version}")
            paths = self.write(worker.local_directory)
            _loaded[self.stamp] = load(paths, self.encoding, self.blocks), (paths, self.encoding, self.blocks)
        except Exception as error:  # the first chunk brings it to the client
            _loaded[self.stamp] = error, None

    def teardown(self, worker: Any) -> None:
        _loaded.pop(self.stamp, None)


def load(paths: List[str], encoding: str, blocks: int) -> lexon.Grammar:
    """The grammar of `GrammarFiles.write`. The client has told what is wrong with it."""
    rules, dictionary, cooccurrence = paths[0], paths[1], paths[3] if len(paths) > 3 else None
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", lexon.GrammarWarning)
        return lexon.Grammar(dictionary, rules, cooccurrence, encoding=encoding, blocks=blocks)


def _watch(worker: Any, key: str, stop: _core.Stop, over: threading.Event) -> None:
    """Stops a rendering that nobody waits for any more."""
    while not over.wait(1.0):
        task = worker.state.tasks.get(key)
        if task is None or task.state == "cancelled":
            stop.set()
            return


def _record(grammar: lexon.Grammar, found: Any, line: int) -> bytes:
    sentence = grammar._sentence(*found)
    messages = [str(dataclasses.replace(m, line=m.line + line if m.line else 0)) for m in sentence.messages]
    record = {"label": sentence.label, "text": sentence.text, "status": sentence.status, "code": sentence.code,
              "messages": messages, "steps": sentence.steps, "memory_bytes": sentence.memory_bytes,
              "seconds": round(sentence.seconds, 6)}
    return json.dumps(record, ensure_ascii=False).encode("utf-8", "surrogateescape") + b"\n"


def _lost_output(label: bytes, reason: str, form: str) -> bytes:
    if form == "text":
        return (label + b"\n" if label else b"") + b";;Failed!\n"
    record = {"label": label.decode("utf-8", "replace"), "text": "", "status": "failed", "code": 0,
              "messages": [reason], "steps": 0, "memory_bytes": 0, "seconds": 0.0}
    return json.dumps(record, ensure_ascii=False).encode() + b"\n"


def _render(grammar: lexon.Grammar, graphs: bytes, line: int, bit: bool, settings: Settings,
            stop: Optional[_core.Stop]) -> Result:
    if settings.poison and settings.poison.encode() in graphs:
        os.kill(os.getpid(), signal.SIGKILL)
    arguments = (graphs, settings.level, settings.post_edit, settings.time_limit or 0.0, stop, bit)
    result = Result(begins_with_target=bit, leaves_target=bit)
    if settings.form == "text":
        (result.output, result.done, result.failed, result.over_time, stopped, result.messages,
         result.leaves_target) = grammar._renderer.render_text(*arguments)
        if stopped:
            raise RuntimeError("stopped")
        return result
    outputs = []
    for sentence in grammar._renderer.render(*arguments):
        status = sentence[1]
        if status == "stopped":
            raise RuntimeError("stopped")
        # What an end of the input leaves without a banner is no sentence.
        is_sentence = sentence[2] != -10
        result.done += status == "done"
        result.failed += status == "failed" and is_sentence
        result.over_time += status == "over time"
        result.messages += sum(message[2] != 0 for message in sentence[4])
        if is_sentence:
            outputs.append(_record(grammar, sentence, line))
        result.leaves_target = sentence[9]
    result.output = b"".join(outputs)
    return result


def render(stamp: str, graphs: bytes, line: int, bit: bool, settings: Settings) -> Result:
    """Renders a chunk, which begins behind `line` lines of its file and, if `bit`, with a forced target."""
    import distributed

    worker = distributed.get_worker()
    grammar, _ = _grammar_of(stamp)
    stop, over = _core.Stop(), threading.Event()
    watcher = threading.Thread(target=_watch, args=(worker, worker.get_current_task(), stop, over), daemon=True)
    watcher.start()
    try:
        result = _render(grammar, graphs, line, bit, settings, stop)
    finally:
        over.set()
    if settings.packs:
        result.pack()
    return result


def _grammar_of(stamp: str) -> Any:
    if stamp not in _loaded:
        raise RuntimeError("the grammar has not reached this worker")
    grammar, origin = _loaded[stamp]
    if isinstance(grammar, Exception):
        raise RuntimeError(f"the grammar cannot be loaded there: {grammar}")
    return grammar, origin


def render_apart(stamp: str, graphs: bytes, line: int, bit: bool, settings: Settings) -> Result:
    """The same, sentence by sentence in a process of its own: what ends that process is named and passed over."""
    _, (paths, encoding, blocks) = _grammar_of(stamp)
    whole = Result(begins_with_target=bit, leaves_target=bit)
    outputs: List[bytes] = []
    parts = _core.split(graphs)
    number = 0
    while number < len(parts):
        # A child renders from here on; it says so behind every sentence.
        command = [sys.executable, "-c", "from lexon.cluster.worker import child; child()"]
        environment = dict(os.environ, PYTHONPATH=os.pathsep.join(filter(None, sys.path)))
        child = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environment)
        assert child.stdin is not None and child.stdout is not None
        task = {"paths": paths, "encoding": encoding, "blocks": blocks, "settings": dataclasses.asdict(settings)}
        try:
            child.stdin.write(json.dumps(task).encode() + b"\n")
            for part in parts[number:]:
                child.stdin.write(f"{len(part)} {line} {int(whole.leaves_target)}\n".encode() + part)
                child.stdin.flush()
                answer = child.stdout.readline()
                if not answer:
                    break
                said = json.loads(answer)
                outputs.append(child.stdout.read(said["size"]))
                for count in ("done", "failed", "over_time", "messages"):
                    setattr(whole, count, getattr(whole, count) + said[count])
                whole.leaves_target = said["leaves_target"]
                line += part.count(b"\n")
                number += 1
        except BrokenPipeError:
            pass
        finally:
            child.stdin.close() if number >= len(parts) else child.kill()
            status = child.wait()
        if number < len(parts):
            label = next((text.strip() for text in parts[number].splitlines() if text.lstrip(b" ").startswith(b"[S")), b"")
            reason = f"ended its process: signal {-status}" if status < 0 else f"ended its process: status {status}"
            outputs.append(_lost_output(label, reason, settings.form))
            whole.lost.append((number, label.decode("utf-8", "replace"), reason))
            whole.failed += 1
            whole.leaves_target = False
            line += parts[number].count(b"\n")
            number += 1
    whole.output = b"".join(outputs)
    if settings.packs:
        whole.pack()
    return whole


def child() -> None:
    """The process of `render_apart`."""
    task = json.loads(sys.stdin.buffer.readline())
    grammar = load(task["paths"], task["encoding"], task["blocks"])
    settings = Settings(**task["settings"])
    while head := sys.stdin.buffer.readline():
        size, line, bit = map(int, head.split())
        result = _render(grammar, sys.stdin.buffer.read(size), line, bool(bit), settings, None)
        said = {"size": len(result.output), "done": result.done, "failed": result.failed, "over_time": result.over_time,
                "messages": result.messages, "leaves_target": result.leaves_target}
        sys.stdout.buffer.write(json.dumps(said).encode() + b"\n" + result.output)
        sys.stdout.buffer.flush()
