# Makes the points, chains of lines and faces of a single entity. Blocks, dimensions and the like, which consist of
# other entities, are left to drawing.py.
from __future__ import annotations

import math
from functools import lru_cache
from itertools import islice
from typing import Any, Callable, Iterable, Iterator, Sequence, Union

from ezdxf.entities.boundary_paths import BoundaryPathType, EdgeType
from ezdxf.math import BSpline, ConstructionEllipse, Vec2, Vec3, arc_angle_span_deg, bulge_center
from ezdxf.math.triangulation import mapbox_earcut_2d
from ezdxf.render.trace import TraceBuilder

from parts import FACE, LINE, MOST_PARTS, POINT, Shape, Vertex

Entity = Any  # ezdxf keeps the attributes of its classes in tables, which mypy cannot see
Cut = Callable[[float], list[Shape]]  # makes shapes within a given distance of a curve
Made = Union[list[Shape], Cut]
Corner = tuple[Vec2, float]  # of a polyline, with the bulge of the side after it

WIDEST_ANGLE = 45.0  # that one line of an arc may span, in degrees: even a tiny circle becomes an octagon
TEXTS = ("TEXT", "MTEXT", "ATTRIB", "ATTDEF")
SPLINE_FRAME = 16  # flag in group 70: the VERTEX is a control point of a smoothed polyline, not on it


def shapes_of(entity: Entity) -> Made:
    """Returns the shapes of an entity whose type is in LEAVES; for a curve, a function that makes them. Raises an
    exception of any type if the entity is invalid."""
    made = LEAVES[entity.dxftype()](entity)
    thickness = attribute(entity, "thickness", 0.0)
    if not thickness:
        return made
    height = Vec3(entity.dxf.extrusion).normalize(thickness)
    if isinstance(made, list):
        return extruded(made, height)
    cut = made
    return lambda distance: extruded(cut(distance), height)


def attribute(entity: Entity, name: str, default: Any) -> Any:
    """Returns a DXF attribute, or `default` for an entity that does not or cannot have it."""
    return entity.dxf.get(name, default) if entity.dxf.is_supported(name) else default


def polygon(vertices: list[Vec3]) -> list[Shape]:
    """Returns a face; if the polygon is concave or has more than four corners, triangles that do not overlap."""
    corners = [a for a, b in zip(vertices, vertices[-1:] + vertices[:-1]) if a.xyz != b.xyz] or vertices[:1]
    if len(corners) < 3:
        return [Shape(LINE if len(corners) == 2 else POINT, plain(corners))]
    if len(corners) == 3:
        return [triangle(*corners)]
    return [Shape(FACE, plain(corners))] if is_face(corners) else cut_polygon([corners])


def plain(vertices: Iterable[Vec3]) -> list[Vertex]:
    return [vertex.xyz for vertex in vertices]


def triangle(a: Vec3, b: Vec3, c: Vec3) -> Shape:
    return Shape(FACE, plain([a, b, c, c]))


def is_face(corners: list[Vec3]) -> bool:
    """Returns whether a polygon is a convex or self-crossing quadrilateral: not one with a single reflex corner."""
    edges = [corner - corners[i - 1] for i, corner in enumerate(corners)]
    turns = [edge.cross(following) for edge, following in zip(edges, edges[1:] + edges[:1])]
    normal = turns[0] + turns[2]
    inwards = sum(turn.dot(normal) < -1e-9 * normal.dot(normal) for turn in turns)
    return len(corners) == 4 and inwards not in (1, 3)


def cut_polygon(rings: list[list[Vec3]]) -> list[Shape]:
    """Returns the triangles of a polygon. Its first ring is its border, the others are its holes. It is cut in the
    projection along the axis that leaves the largest area."""
    spokes = [corner - rings[0][0] for corner in rings[0]]
    normal = sum((a.cross(b) for a, b in zip(spokes, spokes[1:])), Vec3())
    axis = max(range(3), key=lambda i: abs(normal[i]))
    raised = {corner.xyz[:axis] + corner.xyz[axis + 1 :]: corner for ring in rings for corner in ring}
    flats = [[corner.xyz[:axis] + corner.xyz[axis + 1 :] for corner in ring] for ring in rings]
    return [triangle(*(raised[flat.x, flat.y] for flat in cut)) for cut in mapbox_earcut_2d(flats[0], flats[1:])]


