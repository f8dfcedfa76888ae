#!/usr/bin/env python3
# Writes the sample drawings of Tolmera (mill.dxf, terrain.dxf, cloud.dxf)
# beside this script.  Run it without arguments; the output never varies.

import os
from math import cos, exp, hypot, pi, radians, sin, sqrt

FOLDER = os.path.dirname(os.path.abspath(__file__))


# ---------------------------------------------------------------- vectors

def add(a, b):
    return (a[0] + b[0], a[1] + b[1], a[2] + b[2])


def sub(a, b):
    return (a[0] - b[0], a[1] - b[1], a[2] - b[2])


def scale(a, factor):
    return (a[0] * factor, a[1] * factor, a[2] * factor)


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1],
            a[2] * b[0] - a[0] * b[2],
            a[0] * b[1] - a[1] * b[0])


def unit(a):
    return scale(a, 1.0 / sqrt(a[0] ** 2 + a[1] ** 2 + a[2] ** 2))


def mix(a, b, t):
    return add(scale(a, 1.0 - t), scale(b, t))


def noise(*keys):
    """A repeatable number from -1 to 1 that depends on whole numbers only."""
    state = 0x2545F491
    for key in keys:
        state ^= (key + 0x9E3779B9) & 0xFFFFFFFF
        for _ in range(2):
            state = (state ^ (state >> 15)) * 0x2C1B3C6D & 0xFFFFFFFF
            state = (state ^ (state >> 12)) * 0x297A2D39 & 0xFFFFFFFF
    return state / 0x7FFFFFFF - 1.0


class Frame:
    """A local system of axes: u across, v upwards, w outwards."""

    def __init__(self, origin, u, v, w):
        self.origin, self.u, self.v, self.w = origin, u, v, w

    def at(self, a, b, c=0.0):
        return add(self.origin, add(scale(self.u, a),
                                    add(scale(self.v, b), scale(self.w, c))))

    def moved(self, a, b, c):
        return Frame(self.at(a, b, c), self.u, self.v, self.w)


def upright(origin, angle):
    """A frame that stands upright and faces angle (degrees, x towards z)."""
    w = (cos(radians(angle)), 0.0, sin(radians(angle)))
    return Frame(origin, (-w[2], 0.0, w[0]), (0.0, 1.0, 0.0), w)


FRONT, BACK, LEFT, RIGHT = -90, 90, 180, 0      # facing -z, +z, -x, +x


# ---------------------------------------------------------------- drawing

class Drawing:
    """Points, lines and faces by layer, and the writing of them as DXF."""

    def __init__(self, layers):
        self.layers = layers                    # name -> colour number
        self.entities = []                      # (kind, layer, corners)

    def point(self, layer, p):
        self.entities.append(("POINT", layer, (p,)))

    def line(self, layer, a, b):
        self.entities.append(("LINE", layer, (a, b)))

    def polyline(self, layer, *corners):
        for a, b in zip(corners, corners[1:]):
            self.line(layer, a, b)

    def face(self, layer, a, b, c, d=None):
        self.entities.append(("3DFACE", layer, (a, b, c, c if d is None else d)))

    # Shapes built from faces.  A ring is a list of corners, taken as closed.

    def loft(self, layer, lower, upper):
        count = len(lower)
        for i in range(count):
            j = (i + 1) % count
            self.face(layer, lower[i], lower[j], upper[j], upper[i])

    def loft_triangles(self, layer, lower, upper):
        count = len(lower)
        for i in range(count):
            j = (i + 1) % count
            if i % 2:
                self.face(layer, lower[i], lower[j], upper[j])
                self.face(layer, lower[i], upper[j], upper[i])
            else:
                self.face(layer, lower[i], lower[j], upper[i])
                self.face(layer, lower[j], upper[j], upper[i])

    def fan(self, layer, ring, apex):
        for i, corner in enumerate(ring):
            self.face(layer, corner, ring[(i + 1) % len(ring)], apex)

    def lofts(self, layer, rings):
        for lower, upper in zip(rings, rings[1:]):
            self.loft(layer, lower, upper)

    def box(self, layer, frame, width, height, depth, taper=1.0):
        """Stands on the frame's origin, its top narrowed by taper."""
        def ring(y, k):
            a, c = k * width / 2, k * depth / 2
            return [frame.at(-a, y, -c), frame.at(a, y, -c),
                    frame.at(a, y, c), frame.at(-a, y, c)]
        lower, upper = ring(0.0, 1.0), ring(height, taper)
        self.loft(layer, lower, upper)
        self.face(layer, *lower)
        self.face(layer, *upper)

    def beam(self, layer, start, end, thick, thin, side=(1.0, 0.0, 0.0)):
        """A four-sided bar from start to end, tapering from thick to thin."""
        along = unit(sub(end, start))
        u = unit(cross(along, side))
        v = cross(along, u)
        rings = []
        for p, size in ((start, thick / 2), (end, thin / 2)):
            f = Frame(p, u, v, along)
            rings.append([f.at(-size, -size), f.at(size, -size),
                          f.at(size, size), f.at(-size, size)])
        self.loft(layer, *rings)
        self.face(layer, *rings[1])

    # Output.

    def extents(self):
        corners = [p for entity in self.entities for p in entity[2]]
        return (tuple(min(p[i] for p in corners) for i in range(3)),
                tuple(max(p[i] for p in corners) for i in range(3)))

    def count(self, kind):
        return sum(1 for entity in self.entities if entity[0] == kind)

    def save(self, name):
        lines = []

        def put(code, value):
            lines.append("%3d" % code)
            lines.append(value)

        def put_corner(index, p):
            for axis in range(3):
                put(10 * (axis + 1) + index, decimals(p[axis]))

        def put_whole(code, number):
            put(code, "%6d" % number)

        low, high = self.extents()
        first_handle = 0xA1000
        put(0, "SECTION")
        put(2, "HEADER")
        put(9, "$ACADVER")
        put(1, "AC1009")
        for title, corner in (("$EXTMIN", low), ("$EXTMAX", high)):
            put(9, title)
            put_corner(0, corner)
        put(9, "$HANDLING")
        put_whole(70, 1)
        put(9, "$HANDSEED")
        put(5, "%X" % (first_handle + len(self.entities)))
        put(0, "ENDSEC")

        put(0, "SECTION")
        put(2, "TABLES")
        put(0, "TABLE")
        put(2, "LTYPE")
        put_whole(70, 1)
        put(0, "LTYPE")
        put(2, "CONTINUOUS")
        put_whole(70, 0)
        put(3, "Solid")
        put_whole(72, 65)
        put_whole(73, 0)
        put(40, decimals(0.0))
        put(0, "ENDTAB")
        put(0, "TABLE")
        put(2, "LAYER")
        put_whole(70, len(self.layers))
        for layer, colour in self.layers.items():
            put(0, "LAYER")
            put(2, layer)
            put_whole(70, 0)
            put_whole(62, colour)
            put(6, "CONTINUOUS")
        put(0, "ENDTAB")
        put(0, "ENDSEC")

        put(0, "SECTION")
        put(2, "ENTITIES")
        for number, (kind, layer, corners) in enumerate(self.entities):
            put(0, kind)
            put(5, "%X" % (first_handle + number))
            put(8, layer)
            for index, corner in enumerate(corners):
                put_corner(index, corner)
        put(0, "ENDSEC")
        put(0, "EOF")

        with open(os.path.join(FOLDER, name), "w", newline="\n") as output:
            output.write("\n".join(lines) + "\n")
        print("%-12s %5d points %5d lines %5d faces" % (
            name, self.count("POINT"), self.count("LINE"), self.count("3DFACE")))


