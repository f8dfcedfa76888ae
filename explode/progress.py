# Writes messages and progress to standard error.
from __future__ import annotations

import contextlib
import os
from typing import Iterable, Iterator, NamedTuple, TypeVar

STANDARD_ERROR = 2
READING, STAGE = 40, 15  # per cent of the work: reading, and each of the stages 0 to 3 after it

Item = TypeVar("Item")


class Progress(NamedTuple):
    wanted: bool

    def counted(self, stage: int, total: int, items: Iterable[Item]) -> Iterator[Item]:
        """Yields the items of a stage, about `total` in number, and writes the percentage of the work that is done."""
        step = total // STAGE + 1
        for number, item in enumerate(items):
            if self.wanted and number % step == 0:
                write(f"progress: {READING + STAGE * stage + number // step}\n")
            yield item


def write(text: str) -> None:
    """Writes to standard error without a buffer, because a buffer that cannot be written fails again at every flush."""
    with contextlib.suppress(OSError):
        os.write(STANDARD_ERROR, text.encode(errors="replace"))