def extruded(shapes: list[Shape], height: Vec3) -> list[Shape]:
    """Returns extruded shapes: a point becomes a line, a line a face, and a face a solid."""
    result: list[Shape] = []
    for kind, plain_vertices in shapes:
        vertices = Vec3.list(plain_vertices)
        top = [vertex + height for vertex in vertices]
        if kind == POINT:
            result.append(Shape(LINE, plain(vertices + top)))
            continue
        ring = range(-1 if kind == FACE else 0, len(vertices) - 1)
        for i in ring:
            result += polygon([vertices[i], vertices[i + 1], top[i + 1], top[i]])
        if kind == FACE:
            result += [Shape(FACE, plain(vertices)), Shape(FACE, plain(top))]
    return result


def chain(vertices: Iterable[Vec3]) -> list[Shape]:
    """Returns a chain of lines, or nothing for a single vertex. Stops when it is too long, as it may be endless."""
    ends = plain(islice(vertices, MOST_PARTS + 2))
    return [Shape(LINE, ends)] if len(ends) > 1 else []


def lines_of_arc(radius: float, angle: float, distance: float) -> int:
    """Returns how many lines keep within a distance of an arc. For a circle, a multiple of 4 preserves its extents."""
    widest = math.degrees(4.0 * math.asin(math.sqrt(min(distance / radius / 2.0, 1.0))))
    count = math.ceil(max(angle / min(widest, WIDEST_ANGLE) - 1e-9, 1.0)) if widest else 1
    return 4 * math.ceil(count / 4) if angle == 360.0 else count


def arc_angles(radius: float, start: float, end: float, distance: float) -> Iterable[float]:
    """Yields the angles at which an arc is cut, in degrees."""
    angle = arc_angle_span_deg(start, end) or 360.0
    count = lines_of_arc(abs(radius), angle, distance)
    return (start + angle * i / count for i in range(count + 1))


def ellipse_vertices(tool: ConstructionEllipse, distance: float) -> Iterable[Vec3]:
    """Yields vertices of an ellipse, at the angles for its circumscribed circle."""
    count = lines_of_arc(tool.major_axis.magnitude * max(1.0, tool.ratio), math.degrees(tool.param_span), distance)
    return tool.vertices(tool.start_param + tool.param_span * i / count for i in range(count + 1))


def spline_vertices(tool: BSpline, distance: float) -> Iterable[Vec3]:
    # ezdxf checks the distance at the middle of each line only; near an inflection it is larger elsewhere.
    return tool.flattening(distance / 2.0)


def arc(entity: Entity) -> Cut:
    start, end = attribute(entity, "start_angle", 0.0), attribute(entity, "end_angle", 360.0)
    return lambda distance: chain(entity.vertices(arc_angles(entity.dxf.radius, start, end, distance)))


def curve(entity: Entity) -> Cut:
    tool = entity.construction_tool()
    vertices: Any = ellipse_vertices if entity.dxftype() == "ELLIPSE" else spline_vertices
    return lambda distance: chain(vertices(tool, distance))


def lwpolyline(entity: Entity) -> Made:
    entity.set_points([(*point[:4], visible(point[4])) for point in entity])
    points = entity.get_points("xyb")
    width = max(map(max, entity.get_points("se")))
    return flat_polyline(entity, points, entity.closed, entity.dxf.elevation, entity.dxf.get("const_width", width))


