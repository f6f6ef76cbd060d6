"""Sentences from graphs of meaning, by a dictionary and a file of rules.

    >>> import lexon
    >>> grammar = lexon.Grammar("words.dic", "rules.txt")
    >>> grammar.render('[S:1]\\nagt(sleep(>rest).@entry.@past, dog(>animal).@def)\\n[/S]\\n').text
    'The dog slept.'

A grammar is loaded once and may be used by any number of threads; they render at the same time. Bad input never ends
the process and is never silent: a sentence that fails says why in its messages.
"""

from __future__ import annotations

import collections
import concurrent.futures
import dataclasses
import os
import warnings
from typing import Any, Deque, Iterable, Iterator, List, Optional, Union

from . import _core

__all__ = ["Grammar", "GrammarError", "GrammarWarning", "Message", "Sentence", "split", "__version__"]
__version__ = _core.version()

Text = Union[str, bytes]
Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

_KINDS = ("note", "warning", "error")
# Sentences that render_all holds for each thread, so that one slow sentence in front does not leave the others idle.
_WINDOW = 16


@dataclasses.dataclass(frozen=True)
class Message:
    """What a user ought to know of files, rules or a graph.

    `kind` is "note", "warning" or "error". `file` is empty for text from memory. `line` counts from 1 in the file or in
    the text that was given, `column` from 1 in bytes of the line; 0 says that there is no such place.
    """

    kind: str
    file: str
    line: int
    column: int
    text: str

    def __str__(self) -> str:
        place = ":".join([*filter(None, [self.file]), *(str(n) for n in (self.line, self.column) if n)])
        return f"{place}: {self.text}" if place else self.text


@dataclasses.dataclass(frozen=True)
class Sentence:
    """What came of one sentence.

    `status` is "done", "failed", "over time" or "stopped"; `text` is empty unless it is "done", and the same at every
    trace level. `code` is the engine's, 0 if done. `label` is the line that opened the sentence, such as "[S:1]".
    `messages` say what is wrong with the graph, and why the sentence failed. `trace` is all that the program `lexon`
    writes for the sentence at the level. `steps` are passes of the search, `memory_bytes` what the sentence took,
    `seconds` the time on the clock. `leaves_target`: a forced way back did not reach its target, and in a run the next
    sentence goes on to look for it. `fallback` stands in for a sentence that is not done: the words of its graph.
    """

    text: str
    status: str
    code: int
    label: str
    messages: List[Message]
    trace: str
    steps: int
    memory_bytes: int
    seconds: float
    leaves_target: bool
    fallback: str = ""


class GrammarWarning(UserWarning):
    """A grammar that can be used has faults: rules that are left out, most of all."""


class GrammarError(ValueError):
    """A grammar cannot be used. `file`, `line` and `column` are those of the first error in `messages`."""

    def __init__(self, messages: List[Message]) -> None:
        self.messages = messages
        first = next((m for m in messages if m.kind == "error"), Message("error", "", 0, 0, "no memory"))
        self.file, self.line, self.column = first.file, first.line, first.column
        super().__init__(str(first) + _and_more(len(messages) - 1))

    def __reduce__(self) -> Any:
        return GrammarError, (self.messages,)


def _and_more(count: int) -> str:
    return f" (and {count} more: see messages)" if count > 0 else ""


def split(graphs: Text, encoding: str = "utf-8") -> List[Any]:
    """Cuts a graph text where its sentences end, by the rules of the reader; nothing is lost.

    The result has the type of what was given. What stands in front of a sentence belongs to it; what stands behind the
    last one comes last, if it is more than white space.
    """
    if isinstance(graphs, str):
        return [part.decode(encoding, "surrogateescape") for part in _core.split(_bytes(graphs, encoding))]
    return _core.split(bytes(graphs))


def _bytes(text: Text, encoding: str) -> bytes:
    if isinstance(text, str):
        return text.encode(encoding, "surrogateescape")
    if isinstance(text, (bytes, bytearray, memoryview)):
        return bytes(text)
    raise TypeError(f"a graph is str or bytes, not {type(text).__name__}")


