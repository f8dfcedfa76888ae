# The plane faces of solid bodies and regions, whose geometry ezdxf reads as ACIS data.
from __future__ import annotations

import math
from typing import Any, Iterator

from ezdxf.acis.dxf import load_dxf
from ezdxf.math import Vec3


def faces(entity: Any) -> Iterator[list[list[Vec3]]]:
    """Yields the rings of each face: its border, then its holes. A body that has anything curved or unknown ends in
    some exception: half a body would be taken for the whole."""
    bodies = load_dxf(entity)
    if not bodies:
        raise ValueError
    for body in bodies:
        matrix = None if body.transform.is_none else body.transform.matrix
        for face in (face for lump in body.lumps() for shell in lump.shells() for face in shell.faces()):
            if face.surface.type != "plane-surface":
                raise ValueError
            rings = [list(corners(loop)) for loop in face.loops()]
            rings.sort(key=extent, reverse=True)
            yield [list(matrix.transform_vertices(ring)) for ring in rings] if matrix else rings


def corners(loop: Any) -> Iterator[Vec3]:
    for coedge in loop.coedges():
        if coedge.edge.curve.type != "straight-curve":
            raise ValueError
        yield (coedge.edge.end_vertex if coedge.sense else coedge.edge.start_vertex).point.location


def extent(ring: list[Vec3]) -> float:
    """Returns the length of the box around a ring, which is larger than that of a ring inside."""
    return math.hypot(*(max(axis) - min(axis) for axis in zip(*(corner.xyz for corner in ring))))
