# A drawing as a tree of entities and blocks, and what is seen of it: layers, arrays, blocks in blocks. shapes.py knows
# what a single entity looks like, writer.py writes the result.
import math
import os
from array import array
from collections import Counter
from dataclasses import dataclass
from functools import lru_cache
from io import BytesIO
from typing import Callable, Iterable, NamedTuple, Optional

import ezdxf
from ezdxf import recover
from ezdxf.entities import solid
from ezdxf.math import Matrix44, Vec3
from ezdxf.protocols import SupportsVirtualEntities, virtual_entities

from shapes import FACE, LEAVES, LINE, MOST_SHAPES, POINT, attribute, shapes_of

DEEPEST = 100  # blocks in blocks
TOLERANCE = 1e-3  # of the drawing's largest extent
KINDS = (POINT, LINE, FACE)
TOO_MANY = f"It is made of more than {MOST_SHAPES:,} parts."


# ezdxf 0.18 gives the name of group 60, which hides an entity, to group 70 of a 3DFACE, too. That only hides edges,
# which does not matter here.
for codes in ("acdb_face_group_codes", "merged_face_group_codes"):
    getattr(solid, codes, {}).pop(70, None)


class Refused(BaseException):
    """The reason why a drawing is not exploded, as a sentence for the user. No "except Exception" catches it."""


@dataclass(eq=False)
class Leaf:
    """An entity with a shape. The shapes of a curve are rough: just good enough to tell its extents."""

    layer: str
    name: str
    shapes: list
    curve: Optional[Callable[[float], list]]
    finest: float  # a smaller distance from the curve is lost in the rounding of its coordinates
    count: int  # of its shapes; 1 for a curve


class Group(NamedTuple):
    """Items that are placed together: those of a block, or of a dimension and the like."""

    layer: str
    items: list
    places: Callable[[], Iterable[Optional[Matrix44]]]  # None: where they are
    scale: float  # the largest factor by which a place stretches them
    count: int  # of all shapes in all places, as far as is known before curves are cut


class LeftOut(NamedTuple):
    """An entity that points, lines and faces cannot show."""

    layer: str
    name: str
    count: int = 1


def text_of(path):
    """Returns a DXF file in text form as a stream. One that was cut off ends before its last entity."""
    with open(path, "rb") as file:
        data = file.read()
    if b"EOF" in data[-99:]:
        return BytesIO(data)
    lines = data.split(b"\n")
    begin = max(i for i in range(0, len(lines) - 1, 2) if lines[i].strip() == b"0")
    return BytesIO(b"\n".join(lines[:begin] + [b"0", b"ENDSEC", b"0", b"EOF", b""]))


def read(path):
    """Reads a DXF file of any version, text or binary, and mends what can be mended."""
    if os.path.exists(path) and not os.path.isfile(path):
        raise Refused(f"{path} is not a regular file.")
    for reader in (ezdxf.readfile, lambda name: recover.read(text_of(name))[0]):
        try:
            return reader(path)
        except MemoryError:
            raise
        except Exception as problem:  # a damaged file raises whatever the library stumbles over
            if isinstance(problem, OSError) and problem.errno:
                raise
    raise Refused(f"{path} is no DXF file, or is damaged beyond repair.")