def decimals(value):
    text = "%.6f" % value
    return "0.000000" if text == "-0.000000" else text


def circle(centre, radius, count, phase=0.0, stretch=1.0):
    """A level ring; stretch widens it along z."""
    ring = []
    for i in range(count):
        angle = 2 * pi * (i + phase) / count
        ring.append((centre[0] + radius * cos(angle), centre[1],
                     centre[2] + radius * stretch * sin(angle)))
    return ring


def turned(frame, profile, count, phase=0.0):
    """Rings about the frame's w axis for pairs of (radius, distance)."""
    rings = []
    for radius, distance in profile:
        rings.append([frame.at(radius * cos(2 * pi * (i + phase) / count),
                               radius * sin(2 * pi * (i + phase) / count),
                               distance) for i in range(count)])
    return rings


# ------------------------------------------------------------------- mill
# y points up; the front of the mill faces -z.  Lengths in metres, origin
# in the middle of the drawing.

MILL_LAYERS = {"WALLS": 7, "ROOF": 1, "TRIM": 30, "SAILS": 2, "GALLERY": 40,
               "GROUND": 3, "ROCK": 8, "TREES": 94, "YARD": 33, "FENCE": 32,
               "SURVEY": 6, "BIRDS": 5}

FLOOR = -4.9                    # level of the yard around the tower
TOWER_FOOT, TOWER_HEAD = FLOOR + 1.1, FLOOR + 8.4
TOWER_WIDE, TOWER_SLIM = 2.55, 1.5      # distance of the eight walls from y
BOARDS = 13                     # courses of weatherboards on the tower
DECK = FLOOR + 4.45             # level of the gallery around the tower
HUB = (0.0, 4.05, -3.3)        # centre of the sails
SAIL_TILT, SAIL_PHASE, SAIL_LENGTH = 8.0, 21.0, 5.6


def make_mill():
    d = Drawing(MILL_LAYERS)
    add_island(d)
    add_tower(d)
    add_porch(d)
    add_cottage(d)
    add_gallery(d)
    add_cap(d)
    add_sails(d)
    add_fantail(d)
    add_yard(d)
    add_trees(d)
    add_fence(d)
    add_survey(d)
    add_birds(d)
    d.save("mill.dxf")


# The island: a lawn on top, a pointed rock below.

LAWN = [0.40, 0.66, 0.85, 1.0]              # share of the rim's radius
ROCK = [(1.0, -5.25), (1.03, -5.85), (0.90, -6.80), (0.70, -7.80),
        (0.49, -8.70), (0.26, -9.55)]       # share of the radius, level
ROCK_TIP = (-0.9, -10.40, 0.8)
ISLAND_SIDES = 26


def rim(angle):
    radius = 1.0 + 0.05 * sin(2 * angle + 0.7) + 0.035 * sin(3 * angle + 2.0)
    return (8.0 * radius * cos(angle), 7.1 * radius * sin(angle))


def ground(x, z):
    """Level of the lawn: even about the tower, rolling off to the rim."""
    far = max(0.0, hypot(x / 8.0, z / 7.1) - 0.45)
    return FLOOR - 1.1 * far ** 1.4 + 0.5 * far * sin(0.9 * x + 1.3 * z)


