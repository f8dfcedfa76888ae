#!/usr/bin/python3 -B
# tolmera-explode on small drawings that ezdxf makes. A case is a line of a table: what is drawn | what has to come, in the
# words of summary(). "circle((0, 0), 1, layer='a')" is add_circle() with that DXF attribute; functions below draw the rest.
import functools
import os
import re
import runpy
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import ezdxf
from ezdxf.acis import api as acis
from ezdxf.enums import TextEntityAlignment as Align
from ezdxf.math import Vec3
from ezdxf.render import forms

ELL = [(0, 0), (3, 0), (3, 1)]
BOW = [(0, 0), (4, 0), (0, 2), (4, 2)]  # the order in which a SOLID has the corners of a rectangle
U = [(0, 0), (4, 0), (4, 3), (3, 3), (3, 1), (1, 1), (1, 3), (0, 3)]
ROUND = [(0, 0, 1), (2, 0, 0), (2, 2, 0)]  # x, y and bulge: half a circle, then a line
DOWN, EAST = (0, 0, -1), (1, 0, 0)  # extrusions

SHAPES = r"""
point((1, 2, 3)), point((1, 2), thickness=2, extrusion=EAST) | 1 point of 0, 1 line of 2, 1 2 0 to 3 2 3
line((0, -2, 1e22), (1 / 3, 5, 0)) | 1 line of 1e+22, 0 -2 0 to 0.33 5 1e+22
line((0, 0), (3, 1), thickness=-2) | 1 face of 6.325, 0 0 -2 to 3 1 0
_3dface([(0, 0, 1), (4, 0), (4, 3)]), _3dface([(0, 0), (4, 0), (1, 1), (0, 4)], invisible=15) | 3 faces of 10.18, 0 0 0 to 4 4 1
solid(BOW, thickness=4), trace(BOW, extrusion=DOWN) | 7 faces of 72, -4 0 0 to 4 2 4
lwpolyline(ROUND[1:] + [(0, 2, -0.09)], format="xyb", close=True) | 10 lines of 6.843, 0 0 0 to 2 2 0
lwpolyline(ELL, thickness=2, extrusion=EAST) | 2 faces of 8, 0 0 0 to 2 3 1
lwpolyline([(0, 0, 2, 1, 1e-15), (8, 0)]) | 1 face of 12, 0 -1 0 to 8 1 0
lwpolyline(ELL, const_width=0.5, elevation=5, extrusion=DOWN) | 2 faces of 2, -3.25 -0.25 -5 to 0 1 -5
lwpolyline([(0, 0, 2, 2, 1), (2, 0)], format="xyseb") | 26 faces of 6.268, -1 -2 0 to 3 0 0
lwpolyline([(i, i % 2) for i in range(10003)]) | 10002 lines of 1.414e+04, 0 0 0 to 10002 1 0
polyline2d(ROUND, format="xyb", close=True, elevation=(0, 0, 2), extrusion=DOWN) | 23 lines of 7.967, -2 -1 -2 to 0 2 -2
polyline2d(ELL, default_start_width=1, default_end_width=1) | 2 faces of 4, 0 -0.5 0 to 3.5 1 0
smoothed(polyline2d(ELL + [(9, 9), (4, 1)])) | 3 lines of 5, 0 0 0 to 4 1 0
polyline3d([(0, 0, 1), (3, 0, 1), (3, 4, 1)], close=True) | 3 lines of 12, 0 0 1 to 3 4 1
tube(False, True), tube(True, False) | 11 faces of 19.8, 0 -1 -1 to 2 1 1
forms.cube().scale(1, 2, 3).render_polyface(space), mesh([range(8), (0, 1, 8)]) | 12 faces of 30, -0.5 -1 -1.5 to 4 1 3
circle((1, 2, 3), 5, thickness=1, extrusion=EAST) | 52 faces of 31.4, 3 -4 -3 to 4 6 7
line((0, 0), (1000, 0)), circle((0, 0), 0.5) | 9 lines of 1003, -0.5 -0.5 0 to 1000 0.5 0
arc((0, 0), 1, 270, 45, extrusion=DOWN), ellipse((0, 9), (4, 0), 0.5, 2, 3) | 15 lines of 5.225, -3.96 -1 0 to 0 10.82 0
open_spline([(0, 0), (0, 4), (8, 4), (8, 0)]), helix(2, 1, 2) | 170 lines of 36.36, -2 -2 0 to 8 3 2
hatch("polyline_path", ROUND, elevation=(0, 0, 3)), mpolygon(offset_vector=(5, 6)).paths.add_polyline_path(ELL) | 18 lines of 15.12, 0 -0.99 0 to 8 7 3
hatch("line", (0, 0), (3, 4), extrusion=DOWN), hatch("arc", (0, 0), 2, 180, 270), hatch("ellipse", (2, 6), (2, 0), 0.5, 90) | 35 lines of 15.39, -3 -2 0 to 4 7 0
hatch("spline", None, [(0, 0), (0, 4), (4, 4), (4, 0)], [0] * 4 + [1] * 4) | 64 lines of 7.999, 0 0 0 to 4 3 0
body([(0, 0), (4, 0), (4, 2), (0, 4)], [(1, 1), (3, 1), (1, 3)]) | 23 faces of 66.6, 0 0 0 to 4 4 2
body(U, curved="straight"), body(U, curved="plane"), lwpolyline([(1, 1)]), blockref("NOWHERE", (0, 0)) | left out: 2 3DSOLID, 1 LWPOLYLINE, 1 INSERT
block("A", "_3dsolid()").grid((9999, 9999), (1, 1)), block("B", "blockref('B', (0, 0))") | left out: 99980001 3DSOLID, 1 INSERT
linear_dim((5, 3), (0, 0), (9, 0), text=" ").render() | 3 lines of 15.5, 2 faces of 0.01299, -0.1 0.12 0 to 9.1 3.38 0
block("A", "ell()", xscale=-2, yscale=3), block("A", "", (5, 0, 1), extrusion=DOWN) | 4 lines of 13, -7 0 -1 to 2 3 0
block("A", "ell()", rotation=90, extrusion=DOWN).grid((2, 3), (10, 20)) | 12 lines of 24, 0 -1 0 to 11 42 0
block("A", "block('B', 'ell()', (5, 0, 1), rotation=90)", rotation=-90, xscale=3, zscale=4) | 2 lines of 6, -1 -12 4 to 2 -9 4
block("A", "block('B', 'circle((1, 0), 1)')", xscale=9, yscale=9) | 52 lines of 56.51, -18 -9 0 to 0 9 0
text("A8%%d", (100, 50)) | 61 lines of 126.7, 100.11 49.81 0 to 123.66 60.18 0
text("HH", align=Align.TOP_RIGHT) | 24 lines of 105.9, -19.28 -10 0 to -1.35 0 0
text("H", align=Align.MIDDLE), text("H", (50, 0), align=Align.MIDDLE_CENTER) | 24 lines of 105.9, -3.81 -5 0 to 53.81 5 0
text("HH", align=Align.ALIGNED), text("HH", (0, 50), align=Align.FIT) | 48 lines of 375.5, 2.61 0 0 to 45.2 52.98 0
text("HH", rotation=90, width=2) | 24 lines of 136.4, -10 2.69 0 to 0 38.57 0
text("I", thickness=3, extrusion=DOWN) | 4 faces of 68.12, -2.7 0 -3 to -1.35 10 0
mtext("H H\\PH", insert=(5, 5, 5), width=5, rotation=90) | 36 lines of 158.9, 5 6.35 5 to 48.34 13.97 5
mtext("{\\H2x;\\W2;\\Q45;H}H", attachment_point=9) | 24 lines of 220.6, -46.19 0 0 to 4.3 20 0
mtext("\\L\\SH/H;") | 25 lines of 116.2, 0 -24 0 to 10.31 0 0
block("A", "ell()").add_attrib("N", "H", (9, 9), {"flags": 1}) | 2 lines of 4, -1 0 0 to 2 1 0
block("A", "attdef('N', (0, 0), 'HHH'), attdef('N', (9, 9), 'H', flags=2)") | 12 lines of 13.24, 8.34 9 0 to 10.24 11.5 0
"""