def polyline(entity: Entity) -> Made:
    if entity.is_poly_face_mesh:
        vertices, faces = entity.indexed_faces()
        return faces_of([vertex.dxf.location for vertex in vertices], (face.indices for face in faces))
    smoothed = any(vertex.dxf.flags & SPLINE_FRAME for vertex in entity.vertices)
    entity.vertices[:] = [vertex for vertex in entity.vertices if not vertex.dxf.flags & SPLINE_FRAME]
    points = [vertex.dxf.location for vertex in entity.vertices]
    if entity.is_polygon_mesh:
        size = "m_smooth_density n_smooth_density" if smoothed else "m_count n_count"
        return grid(entity, points, *(entity.dxf.get(name) for name in size.split()))
    if entity.is_3d_polyline:
        return chain(points + points[:1] if entity.is_closed else points)
    for vertex in entity.vertices:
        vertex.dxf.bulge = visible(vertex.dxf.bulge)
    corners = [(x, y, vertex.dxf.bulge) for (x, y, _), vertex in zip(points, entity.vertices)]
    elevation = Vec3(entity.dxf.elevation) if entity.dxf.hasattr("elevation") else points[0]
    names = ("default_start_width", "default_end_width")
    widths = [entity.dxf.get(name, 0.0) for name in names]
    widths += [vertex.dxf.get(name[8:], 0.0) for vertex in entity.vertices for name in names]
    return flat_polyline(entity, corners, entity.is_closed, elevation.z, max(widths))


def grid(entity: Entity, points: list[Vec3], rows: int, columns: int) -> list[Shape]:
    """Returns the faces of a polygon mesh, which may be closed in either direction."""
    shapes: list[Shape] = []
    for row in range(rows if entity.is_m_closed else rows - 1):
        for column in range(columns if entity.is_n_closed else columns - 1):
            ring = ((row, column), (row, column + 1), (row + 1, column + 1), (row + 1, column))
            shapes += polygon([points[m % rows * columns + n % columns] for m, n in ring])
    return shapes


def faces_of(vertices: list[Vec3], faces: Iterable[Sequence[int]]) -> list[Shape]:
    """Returns the shapes of faces given as indices of vertices. Leaves out faces with a wrong index."""
    known = range(len(vertices))
    return [shape for face in faces if all(i in known for i in face) for shape in polygon([vertices[i] for i in face])]


def flat_polyline(
    entity: Entity, points: Iterable[tuple[float, float, float]], closed: bool, elevation: float, width: float
) -> Made:
    """Returns the shapes of a polyline of (x, y, bulge) in the coordinates of its plane; faces if it has a width."""

    def cut(distance: float) -> list[Shape]:
        return chain(raised(round_vertices(corners, closed, distance), entity, elevation))

    @lru_cache(maxsize=1)  # small arcs reuse the octagon that is made first
    def band(count: int) -> list[Shape]:
        faces = TraceBuilder.from_polyline(entity, segments=count).faces()
        vertices = iter(raised((vertex for face in faces for vertex in face), entity, elevation))
        return [shape for face in zip(*[vertices] * 4) for shape in polygon(list(face))]

    def cut_band(distance: float) -> list[Shape]:
        return band(lines_of_arc(max(radii) + width / 2.0, 360.0, distance))

    corners = [(Vec2(x, y), bulge) for x, y, bulge in points]
    radii = [start.distance(bulge_center(start, end, bulge)) for start, end, bulge in sides(corners, closed) if bulge]
    if not width:
        return cut if radii else cut(0.0)
    return cut_band if radii else band(8)


def raised(flat: Iterable[Union[Vec2, Vec3]], entity: Entity, elevation: float) -> Iterable[Vec3]:
    """Converts vertices from the coordinates of an entity's plane to those of the drawing."""
    return entity.ocs().points_to_wcs(Vec3(vertex.x, vertex.y, elevation) for vertex in flat)


def visible(bulge: float) -> float:
    """Returns a bulge, or 0 if it is too small to be seen."""
    return bulge if abs(bulge) > 1e-9 else 0.0