class Drawing:
    """The visible entities in the model space of an ezdxf document, or all of them with `everything`."""

    def __init__(self, document, everything, progress):
        layers = [] if everything else document.layers
        self.frozen = {layer.dxf.name.lower() for layer in layers if layer.is_frozen()}
        self.hidden = {layer.dxf.name.lower() for layer in layers if layer.is_off()} | self.frozen
        self.everything = everything
        self.blocks = {}
        self.opened = []
        self.items = self.items_of(progress("Taking apart", document.modelspace()))
        if sum(item.count for item in self.items) > MOST_SHAPES:
            raise Refused(TOO_MANY)

    def items_of(self, entities):
        items = []
        for entity in entities:
            name, layer = entity.dxftype(), attribute(entity, "layer", "0")
            try:
                if self.everything or not attribute(entity, "invisible", 0):
                    items += self.items_of_one(entity, name, layer)
            except MemoryError:
                raise
            except Exception:  # an entity that makes no sense raises whatever the library stumbles over
                items.append(LeftOut(layer, name))
        return items

    def items_of_one(self, entity, name, layer):
        if name in LEAVES:
            return [make_leaf(layer, name, shapes_of(entity))]
        if name == "INSERT":
            return [self.insert(entity, layer)] + [LeftOut(layer, "ATTRIB") for _ in entity.attribs]
        parts = virtual_entities(entity) if isinstance(entity, SupportsVirtualEntities) else []
        if name.endswith("DIMENSION"):
            parts = (part for part in parts if part.dxftype() != "POINT")  # which only mark where it was measured
        items = self.items_within(None, parts)
        return [make_group(layer, items, lambda: [None]) if items else LeftOut(layer, name)]

    def items_within(self, name, entities):
        """Returns the items of a block, or of an entity that is made of others and has no name."""
        if name is not None and name in self.opened:
            raise Refused(f'The block "{name}" contains itself.')
        if len(self.opened) == DEEPEST:
            raise Refused(f"Its blocks are nested more than {DEEPEST} deep.")
        self.opened.append(name)
        try:
            return self.items_of(entities)
        finally:
            self.opened.pop()

    def insert(self, entity, layer):
        """Returns what an INSERT shows: the items of its block, once for each row and column."""
        dxf, ocs, first = entity.dxf, entity.ocs(), entity.matrix44()
        block = entity.block()
        name = block.name
        if name not in self.blocks:
            self.blocks[name] = self.items_within(name, [part for part in block if part.dxftype() != "ATTDEF"])
        if not self.blocks[name] or not all(map(math.isfinite, (*first, dxf.row_spacing, dxf.column_spacing))):
            return LeftOut(layer, "INSERT")
        rows = max(1, dxf.row_count) if dxf.row_spacing else 1
        columns = max(1, dxf.column_count) if dxf.column_spacing else 1

        def places():
            for i in range(rows * columns):
                step = Vec3(i % columns * dxf.column_spacing, i // columns * dxf.row_spacing)
                place = first.copy()
                place.set_row(3, (first.origin + ocs.to_wcs(step.rotate_deg(dxf.rotation))).xyz)
                yield place

        scale = max(abs(dxf.xscale), abs(dxf.yscale), abs(dxf.zscale))
        return make_group(layer, self.blocks[name], places, scale, rows * columns)

    def leaves(self, left_out=None):
        """Yields each entity that is seen, with its matrix, scale and layer; counts in `left_out` what has no shape."""
        yield from self.walk(self.items, None, 1.0, None, Counter() if left_out is None else left_out)

    def walk(self, items, matrix, scale, outer, left_out):
        for item in items:
            # What lies on the layer 0 of a block is seen on the layer of its INSERT. Freezing the layer of an INSERT
            # hides all of it, switching it off only what lies on that layer.
            layer = outer if outer and item.layer == "0" else item.layer
            if layer.lower() in (self.frozen if isinstance(item, Group) else self.hidden):
                continue
            if isinstance(item, Leaf):
                yield item, matrix, scale, layer
            elif isinstance(item, Group):
                for place in item.places():
                    inner = place * matrix if place and matrix else place or matrix
                    yield from self.walk(item.items, inner, scale * item.scale, layer, left_out)
            else:
                left_out[item.name] += 1


def make_leaf(layer, name, made):
    curve = made if callable(made) else None
    shapes = curve(math.inf) if curve else made
    coordinates = [coordinate for _, vertices in shapes for vertex in vertices for coordinate in vertex.xyz]
    if not math.isfinite(sum(coordinates)):
        raise ValueError
    return Leaf(layer, name, shapes, curve, 1e-9 * max(map(abs, coordinates)), 1 if curve else len(shapes))


def make_group(layer, items, places, scale=1.0, copies=1):
    return Group(layer, items, places, scale, copies * sum(item.count for item in items))


class Shapes:
    """Points, chains of lines, and faces in the coordinates of the drawing, stored tightly."""

    def __init__(self):
        self.kinds = array("B")
        self.lengths = array("L")
        self.layers = []
        self.coordinates = array("d")
        self.count = 0

    def add(self, shapes, matrix, layer):
        for kind, vertices in shapes:
            self.count += len(vertices) - 1 if kind == LINE else 1
            if self.count > MOST_SHAPES:
                raise Refused(TOO_MANY)
            self.kinds.append(KINDS.index(kind))
            self.lengths.append(len(vertices))
            self.layers.append(layer)
            for vertex in matrix.transform_vertices(vertices) if matrix else vertices:
                self.coordinates.extend(vertex.xyz)

    def __iter__(self):
        """Yields kind, layer and coordinates of each shape."""
        start = 0
        for kind, length, layer in zip(self.kinds, self.lengths, self.layers):
            yield KINDS[kind], layer, self.coordinates[start : start + 3 * length]
            start += 3 * length

    def extents(self):
        """Returns the least and the largest x, y and z of one shape or more."""
        if not math.isfinite(sum(self.coordinates)):
            raise Refused("Its coordinates are too large.")
        axes = [self.coordinates[axis::3] for axis in range(3)]
        return [min(axis) for axis in axes], [max(axis) for axis in axes]


@lru_cache(maxsize=1000)  # for the curves of a block that is inserted often
def cut(leaf, distance):
    return leaf.curve(max(distance, leaf.finest)) if leaf.curve else leaf.shapes


def explode(drawing, tolerance, progress):
    """Returns the shapes of a drawing and a Counter of the entities that have none. Curves become lines that keep
    within `tolerance`; None stands for TOLERANCE of the drawing's largest extent."""
    left_out = Counter()
    rough = Shapes()
    for leaf, matrix, scale, layer in progress("Measuring", drawing.leaves(left_out)):
        rough.add(leaf.shapes, matrix, layer)
    if not rough.count:
        return rough, left_out
    if tolerance is None:
        tolerance = TOLERANCE * max(high - low for low, high in zip(*rough.extents()))

    shapes = Shapes()
    for leaf, matrix, scale, layer in progress("Cutting", drawing.leaves()):
        try:
            cuts = cut(leaf, tolerance / scale if scale else math.inf)
        except MemoryError:
            raise
        except Exception:  # numbers out of all bounds
            left_out[leaf.name] += 1
        else:
            shapes.add(cuts, matrix, layer)
    return shapes, left_out