# Which layers are seen. The layers "off" and "frozen" are what they are called.
LAYERS = """
ell(layer="OFF") | hidden: 1
ell(layer="frozen"), text("H", layer="a") | a
block("A", "ell()", layer="Off") | hidden: 1
block("A", "ell(layer='a')", layer="off") | a
block("A", "ell(layer='a')", layer="Frozen") | hidden: 1
block("A", "block('B', 'ell()')", layer="a") | a
block("A", "block('B', 'ell()', layer='b')", layer="a") | b
block("A", "block('B', 'ell()')", layer="off") | hidden: 1
block("A", "attdef('N', (0, 0))", layer="a").add_attrib("N", "H", (0, 0), {"layer": "0"}) | a
"""

# What --auto-fit makes of it: L, the largest coordinate, may be from 1 to 1,000,000; x or y extends over half of it.
FITS = """
line((0, 0), (0, -1)) | 1 line of 1, 0 -1 0 to 0 0 0
line((0, 0), (0, -0.999)) | 1 line of 200, 0 -100 0 to 0 100 0
line((0, 0), (1e6, 0)) | 1 line of 1e+06, 0 0 0 to 1e+06 0 0
line((0, 0), (1e6 + 1, 0)) | 1 line of 200, -100 0 0 to 100 0 0
line((4, 0), (4, 2)) | 1 line of 2, 4 0 0 to 4 2 0
line((-4, 0), (-2.001, 0)) | 1 line of 200, -100 0 0 to 100 0 0
line((0, 0, 1), (0, 0, -9)) | 1 line of 200, 0 0 -100 to 0 0 100
"""

