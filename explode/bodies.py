# The planar faces of solid bodies and regions. ezdxf reads their geometry, which is ACIS data.
from __future__ import annotations

from typing import Any, Iterator

from ezdxf.acis.dxf import load_dxf
from ezdxf.math import BoundingBox, Vec3


def faces(entity: Any) -> Iterator[list[list[Vec3]]]:
    """Yields the rings of each face: its border, then its holes. Raises an exception of any type if a body has anything
    curved or unknown, because half a body looks like a whole one."""
    for body in load_dxf(entity):
        matrix = None if body.transform.is_none else body.transform.matrix
        for face in (face for lump in body.lumps() for shell in lump.shells() for face in shell.faces()):
            if face.surface.type != "plane-surface":
                raise ValueError
            rings = [list(corners(loop)) for loop in face.loops()]
            rings.sort(key=lambda ring: BoundingBox(ring).size.magnitude, reverse=True)
            yield [list(matrix.transform_vertices(ring)) for ring in rings] if matrix else rings


def corners(loop: Any) -> Iterator[Vec3]:
    for coedge in loop.coedges():
        if coedge.edge.curve.type != "straight-curve":
            raise ValueError
        yield (coedge.edge.end_vertex if coedge.sense else coedge.edge.start_vertex).point.location
