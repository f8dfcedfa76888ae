#!/usr/bin/python3 -B
# tolmera-explode on small drawings that ezdxf makes. A case is a line of a table: what is drawn | what has to come, in the
# words of summary(). "circle((0, 0), 1, layer='a')" is add_circle() with that DXF attribute; functions below draw the rest.
import os
import re
import runpy
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from contextlib import chdir
from functools import partial
from pathlib import Path

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
point((1, 2, 3)), point((1, 2), thickness=2, extrusion=EAST), line((0, 5), (3, 6), thickness=-2) | 1 points of 0, 1 lines of 2, 1 faces of 6.325, 0 2 -2 to 3 6 3
_3dface([(0, 0, 1), (4, 0), (4, 3)]), _3dface([(0, 0), (4, 0), (1, 1), (0, 4)]) | 3 faces of 10.18, 0 0 0 to 4 4 1
solid(BOW, thickness=4), trace(BOW, extrusion=DOWN) | 7 faces of 72, -4 0 0 to 4 2 4
lwpolyline([(0, 0, 2, 1, 1e-15), (8, 0)]) | 1 faces of 12, 0 -1 0 to 8 1 0
lwpolyline(ELL, const_width=0.5, elevation=5, extrusion=DOWN) | 2 faces of 2, -3.25 -0.25 -5 to 0 1 -5
lwpolyline([(0, 0, 2, 2, 1), (2, 0)], format="xyseb") | 26 faces of 6.268, -1 -2 0 to 3 0 0
lwpolyline([(i, i % 2) for i in range(10003)]) | 10002 lines of 1.414e+04, 0 0 0 to 10002 1 0
polyline2d(ROUND, format="xyb", close=True, elevation=(0, 0, 2), extrusion=DOWN) | 23 lines of 7.967, -2 -1 -2 to 0 2 -2
polyline2d(ELL + [(9, 9), (4, 1)]).vertices[3].dxf.set("flags", 16) | 3 lines of 5, 0 0 0 to 4 1 0
polyline3d([(0, 0, 1), (3, 0, 1), (3, 4, 1)], close=True) | 3 lines of 12, 0 0 1 to 3 4 1
tube(False, True), tube(True, False) | 11 faces of 19.8, 0 -1 -1 to 2 1 1
forms.cube().scale(1, 2, 3).render_polyface(space), forms.torus(4, 4).render_mesh(space) | 22 faces of 24.77, -1.1 -1.1 -1.5 to 1.1 1.1 1.5
circle((1, 2, 3), 5, thickness=1, extrusion=EAST) | 52 faces of 31.4, 3 -4 -3 to 4 6 7
line((0, 0), (1000, 0)), circle((0, 0), 0.5) | 9 lines of 1003, -0.5 -0.5 0 to 1000 0.5 0
arc((0, 0), 1, 270, 45, extrusion=DOWN), ellipse((0, 9), (4, 0), 0.5, 2, 3) | 15 lines of 5.225, -3.96 -1 0 to 0 10.82 0
helix(2, 1, 2), hatch("spline", None, [(0, 0), (0, 4), (4, 4), (4, 0)], [0] * 4 + [1] * 4) | 160 lines of 33.2, -2 -2 0 to 4 3 2
hatch("polyline_path", ROUND, elevation=(0, 0, 3)), mpolygon(offset_vector=(5, 6)).paths.add_polyline_path(ELL) | 18 lines of 15.12, 0 -0.99 0 to 8 7 3
hatch("line", (0, 0), (3, 4), extrusion=DOWN), hatch("arc", (0, 0), 2, 180, 270), hatch("ellipse", (2, 6), (2, 0), 0.5, 90) | 35 lines of 15.39, -3 -2 0 to 4 7 0
body([(0, 0), (4, 0), (4, 2), (0, 4)], [(1, 1), (3, 1), (1, 3)]) | 23 faces of 66.6, 0 0 0 to 4 4 2
body(U, curved="straight"), body(U, curved="plane"), lwpolyline([(1, 1)]), blockref("NOWHERE", (0, 0)) | left out: 2 3DSOLID, 1 LWPOLYLINE, 1 INSERT
block("A", "_3dsolid()").grid((9999, 9999), (1, 1)), block("B", "blockref('B', (0, 0))") | left out: 99980001 3DSOLID, 1 INSERT
linear_dim((5, 3), (0, 0), (9, 0), text=" ").render() | 3 lines of 15.5, 2 faces of 0.01299, -0.1 0.12 0 to 9.1 3.38 0
block("A", "ell()", xscale=-2, yscale=3), block("A", "", (5, 0, 1), extrusion=DOWN) | 4 lines of 13, -7 0 -1 to 2 3 0
block("A", "ell()", rotation=90, extrusion=DOWN).grid((2, 3), (10, 20)) | 12 lines of 24, 0 -1 0 to 11 42 0
block("A", "block('B', 'ell()', (5, 0, 1), rotation=90)", rotation=-90, xscale=3, zscale=4) | 2 lines of 6, -1 -12 4 to 2 -9 4
block("A", "block('B', 'circle((1, 0), 1)')", xscale=9, yscale=9) | 52 lines of 56.51, -18 -9 0 to 0 9 0
text("8%%d", align=Align.TOP_RIGHT) | 50 lines of 76.7, -14.66 -10.19 0 to -1.31 0.18 0
text("H", align=Align.MIDDLE), text("H", (50, 0), align=Align.MIDDLE_CENTER) | 24 lines of 105.9, -3.81 -5 0 to 53.81 5 0
text("HH", align=Align.ALIGNED), text("HH", (0, 50), align=Align.FIT) | 48 lines of 375.5, 2.61 0 0 to 45.2 52.98 0
mtext("{\\H2x;\\W2;\\Q45;H}H H", attachment_point=9, rotation=90, width=60) | 36 lines of 273.6, -43.34 -46.19 0 to 0 4.3 0
mtext("\\L\\SH/H;") | 25 lines of 116.2, 0 -24 0 to 10.31 0 0
block("A", "ell()").add_attrib("N", "H", (9, 9), {"flags": 1}) | 2 lines of 4, -1 0 0 to 2 1 0
block("A", "attdef('N', (0, 0), 'HHH'), attdef('N', (9, 9), 'H', flags=2)") | 12 lines of 13.24, 8.34 9 0 to 10.24 11.5 0
"""

# Which layers are seen. The layers "off" and "frozen" are what they are called.
LAYERS = """
ell(layer="OFF") | Hidden entities (see --all): 1.
block("A", "ell(layer='a')", layer="off") | a
block("A", "ell(layer='a')", layer="Frozen") | Hidden entities (see --all): 1.
block("A", "block('B', 'ell()')", layer="a") | a
block("A", "block('B', 'ell()')", layer="off") | Hidden entities (see --all): 1.
block("A", "attdef('N', (0, 0))", layer="a").add_attrib("N", "H", (0, 0), {"layer": "0"}) | a
"""

# What --auto-fit makes of it: L, the largest coordinate, may be from 1 to 1,000,000; x or y extends over half of it.
FITS = """
line((0, 0), (0, -1)) | 1 lines of 1, 0 -1 0 to 0 0 0
line((0, 0), (0, -0.999)) | 1 lines of 200, 0 -100 0 to 0 100 0
line((0, 0), (1e6 + 1, 0)) | 1 lines of 200, -100 0 0 to 100 0 0
line((-4, 0), (-2.001, 0)) | 1 lines of 200, -100 0 0 to 100 0 0
line((0, 0, 1), (0, 0, -9)) | 1 lines of 200, 0 0 -100 to 0 0 100
"""

# A pattern in a drawing of three lines and a block, what replaces it, how many lines are left, and what is said.
DAMAGED = r"""
(\$HANDSEED\n) *5 | \1five | 4 | can be read: Invalid group code "five "
( 11\n)3\.0 | \1x | 3 | can be read: Invalid floating point
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
space.doc.layout("Layout1").add_point((0, 0)) | in.dxf | out.dxf | to show. Entities in paper space: 1.
block("A", "ell()").grid((9999, 9999), (2, 2)) | in.dxf | out.dxf | more than 5,000,000 parts
"""


def block(space, name, content, place=(0, 0), **attributes):
    if name not in space.doc.blocks:
        draw(space.doc.blocks.new(name, base_point=(1, 0)), content)
    return space.add_blockref(name, place, dxfattribs=attributes)


def ell(space, **attributes):
    space.add_lwpolyline(ELL, dxfattribs=attributes)


def text(space, content, place=(0, 0), align=Align.LEFT):
    space.add_text(content, height=10).set_placement(place, (40, 0), align)


def mtext(space, content, **attributes):
    space.add_mtext(content, dxfattribs={"char_height": 10, **attributes})


def tube(space, *closed):
    made = space.add_polymesh((3, 4))
    made.close(*closed)
    for i, vertex in enumerate(made.vertices):
        vertex.dxf.location = (i // 4, *Vec3.from_deg_angle(90 * i).xyz[:2])


def hatch(space, edge, *values, **attributes):
    paths = space.add_hatch(dxfattribs=attributes).paths
    getattr(paths if "path" in edge else paths.add_edge_path(), "add_" + edge)(*values)


def body(space, *rings, curved="nothing"):
    """Draws a prism with another in it as a hole, and one of its edges ("straight") or faces ("plane") curved."""
    meshes = [forms.extrude(Vec3.list(ring), Vec3.list([(0, 0, 0), (0, 0, 2)]), caps=True) for ring in rings]
    bodies, solid = list(map(acis.body_from_mesh, meshes)), space.add_3dsolid()
    for cap, *holes in zip(*([face for face in b.lump.shells()[0].faces() if face.surface.normal.z] for b in bodies)):
        for hole in holes:
            cap.append_loop(hole.loop)
    acis.export_dxf(solid, bodies[:1])
    solid.sat = "\n".join(solid.sat).replace(f"{curved}-", "cone-", 1).split("\n")


def add(function, *values, **attributes):
    own = {name: attributes.pop(name) for name in ("close", "format", "text") if name in attributes}
    return function(*values, **own, **({"dxfattribs": attributes} if attributes else {}))


def draw(space, content):
    names = {re.sub("^3", "_3", name[4:]): partial(add, getattr(space, name)) for name in dir(space) if name[:4] == "add_"}
    names.update({own.__name__: partial(own, space) for own in (block, ell, text, mtext, tube, hatch, body)})
    eval(content, {**globals(), **names, "space": space})


def cases(table):
    return [[part.strip() for part in (line + " ").split(" | ")] for line in table.strip().splitlines()]


def read(path):
    """Returns the entities of a result as pairs of layer and corners."""
    corners = {"POINT": lambda e: [e.dxf.location], "LINE": lambda e: [e.dxf.start, e.dxf.end]}
    space = ezdxf.readfile(path).modelspace()
    return [(e.dxf.layer, corners.get(e.dxftype(), lambda e: e.wcs_vertices())(e)) for e in space]


def summary(parts):
    """Tells how many parts there are, their length or area, and from where to where they are."""
    said = []
    for number, name in enumerate(("points", "lines", "faces"), start=1):
        some = {tuple(corners) for _, corners in parts if min(len(corners), 3) == number}
        said += [f"{len(some)} {name} of {sum(map(size, some)):.4g}"] if some else []
    axes = list(zip(*(corner.xyz for _, corners in parts for corner in corners)))
    return ", ".join(said + [" to ".join(" ".join(f"{round(end(axis), 2) + 0.0:g}" for axis in axes) for end in (min, max))])


def size(corners):
    if len(corners) < 3:
        return corners[0].distance(corners[-1])
    return sum((b - corners[0]).cross(c - corners[0]).magnitude for b, c in zip(corners[1:], corners[2:])) / 2


class Explode(unittest.TestCase):
    def setUp(self):
        self.enterContext(chdir(self.enterContext(tempfile.TemporaryDirectory())))
        main.__globals__["write"] = lambda message: self.said.append(message.replace("tolmera-explode: ", ""))

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
        for table, *options in ((SHAPES,), (FITS, "--auto-fit")):
            for content, wanted in cases(table):
                with self.subTest(content):
                    self.draw(content)
                    _, parts, message = self.explode(*options)
                    self.assertEqual(message.partition("\n")[0] if "left out" in message else summary(parts), wanted)

    def test_layers(self):
        for content, wanted in cases(LAYERS):
            with self.subTest(content):
                self.draw(content)
                _, parts, message = self.explode()
                self.assertIn(wanted, [message.partition("show. ")[2].strip(), *(layer for layer, _ in parts)])
                self.assertTrue(self.explode("--all")[1], "with --all")

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
                new = version > "R2"
                self.draw("circle((0, 0), 9), _3dface(U[:4], invisible=15)" + ", body(U)" * new, version, form)
                self.assertEqual(len(self.explode()[1]), 53 + 20 * new)

    def test_result(self):
        names = ["30", "31", "5 8", "5%8", "Wände", "ENTITIES", "off"]
        self.draw(", ".join(f"ell(layer={name!r}, elevation=1e-5)" for name in names))
        lines = [(0, 0, 1e-5), (3, 0, 1e-5)], [(3, 0, 1e-5), (3, 1, 1e-5)]
        self.assertEqual(self.explode("--all")[1], [(name, corners) for name in names for corners in lines])
        result = ezdxf.readfile("out.dxf")
        self.assertEqual(result.audit().errors, [])
        self.assertEqual(result.layers.get("off").color, 3)
        self.assertEqual((result.header["$EXTMIN"], result.header["$EXTMAX"]), ((0, 0, 1e-5), (3, 1, 1e-5)))
        content = Path("out.dxf").read_text("utf-8")
        self.assertEqual(content.count("  2\nENTITIES\n"), 1)
        entities = [part.split("\n") for part in content.split("  0\nLINE\n")[1:]]
        self.assertEqual([part for part in entities if part[1].isdigit() or part[18].strip() in part[5]], [])
        self.assertTrue(all("." in value for part in entities for value in part[9:20:2]), entities)
        self.assertEqual(len({part[1] for part in entities}), len(entities), "handles")

    def test_damaged(self):
        for pattern, replacement, left, said in cases(DAMAGED):
            with self.subTest(pattern):
                self.draw("[line((0, 0), (x, 0)) for x in (1, 2, 3)], block('A', 'line((0, 0), (4, 0))')")
                damaged = re.sub(pattern, replacement, Path("in.dxf").read_text("utf-8"), count=1)
                for newline in ("\n", "\r\n"):
                    Path("in.dxf").write_text(damaged, "utf-8", newline=newline)
                    _, parts, message = self.explode()
                    self.assertEqual((len(parts), said in message), (int(left), True), message)

    def test_refused(self):
        Path("letter.dxf").write_text("Dear reader")
        Path("protected.dxf").touch(0o444)
        os.chmod(".", 0o777)
        os.symlink("in.dxf", "link.dxf")
        self.addCleanup(os.seteuid, os.geteuid())
        os.seteuid(os.getuid() or 65534)  # to root nothing is protected
        for content, *names, reason in cases(REFUSED):
            with self.subTest(reason):
                self.draw(content)
                before = sorted(os.listdir())
                status, _, message = self.explode(names=names)
                self.assertEqual((status, reason in message, sorted(os.listdir())), (1, True, before), message)

    def test_names_from_the_file(self):
        names = ["\x1b[2J"] * 3 + [f"N{i}" for i in range(20)]
        entities = "".join(f"0\n{name}\n8\n0\n" for name in names) + "0\nPOINT\n60\n1\n10\n0\n20\n0\n"
        Path("in.dxf").write_text(f"0\nSECTION\n2\nENTITIES\n{entities}0\nENDSEC\n0\nEOF\n")
        self.assertRegex(self.explode()[2], r"^left out: 3 \?\[2J(, 1 N[0-9]+){9}, and others\n.*show. Hidden")

    def test_replaced_file_keeps_permissions_and_place(self):
        self.draw("ell()")
        name = "n" * 250
        Path(name).touch(0o640)
        os.symlink(name, "link.dxf")
        self.assertEqual(len(self.explode(names=("in.dxf", "link.dxf"))[1]), 2)
        self.assertEqual((os.path.islink("link.dxf"), os.stat(name).st_mode & 0o777), (True, 0o640))
        self.assertEqual(sorted(os.listdir()), ["in.dxf", "link.dxf", name])

    def run_program(self, *arguments, shell="", **environment):
        command = ["sh", "-c", f'exec "$0" "$@" {shell}', os.environ["EXPLODE"], *arguments]
        return subprocess.run(command, capture_output=True, text=True, env={**os.environ, "HOME": os.getcwd(), **environment})

    def test_surroundings(self):
        self.draw("ell(), text('H')")
        Path("ezdxf.ini").write_text("[broken")
        before = sorted(os.listdir())
        for shell, status, lines in (("2>&-", 0, 14), ("2>/dev/full", 0, 14), ("", 0, 14), (">&- 2>&-", 1, 0)):
            done = self.run_program("--fit", "in.dxf", "-", shell=shell)
            self.assertEqual((done.returncode, done.stdout.count("AcDbLine\n")), (status, lines), shell)
        self.assertEqual(sorted(os.listdir()), before)
        self.assertIn(os.environ["VERSION"], self.run_program("--version").stdout)
        Path("ezdxf.py").write_text("raise ImportError(name='ezdxf')")
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