def on_ground(x, z, sunk=0.15):
    return (x, ground(x, z) - sunk, z)


def add_island(d):
    rings = []
    for number, share in enumerate(LAWN):
        ring = []
        for i in range(ISLAND_SIDES):
            x, z = rim(2 * pi * (i + 0.5 * (number % 2)) / ISLAND_SIDES)
            ring.append(on_ground(x * share, z * share, 0.0))
        rings.append(ring)
    d.fan("GROUND", rings[0], (0.0, FLOOR, 0.0))
    for inner, outer in zip(rings, rings[1:]):
        d.loft_triangles("GROUND", inner, outer)

    lower = rings[-1]
    for number, (share, level) in enumerate(ROCK[1:], 1):
        ring = []
        for i in range(ISLAND_SIDES):
            x, z = rim(2 * pi * (i + 0.5 * (number + 1)) / ISLAND_SIDES)
            wild = 1.0 + 0.11 * noise(number, i)
            drift = 1.0 - share
            ring.append((x * share * wild + ROCK_TIP[0] * drift,
                         level + 0.26 * noise(number, i, 7),
                         z * share * wild + ROCK_TIP[2] * drift))
        d.loft_triangles("ROCK", lower, ring)
        lower = ring
    d.fan("ROCK", lower, ROCK_TIP)


# The tower: eight walls of boards on a stone base.

def tower_radius(level):
    t = (level - TOWER_FOOT) / (TOWER_HEAD - TOWER_FOOT)
    return TOWER_WIDE + (TOWER_SLIM - TOWER_WIDE) * t


def octagon(level, apothem):
    return circle((0.0, level, 0.0), apothem / cos(pi / 8), 8, 0.5)


def tower_wall(angle, level):
    """A frame on the leaning wall that faces angle."""
    f = upright((0.0, level, 0.0), angle)
    lean = (TOWER_SLIM - TOWER_WIDE) / (TOWER_HEAD - TOWER_FOOT)
    origin = f.at(0.0, 0.0, tower_radius(level))
    return Frame(origin, f.u, unit(add(f.v, scale(f.w, lean))),
                 unit(sub(f.w, scale(f.v, lean))))


def add_tower(d):
    d.lofts("WALLS", [octagon(FLOOR - 0.2, 3.0), octagon(FLOOR + 0.85, 2.84),
                      octagon(TOWER_FOOT, 2.6)])
    step = (TOWER_HEAD - TOWER_FOOT) / BOARDS
    for i in range(BOARDS):
        low = TOWER_FOOT + step * i
        skirt = octagon(low + 0.08, tower_radius(low) + 0.10)
        d.loft("WALLS", octagon(low, tower_radius(low) + 0.01), skirt)
        d.loft("WALLS", skirt, octagon(low + step, tower_radius(low + step) + 0.01))
    for angle, level, width, height in (
            (FRONT, FLOOR + 5.3, 0.85, 1.1), (FRONT - 45, FLOOR + 2.1, 0.8, 1.1),
            (BACK, FLOOR + 2.0, 0.8, 1.1), (BACK + 45, FLOOR + 5.6, 0.75, 1.0),
            (LEFT, FLOOR + 2.0, 0.9, 1.2), (LEFT, FLOOR + 5.5, 0.75, 1.0),
            (RIGHT, FLOOR + 5.8, 0.75, 1.0)):
        add_window(d, tower_wall(angle, level), width, height)


def add_window(d, wall, width, height, panes=(2, 2), proud=0.26):
    """A framed window of pointed panes; wall is the middle of its sill."""
    def border(inset, depth):
        a, low, high = width / 2 - inset, inset, height - inset
        return [wall.at(-a, low, depth), wall.at(a, low, depth),
                wall.at(a, high, depth), wall.at(-a, high, depth)]
    d.lofts("TRIM", [border(-0.10, -0.02), border(-0.04, proud),
                     border(0.03, proud), border(0.05, proud - 0.10)])
    d.box("TRIM", wall.moved(0.0, -0.20, 0.12), width + 0.4, 0.11, 0.44, 0.92)
    add_panes(d, "TRIM", wall, (-width / 2 + 0.05, width / 2 - 0.05),
              (0.05, height - 0.05), panes, proud - 0.10, proud + 0.03)


def add_panes(d, layer, wall, across, upwards, panes, edge, peak):
    wide = (across[1] - across[0]) / panes[0]
    high = (upwards[1] - upwards[0]) / panes[1]
    for i in range(panes[0]):
        for j in range(panes[1]):
            a, b = across[0] + i * wide, upwards[0] + j * high
            d.fan(layer, [wall.at(a, b, edge), wall.at(a + wide, b, edge),
                          wall.at(a + wide, b + high, edge),
                          wall.at(a, b + high, edge)],
                  wall.at(a + wide / 2, b + high / 2, peak))


# Gabled buildings.  The frame stands on the ground at the back end, u across
# the building, w along the ridge.

def add_gabled(d, f, half, length, eaves, ridge, overhang, courses):
    def outline(c):
        return [f.at(-half, -0.25, c), f.at(-half, eaves, c),
                f.at(0.0, ridge, c), f.at(half, eaves, c),
                f.at(half, -0.25, c)]
    ends = outline(0.0), outline(length)
    for end in ends:
        d.face("WALLS", end[0], end[1], end[3], end[4])
        d.face("WALLS", end[1], end[2], end[3])
    for i in (0, 3):
        d.face("WALLS", ends[0][i], ends[0][i + 1], ends[1][i + 1], ends[1][i])
    for side in (-1, 1):
        add_roof_side(d, f, side * half, length, eaves, ridge, overhang, courses)