def _block_count(blocks: int) -> int:
    if not 1 <= blocks <= 65535:
        raise ValueError("blocks is 1 to 65535")
    return blocks


def _processors() -> int:
    return len(os.sched_getaffinity(0)) if hasattr(os, "sched_getaffinity") else os.cpu_count() or 1


class Grammar:
    """A dictionary and rules, ready to render with.

    `dictionary` is a binary dictionary made by `lexon-dict build`, with its index beside it; `rules` a rule text, or
    compiled rules (".rul"); `cooccurrence` a co-occurrence dictionary, or None. Rules are compiled in memory: no file
    is written. The files must not change while the grammar lives.

    `encoding` is the one that dictionary, rules and graphs are in. Bytes that it does not know survive as
    "surrogateescape".

    `blocks` is the memory for the rules and a sentence of each thread together, in blocks of 65535 bytes, 1 to 65535;
    rule bases of more than some 27,000 short rules need more than 200.

    Raises GrammarError, with file and line, if the grammar cannot be used. Faults that leave it usable, such as rules
    that are refused, stand in `messages`, and the first shows as a GrammarWarning. A grammar can be pickled by its
    files.
    """

    def __init__(
        self,
        dictionary: Path,
        rules: Path,
        cooccurrence: Optional[Path] = None,
        *,
        encoding: str = "utf-8",
        blocks: int = 200,
    ):
        files = [os.fsencode(path) if path is not None else b"" for path in (dictionary, rules, cooccurrence)]
        renderer = _core.load(*files, _block_count(blocks))
        self._set_up(renderer, encoding, (Grammar, (dictionary, rules, cooccurrence), encoding, blocks))

    @classmethod
    def from_text(
        cls,
        rules: Text,
        dictionary: Path,
        cooccurrence: Optional[Path] = None,
        *,
        encoding: str = "utf-8",
        blocks: int = 200,
    ) -> "Grammar":
        """A grammar with rules from memory, `rules` being the text itself. Messages about them name no file."""
        grammar = cls.__new__(cls)
        other = os.fsencode(cooccurrence) if cooccurrence is not None else b""
        renderer = _core.from_text(_bytes(rules, encoding), os.fsencode(dictionary), other, _block_count(blocks))
        grammar._set_up(renderer, encoding, (cls.from_text, (rules, dictionary, cooccurrence), encoding, blocks))
        return grammar

    def _set_up(self, renderer: _core.Renderer, encoding: str, origin: Any) -> None:
        self._renderer = renderer
        self._encoding = encoding
        self._origin = origin
        self.messages = self._messages(renderer.messages())
        if not renderer.is_usable():
            raise GrammarError(self.messages)
        faults = [message for message in self.messages if message.kind != "note"]
        if faults:
            warnings.warn(str(faults[0]) + _and_more(len(faults) - 1), GrammarWarning, stacklevel=3)

    def __reduce__(self) -> Any:
        return _restore, self._origin

    def __repr__(self) -> str:
        return f"<lexon.Grammar, {self.rule_count} rules>"

    @property
    def rule_count(self) -> int:
        """The number of rules in force."""
        return self._renderer.rule_count()

    def render(
        self, graph: Text, *, level: int = 0, post_edit: bool = True, time_limit: Optional[float] = None
    ) -> Sentence:
        """Renders the one sentence that `graph` holds.

        `level` is that of the trace, 0 to 4; `post_edit` whether post-edit rules are run; `time_limit` seconds, None for
        no limit. Other threads run meanwhile. A graph that cannot be rendered is no exception but a Sentence whose
        status says so. Raises ValueError if `graph` holds no sentence, or more than one.
        """
        return self._one(graph, level, post_edit, time_limit, None)

    def render_text(
        self,
        graphs: Text,
        *,
        level: int = 0,
        post_edit: bool = True,
        time_limit: Optional[float] = None,
        begins_with_target: bool = False,
    ) -> List[Sentence]:
        """Renders every sentence of a text, in order and as `lexon` does, one after the other; none gives [].

        `begins_with_target`, for who renders a long text in parts: the sentence in front of this text `leaves_target`.
        """
        return self._render(graphs, level, post_edit, time_limit, None, begins_with_target)

    def render_all(
        self,
        graphs: Iterable[Text],
        jobs: int = 0,
        *,
        level: int = 0,
        post_edit: bool = True,
        time_limit: Optional[float] = None,
    ) -> Iterator[Sentence]:
        """Renders each of `graphs`, one sentence each, on `jobs` threads (0: one for each processor), in order.

        A generator: it takes from `graphs` as it goes on and holds a window of sentences, 16 for each thread, however
        many there are. The results are those of `render`, whatever the number of threads. Closing it ends what is under
        way. Raises ValueError, as `render` does, where it comes to a graph that is not one sentence.
        """
        if jobs < 0:
            raise ValueError("jobs is 0 or more")
        if isinstance(graphs, (str, bytes)):
            raise TypeError("render_all takes many graphs: lexon.split() cuts a text into its sentences")
        jobs = jobs or _processors()
        return self._in_order(iter(graphs), jobs, (level, post_edit, time_limit))

    def _in_order(self, graphs: Iterator[Text], jobs: int, settings: Any) -> Iterator[Sentence]:
        stop = _core.Stop()
        waiting: Deque["concurrent.futures.Future[Sentence]"] = collections.deque()
        executor = concurrent.futures.ThreadPoolExecutor(jobs, "lexon")
        try:
            for graph in graphs:
                waiting.append(executor.submit(self._one, graph, *settings, stop))
                if len(waiting) == jobs * _WINDOW:
                    yield waiting.popleft().result()
            while waiting:
                yield waiting.popleft().result()
        finally:
            stop.set()
            executor.shutdown(wait=True, cancel_futures=True)

    def _one(
        self, graph: Text, level: int, post_edit: bool, time_limit: Optional[float], stop: Optional[_core.Stop]
    ) -> Sentence:
        sentences = self._render(graph, level, post_edit, time_limit, stop)
        if len(sentences) != 1:
            held = f"{len(sentences)} sentences: lexon.split() cuts them apart" if sentences else "no sentence"
            raise ValueError(f"the graph {_shown(graph)} holds {held}")
        return sentences[0]

    def _render(
        self,
        graphs: Text,
        level: int,
        post_edit: bool,
        time_limit: Optional[float],
        stop: Optional[_core.Stop],
        begins_with_target: bool = False,
    ) -> List[Sentence]:
        if not 0 <= level <= 4:
            raise ValueError("level is 0 to 4")
        if time_limit is not None and not time_limit > 0:
            raise ValueError("time_limit is more than 0 seconds, or None")
        text = _bytes(graphs, self._encoding)
        found = self._renderer.render(text, level, post_edit, time_limit or 0.0, stop, begins_with_target)
        return [self._sentence(*sentence) for sentence in found]

    def _text(self, text: bytes) -> str:
        return text.decode(self._encoding, "surrogateescape")

    def _messages(self, found: Any) -> List[Message]:
        return [Message(_KINDS[kind], os.fsdecode(file), line, column, self._text(text))
                for kind, file, line, column, text in found]

    def _sentence(
        self, text: bytes, status: str, code: int, label: bytes, messages: Any, trace: bytes, *rest: Any
    ) -> Sentence:
        *figures, fallback = rest
        found = self._messages(messages)
        return Sentence(
            self._text(text), status, code, self._text(label), found, self._text(trace), *figures, self._text(fallback)
        )


def _restore(make: Any, words: Any, encoding: str, blocks: int) -> Grammar:
    return make(*words, encoding=encoding, blocks=blocks)


def _shown(graph: Text) -> str:
    return repr(graph if len(graph) <= 40 else graph[:40]) + ("" if len(graph) <= 40 else "...")