# A pattern in a drawing of three lines and a block, what replaces it, how many lines are left, and what is said.
DAMAGED = r"""
(\$HANDSEED\n) *5 | \1five | 4 | can be read: Invalid group code "five "
(LTYPE\n.*\n).*\n | \1 | 4 | can be read: Invalid group code
( 11\n)3\.0 | \1x | 3 | can be read: Invalid floating point
(OBJECTS\n(?:.*\n){21})[^~]* | \1 | 4 | was cut off
( 11\n3\.0\n)[^~]* | \1 | 2 | was cut off
(OBJECTS\n(?:.*\n)+?)102\n\{.*\n((?:.*\n)*)  0\nENDSEC | \1\2 | 4 | can be read
"""

# What is drawn, the last two arguments, and the reason.
REFUSED = r"""
ell() | letter.dxf | out.dxf | is not a DXF file
ell() | in.dxf | link.dxf | is the input
ell() | in.dxf | . | is not a writable file
ell() | in.dxf | protected.dxf | is not a writable file
ell() | in.dxf | nowhere/out.dxf | is not a writable folder
space.doc.layout("Layout1").add_point((0, 0)) | in.dxf | out.dxf | nothing to show. 0 entities are hidden (--all shows them), 1
block("A", "ell()").grid((9999, 9999), (2, 2)) | in.dxf | out.dxf | more than 5,000,000 parts
"""

# Entities as small programs write them: an invisible line, and a face with a flag.
ENTITIES = "0 LINE 8 0 60 1 11 4 21 5 31 6 0 3DFACE 8 0 70 15 11 4 21 0 12 4 22 4 13 0 23 4 0 ".replace(" ", "\n")


def block(space, name, content, place=(0, 0), **attributes):
    """Inserts a block with the base point (1, 0), which is drawn where it is met first."""
    if name not in space.doc.blocks:
        draw(space.doc.blocks.new(name, base_point=(1, 0)), content)
    return space.add_blockref(name, place, dxfattribs=attributes)


def ell(space, **attributes):
    space.add_lwpolyline(ELL, dxfattribs=attributes)


def text(space, content, place=(0, 0), align=Align.LEFT, height=10, **attributes):
    space.add_text(content, dxfattribs={"height": height, **attributes}).set_placement(place, (40, 0), align)


def mtext(space, content, **attributes):
    space.add_mtext(content, dxfattribs={"char_height": 10, **attributes})


def smoothed(space, polyline):
    polyline.vertices[3].dxf.flags = 16  # of the spline's frame


def tube(space, *closed):
    made = space.add_polymesh((3, 4))
    made.close(*closed)
    for m, n in ((m, n) for m in range(3) for n in range(4)):
        made.set_mesh_vertex((m, n), (m, *Vec3.from_deg_angle(90 * n).xyz[:2]))


