# Builds the tree of a drawing's entities and blocks, and walks its visible part: layers, arrays, nested blocks.
# shapes.py makes the shapes of a single entity.
from __future__ import annotations

import math
from collections import Counter
from dataclasses import dataclass, field
from functools import lru_cache
from itertools import chain
from typing import Callable, Iterable, Iterator, Optional, Union

from ezdxf.document import Drawing as Document
from ezdxf.math import Matrix44, Vec3
from ezdxf.protocols import SupportsVirtualEntities, virtual_entities

from parts import MOST_PARTS, TOO_MANY, Parts, Refused, Shape
from progress import Progress
from shapes import LEAVES, TEXTS, Cut, Entity, Made, attribute, shapes_of

TOLERANCE = 1e-3  # of the drawing's largest extent
ROUNDING = 1e-15  # of a coordinate
INVISIBLE, CONSTANT = 1, 2  # flags in group 70 of ATTRIB and ATTDEF; constant ATTDEFs are drawn with the block

Matrix = Optional[Matrix44]  # None moves nothing


@dataclass(eq=False, slots=True)
class Leaf:
    """An entity with its shapes: rough ones for a curve, good enough for its extents; none for an entity that cannot be
    converted."""

    layer: str
    name: str
    shapes: list[Shape]
    curve: Optional[Cut] = None
    size: int = 0  # the number of its shapes; 1 for a curve


@dataclass(eq=False, slots=True)
class Group:
    """Items that are placed together: those of a block, or of a dimension and the like."""

    layer: str
    items: list[Item]
    places: Callable[[], Iterable[Matrix]] = lambda: [None]  # a matrix for each copy
    scale: float = 1.0  # the largest factor by which the matrix stretches them
    copies: int = 1  # the number of places
    size: int = field(init=False)  # the number of shapes in all places, with 1 for each curve

    def __post_init__(self) -> None:
        self.size = self.copies * sum(item.size for item in self.items)


Item = Union[Leaf, Group]
Placed = tuple[Leaf, Matrix, float, str]  # a visible leaf with its matrix, largest scale and layer