def add_roof_side(d, f, half, length, eaves, ridge, overhang, courses):
    """Overlapping courses of shingles from the eaves to the ridge."""
    fall = (ridge - eaves) / abs(half)
    foot = abs(half) + overhang
    sign = 1.0 if half > 0 else -1.0
    near, far = 0.0, length + overhang

    def edge(share, lift):
        a = foot * (1.0 - share)
        level = ridge + 0.05 - fall * a + lift
        return f.at(sign * a, level, near), f.at(sign * a, level, far)
    for i in range(courses):
        under, skirt = edge(i / courses, 0.0), edge(i / courses, 0.09)
        upper = edge((i + 1) / courses, 0.0)
        d.face("ROOF", under[0], under[1], skirt[1], skirt[0])
        d.face("ROOF", skirt[0], skirt[1], upper[1], upper[0])
        d.face("ROOF", under[1], skirt[1], upper[1])
    soffit, top = edge(0.0, 0.0), edge(1.0, -0.02)
    d.face("ROOF", soffit[0], soffit[1], top[1], top[0])
    board = sub(top[1], soffit[1])          # the verge, set on its edge
    d.beam("TRIM", add(soffit[1], scale(f.w, 0.02)), add(top[1], scale(f.w, 0.02)),
           0.17, 0.17, add(f.w, unit(cross(board, f.w))))


def add_porch(d):
    f = upright((0.0, FLOOR, -2.2), FRONT)
    add_gabled(d, f, 0.95, 1.55, 2.15, 3.0, 0.22, 4)
    add_door(d, f.moved(0.0, 0.28, 1.55), 1.15, 1.75)
    for width, height, depth in ((1.9, 0.38, 0.75), (2.3, 0.24, 1.4)):
        d.box("YARD", f.moved(0.0, -0.12, 1.55 + depth / 2), width, height,
              depth - 0.02, 0.95)


def add_door(d, wall, width, height, planks=5):
    """A door of ridged planks in a bevelled frame, with a knob."""
    def border(inset, depth):
        a = width / 2 - inset
        return [wall.at(-a, -0.1, depth), wall.at(-a, height - inset, depth),
                wall.at(a, height - inset, depth), wall.at(a, -0.1, depth)]
    rows = [border(-0.14, -0.02), border(-0.10, 0.16),
            border(-0.02, 0.16), border(0.0, 0.05)]
    for outer, inner in zip(rows, rows[1:]):
        for i in range(3):
            d.face("TRIM", outer[i], outer[i + 1], inner[i + 1], inner[i])
    step = width / planks
    for i in range(planks):
        a = -width / 2 + i * step
        slopes = ((a, 0.05), (a + 0.3 * step, 0.11), (a + step, 0.05))
        for (a0, c0), (a1, c1) in zip(slopes, slopes[1:]):
            d.face("TRIM", wall.at(a0, -0.1, c0), wall.at(a1, -0.1, c1),
                   wall.at(a1, height, c1), wall.at(a0, height, c0))
    knob = turned(wall.moved(0.38, 0.85, 0.08), [(0.07, 0.0), (0.07, 0.08)], 6)
    d.loft("TRIM", *knob)
    d.fan("TRIM", knob[1], wall.at(0.38, 0.85, 0.2))


def add_cottage(d):
    f = upright((1.4, FLOOR, 0.1), RIGHT)
    half, length, eaves = 1.75, 4.9, 2.15
    add_gabled(d, f, half, length, eaves, 3.95, 0.32, 7)
    front = upright((0.0, FLOOR, 0.1 - half), FRONT)
    back = upright((0.0, FLOOR, 0.1 + half), BACK)
    for x in (3.75, 5.3):
        add_window(d, front.moved(x, 0.72, 0.0), 0.8, 0.95, (2, 2), 0.2)
    add_window(d, back.moved(-4.6, 0.72, 0.0), 1.2, 0.9, (3, 2), 0.2)
    end = f.moved(0.0, 0.0, length)
    add_window(d, end.moved(-0.75, 0.6, 0.0), 0.7, 0.95, (2, 2), 0.2)
    add_round_window(d, end.moved(0.0, 2.65, 0.0), 0.42)
    add_chimney(d, upright((5.35, FLOOR + 2.6, 0.85), FRONT))


def add_round_window(d, wall, radius):
    rings = turned(wall, [(radius, -0.02), (radius - 0.04, 0.18),
                          (radius - 0.14, 0.18), (radius - 0.16, 0.08)], 10)
    d.lofts("TRIM", rings)
    d.fan("TRIM", rings[-1], wall.at(0.0, 0.0, 0.22))


def add_chimney(d, f):
    d.box("WALLS", f, 0.8, 1.9, 0.7, 0.88)
    d.box("TRIM", f.moved(0.0, 1.9, 0.0), 0.92, 0.18, 0.82, 0.9)
    for side in (-1, 1):
        pot = [circle(f.at(0.18 * side, 2.08 + y, 0.0), r, 8)
               for r, y in ((0.15, 0.0), (0.11, 0.4), (0.14, 0.46))]
        d.lofts("TRIM", pot)
        d.fan("TRIM", pot[-1], f.at(0.18 * side, 2.46, 0.0))