def mesh(space, faces):
    with space.add_mesh().edit_data() as data:
        data.vertices, data.faces = [(x, 0, y) for x, y in U], faces


def hatch(space, edge, *values, **attributes):
    paths = space.add_hatch(dxfattribs=attributes).paths
    getattr(paths if "path" in edge else paths.add_edge_path(), "add_" + edge)(*values)


def body(space, *rings, curved=""):
    """Draws a prism of height 2, with another in it as a hole. `curved` are its edges ("straight") or faces ("plane")."""
    prisms = [forms.extrude(Vec3.list(ring), Vec3.list([(0, 0, 0), (0, 0, 2)]), caps=True) for ring in rings]
    (made, *holes), solid = map(acis.body_from_mesh, prisms), space.add_3dsolid()
    for face in made.lump.shells()[0].faces() if holes else ():
        for hole in holes[0].lump.shells()[0].faces():
            if face.surface.normal.z and face.surface.normal.isclose(hole.surface.normal):
                face.append_loop(hole.loop)
    acis.export_dxf(solid, [made])
    text = "\n".join(solid.sat)
    solid.sat = (text.replace(curved + "-", "cone-", 1) if curved else text).split("\n")


class Pen(dict):
    """The names in the cases: those of this file, and those of ezdxf without add_."""

    def __missing__(self, name):
        own = name in ("block", "ell", "text", "mtext", "smoothed", "tube", "mesh", "hatch", "body")
        if not own and not hasattr(self["space"], "add_" + name.lstrip("_")):
            return globals()[name]
        return functools.partial(globals()[name], self["space"]) if own else functools.partial(self.add, name.lstrip("_"))

    def add(self, kind, *values, **attributes):
        own = {name: attributes.pop(name) for name in ("close", "format", "text") if name in attributes}
        return getattr(self["space"], "add_" + kind)(*values, **own, **({"dxfattribs": attributes} if attributes else {}))


def draw(space, content):
    eval(content, {}, Pen(space=space))


def cases(table):
    return [[part.strip() for part in (line + " ").split(" | ")] for line in table.strip().splitlines()]


def read(path):
    """Returns the entities of a result as pairs of layer and corners."""
    with open(path, encoding="utf-8") as file:
        entities = file.read().rpartition("\nENTITIES\n")[2].partition("ENDSEC")[0]
    bare = re.search("\n ?[1-3][0-3]\n[^.\n]*\n", entities)
    assert not bare, f"The number in {bare[0]!r} has no decimal point."
    corners = {"POINT": lambda e: [e.location], "LINE": lambda e: [e.start, e.end]}
    face = lambda e: [e.vtx0, e.vtx1, e.vtx2] + [e.vtx3] * (e.vtx3 != e.vtx2)
    return [(e.dxf.layer, corners.get(e.dxftype(), face)(e.dxf)) for e in ezdxf.readfile(path).modelspace()]


def summary(parts):
    """Tells how many parts there are, their length or area, and from where to where they are."""
    said = []
    for name, numbers in (("point", (1,)), ("line", (2,)), ("face", (3, 4))):
        some = {tuple(corners) for _, corners in parts if len(corners) in numbers}
        said += [f"{len(some)} {name}{'s' * (len(some) > 1)} of {sum(map(size, some)):.4g}"] if some else []
    axes = list(zip(*(corner.xyz for _, corners in parts for corner in corners)))
    return ", ".join(said + [" to ".join(" ".join(f"{round(end(axis), 2) + 0.0:g}" for axis in axes) for end in (min, max))])


def size(corners):
    if len(corners) < 3:
        return corners[0].distance(corners[-1])
    return sum((b - corners[0]).cross(c - corners[0]).magnitude for b, c in zip(corners[1:], corners[2:])) / 2


