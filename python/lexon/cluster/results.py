"""The output in the making, and the journal from which a killed client goes on.

Beside OUTPUT lie, until it is whole, `OUTPUT.part` and `OUTPUT.journal`: a line of JSON that says what the output is made
of, then one for each time that the output was on the disk, with its size and the place of the inputs that it goes to.
"""

from __future__ import annotations

import dataclasses
import json
import os
import time
from typing import Any, Dict, List, Optional

from .inputs import Place
from .worker import Result

_INTERVAL = 1.0  # seconds between two lines of the journal


@dataclasses.dataclass
class Progress:
    """How far the output goes."""

    size: int = 0
    chunk: int = 0  # the next one
    place: Place = Place()
    bit: bool = False
    done: int = 0
    failed: int = 0
    over_time: int = 0
    messages: int = 0
    lost: List[Any] = dataclasses.field(default_factory=list)

    @property
    def tried(self) -> int:
        return self.done + self.failed + self.over_time

    def as_line(self) -> bytes:
        return json.dumps(dataclasses.asdict(self)).encode() + b"\n"


class AnotherRun(Exception):
    """There is an unfinished output of another run."""


def _read_journal(path: str, of: Dict[str, Any], size: int) -> Optional[Progress]:
    """The last progress that the output of this size goes to; None without a journal."""
    try:
        with open(path, "rb") as file:
            lines = file.read().split(b"\n")[:-1]  # one that was cut does not count
    except FileNotFoundError:
        return None
    if not lines or json.loads(lines[0]) != of:
        raise AnotherRun
    last = Progress()
    for line in lines[1:]:
        entry = json.loads(line)
        if entry["size"] <= size:
            last = Progress(**{**entry, "place": Place(**entry["place"])})
    return last


class Output:
    """Raises OSError where it cannot be written, AnotherRun if it would go on with what is not its own."""

    def __init__(self, path: str, of: Dict[str, Any], is_fresh: bool) -> None:
        self.path, self._part, self._journal_path = path, path + ".part", path + ".journal"
        size = os.path.getsize(self._part) if os.path.exists(self._part) else 0
        found = None if is_fresh else _read_journal(self._journal_path, of, size)
        self.resumes = found is not None and found.chunk > 0
        self.progress = found or Progress()
        self._file = open(self._part, "r+b" if found and size else "wb")
        self._file.truncate(self.progress.size)
        self._file.seek(self.progress.size)
        # The new journal, of one line, takes the place of the old one in one move.
        self._journal = open(self._journal_path + ".new", "wb")
        self._journal.write(json.dumps(of).encode() + b"\n")
        self.sync()
        os.replace(self._journal_path + ".new", self._journal_path)

    def write(self, text: bytes) -> None:
        self._file.write(text)
        self.progress.size += len(text)

    def add(self, result: Result, place: Place) -> None:
        """The next chunk, which goes to `place`."""
        self.write(result.unpacked())
        progress = self.progress
        for count in ("done", "failed", "over_time", "messages"):
            setattr(progress, count, getattr(progress, count) + getattr(result, count))
        progress.chunk, progress.place, progress.bit = progress.chunk + 1, place, result.leaves_target
        if time.monotonic() >= self._next_line:
            self.sync()

    def sync(self) -> None:
        self._next_line = time.monotonic() + _INTERVAL
        self._file.flush()
        os.fsync(self._file.fileno())
        self._journal.write(self.progress.as_line())
        self._journal.flush()

    def close(self) -> None:
        self._file.close()
        self._journal.close()

    def finish(self, form: str) -> None:
        """The output is whole: it comes into its place."""
        self.sync()
        self.close()
        if form == "parquet":
            to_parquet(self._part, self.path + ".parquet-part")
            os.replace(self.path + ".parquet-part", self.path)
            os.remove(self._part)
        else:
            os.replace(self._part, self.path)
        os.remove(self._journal_path)


def to_parquet(records: str, path: str) -> None:
    """Lines of JSON as a table; some thousand at a time are in memory."""
    import pyarrow as pa
    import pyarrow.parquet as pq

    schema = pa.schema([("label", pa.string()), ("text", pa.string()), ("status", pa.string()), ("code", pa.int32()),
                        ("messages", pa.list_(pa.string())), ("steps", pa.int64()), ("memory_bytes", pa.int64()),
                        ("seconds", pa.float64())])
    with open(records, encoding="utf-8", errors="replace") as file, pq.ParquetWriter(path, schema) as writer:
        while rows := [json.loads(line) for _, line in zip(range(20000), file)]:
            writer.write_table(pa.Table.from_pylist(rows, schema))