# The gallery, the cap, the sails and the fantail.

def add_gallery(d):
    inner, outer = tower_radius(DECK) - 0.1, tower_radius(DECK) + 0.95
    rings = [octagon(DECK - 0.16, inner), octagon(DECK - 0.16, outer - 0.05),
             octagon(DECK, outer), octagon(DECK, inner)]
    d.lofts("GALLERY", rings)
    wall = octagon(DECK - 1.15, tower_radius(DECK - 1.15))
    reach = octagon(DECK - 0.16, outer - 0.2)
    for foot, tip in zip(wall, reach):
        across = unit((-tip[2], 0.0, tip[0]))
        d.beam("GALLERY", foot, tip, 0.13, 0.13, across)

    corners = octagon(DECK, outer - 0.08)
    for i, corner in enumerate(corners):
        follower = corners[(i + 1) % 8]
        for part in range(4):
            post = mix(corner, follower, part / 4)
            d.line("GALLERY", post, add(post, (0.0, 0.85, 0.0)))
        for height in (0.42, 0.85):
            d.line("GALLERY", add(corner, (0.0, height, 0.0)),
                   add(follower, (0.0, height, 0.0)))


CAP = [(1.45, -0.10), (1.86, 0.0), (1.98, 0.22), (1.93, 0.62), (1.72, 1.05),
       (1.36, 1.45), (0.92, 1.78), (0.50, 2.02), (0.24, 2.26), (0.10, 2.60)]


def add_cap(d):
    rings = [circle((0.0, TOWER_HEAD + y, 0.08), r, 16, 0.5, 1.08)
             for r, y in CAP]
    d.lofts("ROOF", rings)
    top = TOWER_HEAD + CAP[-1][1]
    ball = [circle((0.0, top + y, 0.08), r, 8)
            for r, y in ((0.06, -0.02), (0.19, 0.12), (0.06, 0.28))]
    d.lofts("TRIM", ball)
    d.fan("TRIM", ball[-1], (0.0, top + 0.75, 0.08))

    hatch = upright((0.0, TOWER_HEAD + 0.2, -1.2), FRONT)
    add_gabled(d, hatch, 0.62, 1.05, 0.85, 1.35, 0.16, 3)


def sail_plane():
    tilt = radians(SAIL_TILT)
    return Frame(HUB, (1.0, 0.0, 0.0), (0.0, cos(tilt), -sin(tilt)),
                 (0.0, sin(tilt), -cos(tilt)))


def add_sails(d):
    plane = sail_plane()
    shaft = turned(plane, [(0.30, -2.0), (0.24, -0.3), (0.42, -0.24),
                           (0.42, 0.22), (0.22, 0.34)], 8, 0.5)
    d.lofts("SAILS", shaft)
    nose = plane.at(0.0, 0.0, 0.95)
    d.fan("SAILS", shaft[-1], nose)
    for quarter in range(4):
        angle = radians(SAIL_PHASE + 90 * quarter)
        along = add(scale(plane.u, sin(angle)), scale(plane.v, cos(angle)))
        aside = add(scale(plane.u, cos(angle)), scale(plane.v, -sin(angle)))
        add_sail(d, Frame(HUB, aside, along, plane.w), nose)


def add_sail(d, f, nose):
    """One sail: u across, v along its stock, w towards the wind."""
    first, width, shutters = 1.45, 1.3, 15
    pitch = (SAIL_LENGTH - first) / shutters

    def at(across, along, out=0.0):
        t = (along - first) / (SAIL_LENGTH - first)
        twist = radians(24.0 - 18.0 * t)
        return f.at(across * cos(twist), along, -across * sin(twist) + out)

    d.beam("SAILS", f.at(0.0, 0.1, 0.0), f.at(0.0, SAIL_LENGTH, 0.0),
           0.30, 0.14, f.w)
    for i in range(shutters):
        low = first + pitch * i
        high = low + 0.78 * pitch
        d.face("SAILS", at(0.10, low, -0.09), at(width, low, -0.09),
               at(width, high, 0.09), at(0.10, high, 0.09))
        d.line("SAILS", at(-0.42, low), at(width, low))
    for i in range(5):
        low, high = (first + (SAIL_LENGTH - first) * k / 5 for k in (i, i + 1))
        d.face("SAILS", at(-0.10, low), at(-0.42, low), at(-0.42, high))
        d.face("SAILS", at(-0.10, low), at(-0.42, high), at(-0.10, high))
        for across in (0.62, width):
            d.line("SAILS", at(across, low), at(across, high))
    d.line("SAILS", at(-0.42, SAIL_LENGTH), at(width, SAIL_LENGTH))
    d.line("SAILS", nose, f.at(0.0, 3.4, 0.08))


