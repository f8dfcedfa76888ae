# What one entity of a drawing looks like: its points, chains of lines and faces. Knows the entities that have a shape
# of their own; blocks, dimensions and the like, which are made of these, are left to drawing.py.
import math
from itertools import islice

from ezdxf.entities.boundary_paths import BoundaryPathType, EdgeType
from ezdxf.math import ConstructionArc, Vec2, Vec3, arc_angle_span_deg, bulge_center
from ezdxf.math.triangulation import mapbox_earcut_2d
from ezdxf.render import TraceBuilder

# A shape is a pair of its kind and its vertices: one for a point, two or more for a chain of lines, four for a face.
# The kinds are the names of the entities that they are written as.
POINT, LINE, FACE = "POINT", "LINE", "3DFACE"

MOST_SHAPES = 5_000_000  # points, lines and faces that a drawing may become
WIDEST_ANGLE = 45.0  # of an arc in one line, in degrees: the smallest circle is an octagon
SPLINE_FRAME = 16  # in group 70: the VERTEX controls a smoothed polyline, but is no part of it


def shapes_of(entity):
    """Returns the shapes of an entity that LEAVES lists, or for a curve a function that returns those which keep within
    a distance of it. An entity that makes no sense ends in some exception."""
    made = LEAVES[entity.dxftype()](entity)
    height = height_of(entity)
    if not height:
        return made
    if callable(made):
        return lambda distance: extruded(made(distance), height)
    return extruded(made, height)


def attribute(entity, name, default):
    """Returns a DXF attribute, or `default` for an entity that does not or cannot have it."""
    return entity.dxf.get(name, default) if entity.dxf.is_supported(name) else default


def polygon(vertices):
    """Returns a face, or triangles that do not overlap for a polygon that is concave or has more than four corners."""
    corners = [a for a, b in zip(vertices, vertices[-1:] + vertices[:-1]) if a.xyz != b.xyz] or vertices[:1]
    if len(corners) < 3:
        return [(LINE if len(corners) == 2 else POINT, corners)]
    if len(corners) > 4:
        return [triangle(*corners) for corners in cut_polygon(corners)]
    if len(corners) == 3:
        return [triangle(*corners)]
    reflex = reflex_corner(corners)
    if reflex is None:
        return [(FACE, corners)]
    a, b, c, d = corners[reflex:] + corners[:reflex]
    return [triangle(a, b, c), triangle(a, c, d)]


def triangle(a, b, c):
    return FACE, [a, b, c, c]


def reflex_corner(corners):
    """Returns the index of the corner of a concave quadrilateral that points inwards, None where there is none."""
    edges = [corners[i] - corners[i - 1] for i in range(4)]
    normals = [edge.cross(following) for edge, following in zip(edges, edges[1:] + edges[:1])]
    normal = normals[0] + normals[2]
    turns = [other.dot(normal) for other in normals]
    left = [i for i in range(4) if turns[i] > 0]
    right = [i for i in range(4) if turns[i] < 0]
    odd = left if len(left) == 1 else right
    return odd[0] if len(odd) == 1 and len(left) + len(right) == 4 else None


def cut_polygon(corners):
    """Yields the triangles of a polygon, seen along the axis from which it looks largest."""
    spokes = [corner - corners[0] for corner in corners]
    normal = sum((a.cross(b) for a, b in zip(spokes, spokes[1:])), Vec3())
    axis = max(range(3), key=lambda i: abs(normal[i]))
    flats = [corner.xyz[:axis] + corner.xyz[axis + 1 :] for corner in corners]
    raised = dict(zip(flats, corners))
    for cut in mapbox_earcut_2d(flats):
        yield [raised[flat.x, flat.y] for flat in cut]


def height_of(entity):
    """Returns the thickness of an entity (group 39) as a vector, which is zero for most."""
    thickness = attribute(entity, "thickness", 0.0)
    return Vec3(entity.dxf.extrusion).normalize(thickness) if thickness else Vec3()


