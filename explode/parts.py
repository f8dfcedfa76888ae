# Stores the points, lines and faces of a converted drawing, and fits them to the view. shapes.py makes them, writer.py
# writes them.
from __future__ import annotations

import math
from array import array
from itertools import chain
from typing import Iterable, Iterator, NamedTuple, Optional, Sequence

from ezdxf.math import Matrix44

# Kinds of shapes, named after the entities that they become.
POINT, LINE, FACE = KINDS = ("POINT", "LINE", "3DFACE")
MOST_PARTS = 5_000_000  # points, lines and faces that a drawing may become
TOO_MANY = f"The drawing has more than {MOST_PARTS:,} points, lines and faces."
MOST_AT_ONCE = 10_000  # lines of a chain that are written at once, which bounds the memory for that
FIT = 100.0  # the largest coordinate of a fitted drawing

Vertex = tuple[float, float, float]


class Refused(Exception):
    """The reason why a drawing is not exploded, as a sentence for the user."""


class Shape(NamedTuple):
    """One vertex for a point, two or more for a chain of lines, four for a face."""

    kind: str
    vertices: Sequence[Vertex]


class Parts:
    """Shapes in the coordinates of the drawing, stored compactly."""

    def __init__(self) -> None:
        self.kinds = array("B")
        self.lengths = array("L")
        self.layers: list[str] = []
        self.coordinates = array("d")
        self.count = 0

    def add(self, shapes: Iterable[Shape], matrix: Optional[Matrix44], layer: str) -> None:
        for kind, vertices in shapes:
            self.count += len(vertices) - 1 if kind == LINE else 1
            if self.count > MOST_PARTS:
                raise Refused(TOO_MANY)
            self.kinds.append(KINDS.index(kind))
            self.lengths.append(len(vertices))
            self.layers.append(layer)
            self.coordinates.extend(chain.from_iterable(placed(vertices, matrix) if matrix else vertices))

    def __iter__(self) -> Iterator[tuple[str, str, array[float]]]:
        """Yields the kind, layer and coordinates of each shape. Splits long chains."""
        start = 0
        for kind, length, layer in zip(self.kinds, self.lengths, self.layers):
            for i in range(0, length - 1 or 1, MOST_AT_ONCE) if KINDS[kind] == LINE else (0,):
                end = min(i + MOST_AT_ONCE + 1, length)
                yield KINDS[kind], layer, self.coordinates[start + 3 * i : start + 3 * end]
            start += 3 * length

    def extents(self) -> tuple[list[float], list[float]]:
        """Returns the least and the largest x, y and z. There must be at least one shape."""
        if not math.isfinite(sum(self.coordinates)):
            raise Refused("The drawing's coordinates are too large.")
        axes = [self.coordinates[axis::3] for axis in range(3)]
        return [min(axis) for axis in axes], [max(axis) for axis in axes]

    def is_shown_well(self) -> bool:
        """Returns whether the viewer shows the drawing large and whole. It scales by 1/L about the origin, L being the
        largest coordinate. If L is below 1, the near and far planes cut the drawing; above 1e6 the depth buffer is too
        coarse."""
        low, high = self.extents()
        largest = max(abs(value) for value in low + high)
        return largest == 0 or 1.0 <= largest <= 1e6 and max(b - a for a, b in zip(low, high)) >= largest / 2.0

    def fit(self) -> tuple[list[float], float]:
        """Moves the middle to the origin, then scales the largest coordinate to FIT. Returns both changes."""
        low, high = self.extents()
        move = [0.0 - (a + b) / 2.0 for a, b in zip(low, high)]  # never -0.0, which would be printed
        factor = FIT / (max(b - a for a, b in zip(low, high)) / 2.0 or FIT)
        for axis in range(3):
            self.coordinates[axis::3] = array("d", [(x + move[axis]) * factor for x in self.coordinates[axis::3]])
        return move, factor


def placed(vertices: Iterable[Vertex], matrix: Matrix44) -> Iterator[Vertex]:
    """Yields transformed vertices, three times as fast as ezdxf does."""
    a, b, c, _, d, e, f, _, g, h, i, _, dx, dy, dz, _ = matrix
    for x, y, z in vertices:
        yield x * a + y * d + z * g + dx, x * b + y * e + z * h + dy, x * c + y * f + z * i + dz