def add_fantail(d):
    """The small wheel at the back that turns the cap into the wind."""
    hub = (0.0, TOWER_HEAD + 2.05, 3.25)
    foot = TOWER_HEAD + 0.35
    d.box("TRIM", upright((0.0, foot - 0.12, 2.5), BACK), 1.5, 0.14, 1.5)
    for side in (-1, 1):
        d.beam("TRIM", (0.62 * side, foot - 0.05, 3.1),
               (0.30 * side, hub[1] + 0.1, hub[2]), 0.16, 0.11, (0.0, 0.0, 1.0))
        d.beam("TRIM", (0.66 * side, foot + 0.2, 1.6),
               (0.31 * side, hub[1], hub[2] - 0.1), 0.13, 0.10)
    f = upright(hub, RIGHT)
    axle = turned(f, [(0.10, -0.42), (0.14, -0.12), (0.14, 0.12), (0.10, 0.42)], 6)
    d.lofts("SAILS", axle)
    d.fan("SAILS", axle[0], f.at(0.0, 0.0, -0.46))
    d.fan("SAILS", axle[-1], f.at(0.0, 0.0, 0.46))
    blades = 8
    for i in range(blades):
        angle = 2 * pi * (i + 0.3) / blades
        along = add(scale(f.u, cos(angle)), scale(f.v, sin(angle)))
        aside = unit(add(add(scale(f.u, -sin(angle)), scale(f.v, cos(angle))),
                         scale(f.w, 0.75)))
        blade = Frame(hub, aside, along, f.w)
        d.face("SAILS", blade.at(-0.10, 0.3), blade.at(0.10, 0.3),
               blade.at(0.30, 1.25), blade.at(-0.30, 1.25))
        d.line("SAILS", hub, blade.at(0.0, 1.3))


# The yard: path, field, well, barrels, haystack, ladder.

STONES = [(0.1, -5.55), (-0.3, -6.15)]
BARRELS = [(2.75, -3.0, 1.0), (3.5, -2.75, 0.8)]        # x, z, height


def add_yard(d):
    for number, (x, z) in enumerate(STONES):
        add_stone(d, number, x, z)
    add_field(d, -5.0, -3.3)
    add_well(d, upright(on_ground(4.3, 4.3), FRONT + 20))
    for x, z, height in BARRELS:
        add_barrel(d, on_ground(x, z), height)
    add_haystack(d, on_ground(-2.4, 5.0, 0.2), 1.1, 1.9)
    add_ladder(d)


def add_stone(d, number, x, z):
    def ring(size, level):
        return [(x + size * (1 + 0.15 * noise(number, i, 3)) * 1.25 * cos(pi * i / 3),
                 level,
                 z + size * (1 + 0.15 * noise(number, i, 4)) * 0.7 * sin(pi * i / 3))
                for i in range(6)]
    level = ground(x, z)
    lower, upper = ring(0.42, level - 0.15), ring(0.32, level + 0.1)
    d.loft("YARD", lower, upper)
    d.face("YARD", *upper[:4])
    d.face("YARD", upper[3], upper[4], upper[5], upper[0])


def add_field(d, x, z):
    """Ploughed ridges."""
    for row in range(6):
        f = upright(on_ground(x + 0.48 * row, z, 0.0), FRONT)
        half, length = 0.19, 1.25
        peak = [f.at(0.0, 0.16, c) for c in (-length + 0.2, length - 0.2)]
        feet = [[f.at(a, -0.15, c) for c in (-length, length)]
                for a in (-half, half)]
        for foot in feet:
            d.face("YARD", foot[0], foot[1], peak[1], peak[0])
        for i in range(2):
            d.face("YARD", feet[0][i], feet[1][i], peak[i])


def add_well(d, f):
    shape = [(0.85, -0.1), (0.78, 0.75), (0.88, 0.8), (0.88, 0.95),
             (0.60, 0.95), (0.56, 0.2)]
    d.lofts("YARD", [circle(add(f.origin, (0.0, y, 0.0)), r, 10)
                     for r, y in shape])
    for side in (-1, 1):
        d.beam("YARD", f.at(0.74 * side, 0.0), f.at(0.74 * side, 2.1),
               0.14, 0.12, f.w)
        d.face("ROOF", f.at(-1.05, 1.85, 0.85 * side), f.at(1.05, 1.85, 0.85 * side),
               f.at(0.95, 2.6), f.at(-0.95, 2.6))
        d.face("TRIM", f.at(0.74 * side, 2.0, -0.6), f.at(0.74 * side, 2.0, 0.6),
               f.at(0.74 * side, 2.5))
    d.line("YARD", f.at(-0.8, 1.6), f.at(0.8, 1.6))
    d.line("YARD", f.at(0.0, 1.6), f.at(0.0, 0.3))


def add_barrel(d, foot, height):
    shape = [(0.80, 0.0), (0.97, 0.25), (1.0, 0.5), (0.97, 0.75), (0.80, 1.0)]
    rings = [circle(add(foot, (0.0, height * y, 0.0)), 0.40 * height * r, 8)
             for r, y in shape]
    d.lofts("YARD", rings)
    d.fan("YARD", rings[-1], add(foot, (0.0, height * 0.94, 0.0)))


def add_haystack(d, foot, radius, height):
    shape = [(0.85, 0.0), (1.0, 0.25), (0.92, 0.5), (0.62, 0.78)]
    rings = []
    for number, (r, y) in enumerate(shape):
        rings.append(circle(add(foot, (0.0, height * y, 0.0)), radius * r, 10,
                            0.5 * (number % 2)))
        if number:
            d.loft_triangles("YARD", rings[-2], rings[-1])
    d.fan("YARD", rings[-1], add(foot, (0.0, height, 0.0)))
    d.line("YARD", foot, add(foot, (0.0, height + 0.5, 0.0)))


def add_ladder(d):
    """From the yard behind the tower up to the gallery."""
    foot, head = on_ground(-0.55, 4.6, 0.0), (-0.55, DECK + 0.9, 2.95)
    other = (0.5, 0.0, 0.0)
    d.line("GALLERY", foot, head)
    d.line("GALLERY", add(foot, other), add(head, other))
    for i in range(1, 17):
        rung = mix(foot, head, i / 17)
        d.line("GALLERY", rung, add(rung, other))