def extruded(shapes, height):
    """Returns extruded shapes: a point becomes a line, a line a face, and a face a solid."""
    result = []
    for kind, vertices in shapes:
        top = [vertex + height for vertex in vertices]
        if kind == POINT:
            result.append((LINE, vertices + top))
            continue
        ring = range(-1 if kind == FACE else 0, len(vertices) - 1)
        for i in ring:
            result += polygon([vertices[i], vertices[i + 1], top[i + 1], top[i]])
        if kind == FACE:
            result += [(FACE, vertices), (FACE, top)]
    return result


def chain(vertices):
    """Returns a chain of lines, and none for a lone vertex. An endless one stops where it is too long to be written."""
    vertices = list(islice(vertices, MOST_SHAPES + 2))
    return [(LINE, vertices)] if len(vertices) > 1 else []


def lines_of_arc(radius, angle, distance):
    """Returns how many lines keep within a distance of an arc. A full circle is also cut at its extreme points."""
    widest = math.degrees(4.0 * math.asin(math.sqrt(min(distance / radius / 2.0, 1.0))))
    count = math.ceil(max(angle / min(widest, WIDEST_ANGLE) - 1e-9, 1.0)) if widest else 1
    return 4 * math.ceil(count / 4) if angle == 360.0 else count


def arc_angles(arc, distance):
    """Yields the angles at which an arc is cut, in degrees."""
    angle = arc_angle_span_deg(arc.start_angle, arc.end_angle) or 360.0
    count = lines_of_arc(abs(arc.radius), angle, distance)
    return (arc.start_angle + angle * i / count for i in range(count + 1))


def ellipse_vertices(tool, distance):
    """Yields vertices of an ezdxf.math.ConstructionEllipse, which is a circle that is pressed in one direction."""
    count = lines_of_arc(tool.major_axis.magnitude * max(1.0, tool.ratio), math.degrees(tool.param_span), distance)
    return tool.vertices(tool.start_param + tool.param_span * i / count for i in range(count + 1))


def spline_vertices(tool, distance):
    # ezdxf compares the distance in the middle of each line; at an inflection it is larger beside that.
    return tool.flattening(distance / 2.0)


def circle(entity):
    arc = ConstructionArc(radius=entity.dxf.radius)
    return lambda distance: chain(entity.vertices(arc_angles(arc, distance)))


def arc(entity):
    return lambda distance: chain(entity.vertices(arc_angles(entity.dxf, distance)))


def ellipse(entity):
    tool = entity.construction_tool()
    return lambda distance: chain(ellipse_vertices(tool, distance))


def spline(entity):
    tool = entity.construction_tool()
    return lambda distance: chain(spline_vertices(tool, distance))


def lwpolyline(entity):
    entity.set_points([(*point[:4], visible(point[4])) for point in entity])
    points = entity.get_points("xyb")
    width = max(map(max, entity.get_points("se")))
    return flat_polyline(entity, points, entity.closed, entity.dxf.elevation, entity.dxf.get("const_width", width))


def polyline(entity):
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


def grid(entity, points, rows, columns):
    """Returns the faces of a polygon mesh, which may be closed in either direction."""
    shapes = []
    for row in range(rows if entity.is_m_closed else rows - 1):
        for column in range(columns if entity.is_n_closed else columns - 1):
            ring = ((row, column), (row, column + 1), (row + 1, column + 1), (row + 1, column))
            shapes += polygon([points[m % rows * columns + n % columns] for m, n in ring])
    return shapes


def mesh(entity):
    return faces_of([Vec3(vertex) for vertex in entity.vertices], entity.faces)


def faces_of(vertices, faces):
    """Returns the shapes of faces that are given as indices of vertices, but for faces with a wrong index."""
    known = range(len(vertices))
    return [shape for face in faces if all(i in known for i in face) for shape in polygon([vertices[i] for i in face])]


