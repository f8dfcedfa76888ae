# How far the work is, in lines for a program that shows it or on a terminal.
from __future__ import annotations

import contextlib
import os
import signal
from typing import Callable, Iterable, Iterator, Optional, TypeVar

STANDARD_ERROR = 2
SECONDS = 0.2  # from one report to the next

Item = TypeVar("Item")


class Progress:
    """The work as stages, each of which takes its share of the time. A timer looks how far the present stage is."""

    def __init__(self, form: Optional[str]) -> None:
        """`form` is what is written for a percentage, such as "{} %"; None keeps silent."""
        self.form, self.shown = form, -1
        self.begin = self.share = 0.0
        self.done: Callable[[], float] = lambda: 0.0
        if form:
            signal.signal(signal.SIGALRM, self.show)
            signal.setitimer(signal.ITIMER_REAL, SECONDS, SECONDS)

    def stage(self, share: float, done: Callable[[], float]) -> None:
        """Begins a stage that takes a share of the whole; `done` tells how much of it is done, from 0 to 1."""
        self.begin, self.share, self.done = self.begin + self.share, share, done

    def count(self, share: float, total: int, items: Iterable[Item]) -> Iterator[Item]:
        """Yields the items of a stage that has about `total` of them."""
        number = 0
        self.stage(share, lambda: number / (total or 1))
        for number, item in enumerate(items):
            yield item

    def show(self, *_: object) -> None:
        percent = int(100.0 * min(self.begin + self.share * min(self.done(), 1.0), 1.0))
        if self.form and percent > self.shown:
            self.shown = percent
            write(self.form.format(percent))


def write(text: str) -> None:
    """Writes to standard error, past the buffer that fails again and again where that is full or nobody reads it."""
    with contextlib.suppress(OSError):
        os.write(STANDARD_ERROR, text.encode(errors="replace"))