# Trees.

FIRS = [(-5.6, 0.4, 4.6, 1.25), (-4.3, 2.7, 5.6, 1.45), (-6.1, -1.35, 2.6, 0.85),
        (6.6, 2.6, 3.1, 0.9)]                   # x, z, height, radius


def add_trees(d):
    for number, (x, z, height, radius) in enumerate(FIRS):
        add_fir(d, number, on_ground(x, z), height, radius)
    add_bush(d, on_ground(4.9, -4.1), 0.75)


def add_fir(d, number, foot, height, radius, sides=9):
    stem = [circle(add(foot, (0.0, y * height, 0.0)), 0.13 * radius, 6)
            for y in (0.0, 0.25)]
    d.loft("TREES", *stem)
    for tier, (low, high, share) in enumerate(
            ((0.14, 0.52, 1.0), (0.36, 0.74, 0.78), (0.58, 1.0, 0.54))):
        skirt = []
        for i, corner in enumerate(circle(foot, radius * share, sides, 0.37 * tier)):
            wild = 1.0 + 0.13 * noise(number, tier, i)
            skirt.append((foot[0] + (corner[0] - foot[0]) * wild,
                          foot[1] + height * (low + 0.025 * noise(number, tier, i, 5)),
                          foot[2] + (corner[2] - foot[2]) * wild))
        d.fan("TREES", skirt, add(foot, (0.0, height * high, 0.0)))
        if tier == 0:
            d.fan("TREES", skirt, add(foot, (0.0, height * (low + 0.06), 0.0)))


def add_bush(d, foot, radius):
    shape = [(0.6, 0.0), (1.0, 0.5), (0.95, 1.0), (0.55, 1.45)]
    rings = []
    for number, (r, y) in enumerate(shape):
        ring = circle(add(foot, (0.0, y * radius, 0.0)), r * radius, 9,
                      0.5 * (number % 2))
        rings.append([add(p, scale((noise(number, i), noise(number, i, 1),
                                    noise(number, i, 2)), 0.1 * radius))
                      for i, p in enumerate(ring)])
        if number:
            d.loft_triangles("TREES", rings[-2], rings[-1])
    d.fan("TREES", rings[-1], add(foot, (0.0, 1.6 * radius, 0.0)))


# Things drawn in lines and points.

def add_fence(d):
    """Around the back and the left of the island; open at the front."""
    posts = []
    for i in range(36):
        x, z = rim(radians(18 + 5.4 * i))
        posts.append(on_ground(0.93 * x, 0.93 * z, 0.05))
    for i, post in enumerate(posts):
        d.line("FENCE", post, add(post, (0.0, 0.95, 0.0)))
        if i:
            for height in (0.35, 0.60, 0.85):
                d.line("FENCE", add(posts[i - 1], (0.0, height, 0.0)),
                       add(post, (0.0, height, 0.0)))


def add_survey(d):
    """The circle of the sail tips, marks on the rim, a tripod."""
    plane = sail_plane()
    for i in range(72):
        angle = 2 * pi * i / 72
        radius = SAIL_LENGTH + 0.12
        d.point("SURVEY", plane.at(radius * cos(angle), radius * sin(angle)))
    for i in range(14):
        x, z = rim(2 * pi * (i + 0.5) / 14)
        d.point("SURVEY", on_ground(0.97 * x, 0.97 * z, -0.1))
    head = (2.6, ground(2.6, -5.2) + 1.35, -5.2)
    d.point("SURVEY", add(head, (0.0, 0.4, 0.0)))
    for i in range(3):
        angle = 2 * pi * (i + 0.2) / 3
        foot = on_ground(head[0] + 0.5 * cos(angle), head[2] + 0.5 * sin(angle), 0.05)
        d.line("SURVEY", head, foot)
    d.box("SURVEY", upright(head, FRONT + 25), 0.26, 0.3, 0.34, 0.85)


BIRDS = [(4.6, 8.3, 1.2, 0.50), (5.6, 7.7, 0.3, 0.42), (6.2, 8.2, 1.6, 0.36),
         (6.4, 7.0, -1.0, 0.34), (7.2, 7.3, 0.8, 0.30)]


def add_birds(d):
    for x, y, z, span in BIRDS:
        d.polyline("BIRDS", (x - span, y + 0.1 * span, z + 0.3 * span),
                   (x - 0.5 * span, y + 0.5 * span, z), (x, y, z),
                   (x + 0.5 * span, y + 0.5 * span, z),
                   (x + span, y + 0.1 * span, z + 0.3 * span))
        d.point("BIRDS", (x, y, z - 0.15 * span))


# ---------------------------------------------------------------- terrain
# A mountainous island, y upwards, in metres.  Equilateral triangles fill a
# hexagon; the contours lie on a sheet below the terrain.

TERRAIN_LAYERS = {"SURFACE": 3, "SHORE": 5, "CONTOURS": 32, "BORDER": 7,
                  "SUMMITS": 1}

RINGS, REACH = 27, 500.0                # rings of triangles, their outer radius
SHEET, STEP = -205.0, 25.0              # level of the sheet, contour interval
SEA = -40.0                             # level of the sea
HILLS = [(-150, 60, 300, 150), (-50, 190, 110, 120), (90, 130, 110, 110),
         (220, 20, 190, 115), (150, -170, 100, 120), (-200, -180, 120, 95),
         (-20, -40, 60, 150), (-290, 110, 70, 100)]     # x, z, height, spread