def sides(corners: list[Corner], closed: bool) -> Iterator[tuple[Vec2, Vec2, float]]:
    """Yields start, end and bulge of each side of a polyline."""
    ends = corners[1:] + corners[:1] if closed else corners[1:]
    for (start, bulge), (end, _) in zip(corners, ends):
        yield start, end, 0.0 if start.isclose(end) else bulge


def round_vertices(corners: list[Corner], closed: bool, distance: float) -> Iterator[Vec2]:
    """Yields the vertices of a polyline and of its arcs. A bulge is the tangent of a quarter of an arc's angle."""
    yield corners[0][0]
    for start, end, bulge in sides(corners, closed):
        if bulge:
            center = bulge_center(start, end, bulge)
            angle = 4.0 * math.atan(bulge)
            count = lines_of_arc(start.distance(center), math.degrees(abs(angle)), distance)
            for i in range(1, count):
                yield center + (start - center).rotate(angle * i / count)
        yield end


def hatch(entity: Entity) -> Cut:
    """Returns the boundaries of a HATCH or an MPOLYGON; only the latter has an offset."""

    def cut(distance: float) -> list[Shape]:
        flats = (flat for path in entity.paths for flat in boundary(path, distance))
        return [shape for flat in flats for shape in chain(raised((offset + v for v in flat), entity, elevation))]

    offset = Vec3(attribute(entity, "offset_vector", (0, 0)))
    elevation = entity.dxf.elevation.z
    return cut


def boundary(path: Any, distance: float) -> Iterator[Iterable[Union[Vec2, Vec3]]]:
    """Yields the vertices of each part of one boundary."""
    if path.type == BoundaryPathType.POLYLINE:
        yield round_vertices([(Vec2(x, y), visible(bulge)) for x, y, bulge in path.vertices], path.is_closed, distance)
        return
    for edge in path.edges:
        yield EDGES[edge.type](edge, distance)


EDGES: dict[EdgeType, Callable[[Any, float], Iterable[Union[Vec2, Vec3]]]] = {
    EdgeType.LINE: lambda edge, distance: [edge.start, edge.end],
    EdgeType.ARC: lambda edge, distance: edge.construction_tool().vertices(
        arc_angles(edge.radius, edge.start_angle, edge.end_angle, distance)
    ),
    EdgeType.ELLIPSE: lambda edge, distance: ellipse_vertices(edge.construction_tool(), distance),
    EdgeType.SPLINE: lambda edge, distance: spline_vertices(edge.construction_tool(), distance),
}


def body(entity: Entity) -> list[Shape]:
    from bodies import faces

    return [shape for rings in faces(entity) for shape in (cut_polygon(rings) if rings[1:] else polygon(rings[0]))]


def text(entity: Entity) -> list[Shape]:
    from text import outlines

    return [Shape(LINE, outline) for outline in outlines(entity)]


# The types that are converted here; drawing.py takes composite ones apart. Images and the like cannot be converted.
LEAVES: dict[str, Callable[[Entity], Made]] = {
    "POINT": lambda entity: [Shape(POINT, [entity.dxf.location.xyz])],
    "LINE": lambda entity: [Shape(LINE, [entity.dxf.start.xyz, entity.dxf.end.xyz])],
    **dict.fromkeys(("3DFACE", "SOLID", "TRACE"), lambda entity: polygon(entity.wcs_vertices())),
    "MESH": lambda entity: faces_of(Vec3.list(entity.vertices), entity.faces),
    "POLYLINE": polyline,
    "LWPOLYLINE": lwpolyline,
    **dict.fromkeys(("CIRCLE", "ARC"), arc),
    **dict.fromkeys(("ELLIPSE", "SPLINE", "HELIX"), curve),
    **dict.fromkeys(("HATCH", "MPOLYGON"), hatch),
    **dict.fromkeys(("3DSOLID", "BODY", "REGION", "SURFACE"), body),
    **dict.fromkeys(TEXTS, text),
}