class Drawing:
    """The visible part of a document's model space, or all of it if `everything` is set."""

    def __init__(self, document: Document, everything: bool, text: bool, progress: Progress) -> None:
        layers = [] if everything else list(document.layers)
        self.frozen = {layer.dxf.name.lower() for layer in layers if layer.is_frozen()}
        self.hidden = {layer.dxf.name.lower() for layer in layers if layer.is_off()} | self.frozen
        self.everything = everything
        self.text = text
        self.blocks: dict[str, list[Item]] = {}
        self.invisible = 0  # entities that are hidden
        self.left_out: Counter[str] = Counter()
        space = document.modelspace()
        self.items = self.items_of(progress.counted(0, len(space), space))
        self.size = sum(item.size for item in self.items)
        if self.size > MOST_PARTS:
            raise Refused(TOO_MANY)

    def items_of(self, entities: Iterable[Entity]) -> list[Item]:
        items: list[Item] = []
        for entity in entities:
            name, layer = entity.dxftype(), attribute(entity, "layer", "0")
            invisible = attribute(entity, "invisible", 0) or name == "ATTRIB" and entity.dxf.flags & INVISIBLE
            try:
                if invisible and not self.everything:
                    self.invisible += 1
                elif self.text or name not in TEXTS:
                    items += self.items_of_one(entity, name, layer)
            except MemoryError:
                raise
            except Exception:  # ezdxf may raise anything for an invalid entity
                items.append(Leaf(layer, name, []))
        for item in items:
            if item.layer != "0" and self.hides(item, item.layer):
                item.size = 0
        return items

    def items_of_one(self, entity: Entity, name: str, layer: str) -> list[Item]:
        if name in LEAVES:
            leaf = make_leaf(layer, name, shapes_of(entity))
            return [] if name in TEXTS and not leaf.shapes else [leaf]  # a text may be blank
        if name == "INSERT":
            texts = self.items_of(entity.attribs)
            return [self.insert(entity, layer), *([Group(layer, texts)] if texts else [])]
        parts = virtual_entities(entity) if isinstance(entity, SupportsVirtualEntities) else ()
        if name.endswith("DIMENSION"):
            parts = (part for part in parts if part.dxftype() != "POINT")  # definition points
        items = self.items_of(parts)
        return [Group(layer, items) if items else Leaf(layer, name, [])]

    def insert(self, entity: Entity, layer: str) -> Item:
        """Returns what an INSERT shows: the items of its block, once for each row and column."""
        dxf, ocs, first = entity.dxf, entity.ocs(), entity.matrix44()
        block = entity.block()
        if block.name not in self.blocks:
            seen = [part for part in block if part.dxftype() != "ATTDEF" or part.dxf.flags & CONSTANT]
            self.blocks[block.name] = [Leaf("0", "INSERT", [])]  # if the block contains itself
            self.blocks[block.name] = self.items_of(seen)
        if not all(map(math.isfinite, (*first, dxf.row_spacing, dxf.column_spacing))):
            return Leaf(layer, "INSERT", [])
        rows = max(1, dxf.row_count) if dxf.row_spacing else 1
        columns = max(1, dxf.column_count) if dxf.column_spacing else 1

        def places() -> Iterator[Matrix44]:
            for i in range(rows * columns):
                step = Vec3(i % columns * dxf.column_spacing, i // columns * dxf.row_spacing)
                place = first.copy()
                place.set_row(3, (first.origin + ocs.to_wcs(step.rotate_deg(dxf.rotation))).xyz)
                yield place

        scale = max(abs(dxf.xscale), abs(dxf.yscale), abs(dxf.zscale))
        return Group(layer, self.blocks[block.name], places, scale, rows * columns)

    def hides(self, item: Item, layer: str) -> bool:
        """Freezing the layer of an INSERT hides all of it; switching it off hides only what lies on that layer."""
        return layer.lower() in (self.frozen if isinstance(item, Group) else self.hidden)

    def walk(self, items: list[Item], matrix: Matrix, scale: float, outer: Optional[str], times: int) -> Iterator[Placed]:
        """Yields each visible entity, and counts those that are left out or invisible."""
        for item in items:
            # An entity on layer 0 of a block is shown on the layer of the INSERT.
            layer = outer if outer and item.layer == "0" else item.layer
            if self.hides(item, layer):
                self.invisible += times
            elif isinstance(item, Leaf):
                if item.shapes:
                    yield item, matrix, scale, layer
                else:
                    self.left_out[item.name] += times
            elif not item.size:  # nothing to draw: count it without visiting each place
                yield from self.walk(item.items, None, 1.0, layer, times * item.copies)
            else:
                for place in item.places():
                    inner = place * matrix if place and matrix else place or matrix
                    yield from self.walk(item.items, inner, scale * item.scale, layer, times)

    def parts(self, tolerance: Optional[float], progress: Progress) -> Parts:
        """Returns the visible parts. Curves become lines that are at most `tolerance` away, by default TOLERANCE times
        the drawing's largest extent."""
        parts, rough = Parts(), Parts()
        curves: list[Placed] = []
        for leaf, matrix, scale, layer in progress.counted(1, self.size, self.walk(self.items, None, 1.0, None, 1)):
            (rough if leaf.curve else parts).add(leaf.shapes, matrix, layer)
            if leaf.curve:
                curves.append((leaf, matrix, scale, layer))
        if not curves:
            return parts
        if tolerance is None:
            corners = [corner for some in (parts, rough) if some.count for corner in some.extents()]
            tolerance = TOLERANCE * max(max(axis) - min(axis) for axis in zip(*corners))
        for leaf, matrix, scale, layer in progress.counted(2, len(curves), curves):
            try:
                shapes = cut(leaf, tolerance / scale if scale else math.inf)
            except MemoryError:
                raise
            except Exception:  # its numbers are far too large or small
                self.left_out[leaf.name] += 1
            else:
                parts.add(shapes, matrix, layer)
        return parts


def make_leaf(layer: str, name: str, made: Made) -> Leaf:
    curve = None if isinstance(made, list) else made
    shapes = made if isinstance(made, list) else made(math.inf)
    if not math.isfinite(sum(coordinates(shapes))):
        raise ValueError
    return Leaf(layer, name, shapes, curve, len(shapes[:1] if curve else shapes))


def coordinates(shapes: list[Shape]) -> Iterator[float]:
    return chain.from_iterable(chain.from_iterable(vertices for _, vertices in shapes))


@lru_cache(maxsize=1000)  # for the curves of a block that is inserted often
def cut(leaf: Leaf, distance: float) -> list[Shape]:
    # A smaller distance is lost in rounding errors of the coordinates.
    finest = ROUNDING * max(abs(value) for value in coordinates(leaf.shapes))
    return leaf.curve(max(distance, finest)) if leaf.curve else leaf.shapes