def flat_polyline(entity, points, closed, elevation, width):
    """Returns the shapes of a polyline of (x, y, bulge) in the coordinates of its plane; faces where it has width."""

    def cut(distance):
        return chain(raised(round_vertices(corners, closed, distance), entity, elevation))

    def band(count):
        faces = TraceBuilder.from_polyline(entity, segments=count).faces()
        vertices = iter(raised((vertex for face in faces for vertex in face), entity, elevation))
        return [shape for face in zip(*[vertices] * 4) for shape in polygon(list(face))]

    def cut_band(distance):
        count = lines_of_arc(max(radii) + width / 2.0, 360.0, distance)
        return octagonal if count == 8 else band(count)

    corners = [(Vec2(x, y), bulge) for x, y, bulge in points]
    radii = [start.distance(bulge_center(start, end, bulge)) for start, end, bulge in sides(corners, closed) if bulge]
    if not width:
        return cut if radii else cut(0.0)
    octagonal = band(8)
    return cut_band if radii else octagonal


def raised(flat, entity, elevation):
    """Yields vertices of an entity's plane in the coordinates of the drawing."""
    return entity.ocs().points_to_wcs(Vec3(vertex.x, vertex.y, elevation) for vertex in flat)


def visible(bulge):
    """Returns a bulge, and 0 for one so small that nobody sees it."""
    return bulge if abs(bulge) > 1e-9 else 0.0


def sides(corners, closed):
    """Yields start, end and bulge of each side of a polyline."""
    ends = corners[1:] + corners[:1] if closed else corners[1:]
    for (start, bulge), (end, _) in zip(corners, ends):
        yield start, end, 0.0 if start.isclose(end) else bulge


def round_vertices(corners, closed, distance):
    """Yields the vertices of a polyline with those on its arcs. A bulge is the tangent of a quarter of an arc's angle."""
    yield corners[0][0]
    for start, end, bulge in sides(corners, closed):
        if bulge:
            center = bulge_center(start, end, bulge)
            angle = 4.0 * math.atan(bulge)
            count = lines_of_arc(start.distance(center), math.degrees(abs(angle)), distance)
            for i in range(1, count):
                yield center + (start - center).rotate(angle * i / count)
        yield end


def hatch(entity):
    """Returns what bounds a HATCH or an MPOLYGON, which alone has an offset."""

    def cut(distance):
        flats = (flat for path in entity.paths for flat in boundary(path, distance))
        return [shape for flat in flats for shape in chain(raised((offset + v for v in flat), entity, elevation))]

    offset = Vec3(attribute(entity, "offset_vector", (0, 0)))
    elevation = entity.dxf.elevation.z
    return cut


def boundary(path, distance):
    """Yields the vertices of each part of one boundary."""
    if path.type == BoundaryPathType.POLYLINE:
        yield round_vertices([(Vec2(x, y), visible(bulge)) for x, y, bulge in path.vertices], path.is_closed, distance)
        return
    for edge in path.edges:
        yield EDGES[edge.type](edge, distance)


EDGES = {
    EdgeType.LINE: lambda edge, distance: [edge.start, edge.end],
    EdgeType.ARC: lambda edge, distance: edge.construction_tool().vertices(arc_angles(edge, distance)),
    EdgeType.ELLIPSE: lambda edge, distance: ellipse_vertices(edge.construction_tool(), distance),
    EdgeType.SPLINE: lambda edge, distance: spline_vertices(edge.construction_tool(), distance),
}

# Texts, images and bodies are in no row: they have no shape that points, lines and faces could show.
LEAVES = {
    "POINT": lambda entity: [(POINT, [entity.dxf.location])],
    "LINE": lambda entity: [(LINE, [entity.dxf.start, entity.dxf.end])],
    "3DFACE": lambda entity: polygon(entity.wcs_vertices()),
    "SOLID": lambda entity: polygon(entity.wcs_vertices()),
    "TRACE": lambda entity: polygon(entity.wcs_vertices()),
    "MESH": mesh,
    "POLYLINE": polyline,
    "LWPOLYLINE": lwpolyline,
    "CIRCLE": circle,
    "ARC": arc,
    "ELLIPSE": ellipse,
    "SPLINE": spline,
    "HELIX": spline,
    "HATCH": hatch,
    "MPOLYGON": hatch,
}