CRATER = (-150, 60, 165, 48)


def bump(x, z, hill):
    return hill[2] * exp(-((x - hill[0]) ** 2 + (z - hill[1]) ** 2) / hill[3] ** 2)


def smooth_noise(x, z, key):
    """Noise between the points of a square lattice of unit width."""
    i, j = int(x // 1), int(z // 1)
    s, t = x - i, z - j
    s, t = s * s * (3 - 2 * s), t * t * (3 - 2 * t)
    near = noise(i, j, key) * (1 - s) + noise(i + 1, j, key) * s
    far = noise(i, j + 1, key) * (1 - s) + noise(i + 1, j + 1, key) * s
    return near * (1 - t) + far * t


def height(x, z):
    level = sum(bump(x, z, hill) for hill in HILLS)
    ridges = sum((0.5 - abs(smooth_noise(x / size + 9.5, z / size + 4.5, key))) * size
                 for key, size in enumerate((170.0, 80.0, 38.0)))
    level += ridges * (0.10 + 0.55 * min(1.0, level / 220.0))
    return level - bump(x, z, CRATER) - 95.0


def make_terrain():
    d = Drawing(TERRAIN_LAYERS)
    for triangle in hexagon_triangles():
        d.face("SURFACE", *triangle)
        add_contours(d, triangle)
    add_border(d)
    for x, z, _, _ in HILLS[1:]:
        d.point("SUMMITS", (float(x), height(x, z) + 6.0, float(z)))
        d.point("SUMMITS", (float(x), SHEET, float(z)))
    d.save("terrain.dxf")


def lattice(i, j):
    """A corner of the triangles: i steps along x, j steps 60 degrees aside."""
    side = REACH / RINGS
    x, z = side * (i + 0.5 * j), side * j * sqrt(0.75)
    return (x, height(x, z), z)


def hexagon_triangles():
    def inside(*corners):
        return all(max(abs(i), abs(j), abs(i + j)) <= RINGS for i, j in corners)
    triangles = []
    for j in range(-RINGS, RINGS):
        for i in range(-RINGS, RINGS + 1):
            for corners in (((i, j), (i + 1, j), (i, j + 1)),
                            ((i, j), (i, j + 1), (i - 1, j + 1))):
                if inside(*corners):
                    triangles.append([lattice(*corner) for corner in corners])
    return triangles


def add_contours(d, triangle):
    """Cuts the triangle by level planes; puts the cuts on the sheet."""
    step = int((min(p[1] for p in triangle) - SEA) // STEP) + 1
    while SEA + step * STEP < max(p[1] for p in triangle):
        cut = SEA + step * STEP + 1e-4
        ends = []
        for p, q in zip(triangle, triangle[1:] + triangle[:1]):
            if (p[1] < cut) != (q[1] < cut):
                ends.append(mix(p, q, (cut - p[1]) / (q[1] - p[1])))
        if len(ends) == 2:
            d.line("CONTOURS", *[(x, SHEET, z) for x, _, z in ends])
            if step == 0:
                d.line("SHORE", *[(x, y + 2.5, z) for x, y, z in ends])
        step += 1


def add_border(d):
    corners = circle((0.0, SHEET, 0.0), REACH, 6)
    d.polyline("BORDER", *corners, corners[0])
    for corner in corners:
        d.line("BORDER", corner, (corner[0], height(corner[0], corner[2]), corner[2]))


# ------------------------------------------------------------------ cloud
# A knotted tube as a scanner would see it: rings of points that are a little
# off the true surface.  The knot lies across z, one lobe at the top.

CLOUD_LAYERS = {"SCAN": 4}

KNOT_RINGS, RING_POINTS = 220, 24
KNOT_SIZE, TUBE, SCATTER = 100.0, 0.46, 0.010


def make_cloud():
    d = Drawing(CLOUD_LAYERS)
    points = [knot_point(ring, k)
              for ring in range(KNOT_RINGS) for k in range(RING_POINTS)]
    low = tuple(min(p[i] for p in points) for i in range(3))
    high = tuple(max(p[i] for p in points) for i in range(3))
    centre = mix(low, high, 0.5)
    size = KNOT_SIZE / max(scale(sub(high, low), 0.5))
    for p in points:
        d.point("SCAN", scale(sub(p, centre), size))
    d.save("cloud.dxf")


def knot(t):
    """The middle of the tube, a trefoil, for t from 0 to 1."""
    a = 2 * pi * t
    return (sin(a) + 2 * sin(2 * a), 2 * cos(2 * a) - cos(a), -1.25 * sin(3 * a))


def knot_point(ring, k):
    t = ring / KNOT_RINGS
    centre, ahead = knot(t), knot(t + 1e-4)
    along = unit(sub(ahead, centre))
    aside = unit(cross(along, (0.0, 0.0, 1.0)))
    upwards = cross(along, aside)
    angle = 2 * pi * (k + 0.5 * (ring % 2)) / RING_POINTS
    radius = TUBE * (1.0 + 0.12 * sin(2 * pi * t)) + SCATTER * noise(ring, k)
    return add(centre, add(scale(aside, radius * cos(angle)),
                           scale(upwards, radius * sin(angle))))


if __name__ == "__main__":
    make_mill()
    make_terrain()
    make_cloud()