class Explode(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)
        main.__globals__["write"] = lambda message: self.said.append(message.replace("tolmera-explode: ", ""))

    def write(self, name, content, newline="\n"):
        with open(name, "w", encoding="utf-8", newline=newline) as file:
            file.write(content)

    def draw(self, content, version="R2010", form="asc"):
        document = ezdxf.new(version, setup=True)
        document.layers.add("off", color=3).off()
        document.layers.add("frozen").freeze()
        draw(document.modelspace(), content)
        document.saveas("in.dxf", fmt=form)

    def explode(self, *options, names=("in.dxf", "out.dxf")):
        """Returns the status of the program, the parts in its result, and what it says."""
        self.said = []
        status = main([*options, *names])
        return status, [] if status else read(names[1]), "".join(self.said)

    def test_shapes(self):
        for content, wanted in cases(SHAPES):
            with self.subTest(content):
                self.draw(content)
                _, parts, message = self.explode()
                self.assertEqual(message.partition("\n")[0] or summary(parts), wanted)

    def test_layers(self):
        for content, wanted in cases(LAYERS):
            with self.subTest(content):
                self.draw(content)
                _, parts, message = self.explode()
                hidden = re.sub("(?s).*show. ([0-9]+) entities are hidden.*", r"hidden: \1", message)
                self.assertEqual(hidden or " ".join({layer for layer, _ in parts}), wanted)
                self.assertTrue(self.explode("--all")[1], "with --all")

    def test_fits(self):
        for content, wanted in cases(FITS):
            with self.subTest(content):
                self.draw(content)
                self.assertEqual(summary(self.explode("--auto-fit")[1]), wanted)

    def test_options(self):
        self.draw("line((9, 0), (9, 2))")
        self.assertEqual(self.explode("--fit")[2], "fitted: moved by (-9.0, -1.0, 0.0), then scaled by 100.0\n")
        self.draw("text('H'), circle((450000, 5600000), 0.5)")
        _, parts, _ = self.explode("--no-text", "--tolerance", "0.001")
        away = [0.5 - a.lerp(b).distance((450000, 5600000)) for _, (a, b) in parts]
        self.assertTrue(0 <= min(away) and 0.0005 < max(away) < 0.001, away)

    def test_versions(self):
        for version, form in zip(("R12", "R2000", "R2004", "R2007", "R2010", "R2013", "R2018"), ("asc", "bin") * 4):
            with self.subTest(version, form=form):
                self.draw("block('A', 'circle((0, 0), 9)')" + (", body(U)" if version > "R2" else ""), version, form)
                self.assertEqual(len(self.explode()[1]), 72 if version > "R2" else 52)

    def test_names_and_colors(self):
        names = ["30", "31", "5 8", "5%8", "Wände", "ENTITIES", "off"]
        self.draw(", ".join(f"ell(layer={name!r})" for name in names))
        lines = [(0, 0, 0), (3, 0, 0)], [(3, 0, 0), (3, 1, 0)]
        self.assertEqual(self.explode("--all")[1], [(name, corners) for name in names for corners in lines])
        result = ezdxf.readfile("out.dxf")
        self.assertEqual([problem.message for problem in result.audit().errors], [])
        self.assertEqual(result.layers.get("off").color, 3)
        self.assertEqual((result.header["$EXTMIN"], result.header["$EXTMAX"]), ((0, 0, 0), (3, 1, 0)))
        with open("out.dxf", encoding="utf-8") as file:
            content = file.read()
        self.assertEqual(content.count("  2\nENTITIES\n"), 1)
        entities = [part.split("\n") for part in content.split("  0\nLINE\n")[1:]]
        self.assertEqual([part for part in entities if part[1].isdigit() or part[18].strip() in part[5]], [])
        self.assertEqual(len({part[1] for part in entities}), len(entities), "handles")

    def test_damaged(self):
        for pattern, replacement, left, said in cases(DAMAGED):
            with self.subTest(pattern):
                self.draw("line((0, 0), (1, 0)), line((0, 0), (2, 0)), line((0, 0), (3, 0)), block('A', 'line((0, 0), (4, 0))')")
                with open("in.dxf", encoding="utf-8") as file:
                    damaged = re.sub(pattern, replacement, file.read(), count=1)
                for newline in ("\n", "\r\n"):
                    self.write("in.dxf", damaged, newline)
                    _, parts, message = self.explode()
                    self.assertEqual((len(parts), said in message), (int(left), True), message)

    def test_refused(self):
        self.write("letter.dxf", "Dear reader")
        self.write("protected.dxf", "Dear reader")
        os.chmod("protected.dxf", 0o444)
        os.chmod(".", 0o777)
        os.symlink("in.dxf", "link.dxf")
        for content, *names, reason in cases(REFUSED):
            with self.subTest(reason):
                self.draw(content)
                before = sorted(os.listdir())
                os.seteuid(os.getuid() or 65534)  # to root nothing is protected
                try:
                    status, _, message = self.explode(names=names)
                finally:
                    os.seteuid(os.getuid())
                self.assertEqual((status, reason in message, sorted(os.listdir())), (1, True, before), message)

    def test_messages(self):
        names = ["\x1b[2J"] * 3 + [f"N{i}" for i in range(20)]
        entities = "".join(f"0\n{name}\n8\n0\n" for name in names) + ENTITIES
        self.write("in.dxf", f"0\nSECTION\n2\nENTITIES\n{entities}ENDSEC\n0\nEOF\n")
        _, parts, message = self.explode()
        self.assertEqual(summary(parts), "1 face of 16, 0 0 0 to 4 4 0")
        self.assertRegex(message, r"^left out: 3 \?\[2J(, 1 N[0-9]+){9}, and others\n$")
        self.assertIn("1 line", summary(self.explode("--all")[1]))

    def test_output(self):
        """What is replaced keeps its permissions and its place, whatever the length of its name."""
        self.draw("ell()")
        name = "n" * 250
        self.write(name, "")
        os.chmod(name, 0o640)
        os.symlink(name, "link.dxf")
        self.assertEqual(len(self.explode(names=("in.dxf", "link.dxf"))[1]), 2)
        self.assertEqual((os.path.islink("link.dxf"), os.stat(name).st_mode & 0o777), (True, 0o640))
        self.assertEqual(sorted(os.listdir()), ["in.dxf", "link.dxf", name])

    def run_program(self, *arguments, shell="", **environment):
        """Runs the program as a user does, `shell` being redirections."""
        command = ["sh", "-c", f'exec "$0" "$@" {shell}', os.environ["EXPLODE"], *arguments]
        return subprocess.run(command, capture_output=True, text=True, env={**os.environ, "HOME": os.getcwd(), **environment})

    def test_surroundings(self):
        self.draw("ell(), text('H')")
        self.write("ezdxf.ini", "[broken")
        before = sorted(os.listdir())
        for shell, status, lines in (("2>&-", 0, 14), ("2>/dev/full", 0, 14), ("", 0, 14), (">&- 2>&-", 1, 0)):
            done = self.run_program("--fit", "in.dxf", "-", shell=shell)
            self.assertEqual((done.returncode, done.stdout.count("AcDbLine\n")), (status, lines), shell)
        self.assertEqual(sorted(os.listdir()), before)
        self.assertIn(os.environ["VERSION"], self.run_program("--version").stdout)
        self.write("ezdxf.py", "raise ImportError(name='ezdxf')")
        done = self.run_program("in.dxf", "out.dxf", PYTHONPATH=".")
        self.assertEqual((done.returncode, "Install the package python3-ezdxf" in done.stderr), (1, True), done.stderr)

    def test_progress_and_interruption(self):
        self.draw("block('A', 'ell(), circle((0, 0), 1)').grid((200, 200), (5, 5))")
        command = [os.environ["EXPLODE"], "--progress", "in.dxf", "out.dxf"]
        with subprocess.Popen(command, stderr=subprocess.PIPE, text=True) as child:
            while os.listdir() == ["in.dxf"] and child.poll() is None:
                time.sleep(0.01)
            child.send_signal(signal.SIGTERM)
            *lines, last = child.stderr.read().splitlines()
        self.assertEqual((child.returncode, last, os.listdir()), (1, "tolmera-explode: It was interrupted.", ["in.dxf"]))
        done = [int(line.replace("progress: ", "")) for line in lines]
        self.assertEqual((done, done[0], done[-1] >= 80), (sorted(set(done)), 40, True))


sys.path.append(os.path.dirname(os.environ["EXPLODE"]))  # its modules
main = runpy.run_path(os.environ["EXPLODE"])["main"]
unittest.main()
