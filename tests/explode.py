#!/usr/bin/python3 -B
# tolmera-explode on small drawings that ezdxf makes: what each kind of entity becomes, what is refused, and a picture.
# CMake tells in the environment where the program and the one for previews are.
import collections
import contextlib
import io
import os
import re
import runpy
import subprocess
import sys
import tempfile
import unittest

import ezdxf
from ezdxf.math import Vec3
from ezdxf.render import forms

SQUARE = [(0, 0), (4, 0), (4, 4), (0, 4)]
BOW = [(0, 0), (4, 0), (0, 4), (4, 4)]  # the order in which a SOLID has the corners of a square
U = [(0, 0), (4, 0), (4, 3), (3, 3), (3, 1), (1, 1), (1, 3), (0, 3)]
ALMOST = [(0, 0, 1e-15), (8, 0, 0)]  # straight
DISC = [(0, 0, 2, 2, 1), (2, 0)]  # its lower half


def having(**attributes):
    return {"dxfattribs": attributes}


def mesh(space):
    with space.add_mesh().edit_data() as data:
        data.vertices, data.faces = [(x, y, 0) for x, y in U], [range(8), (0, 1, 8)]  # there is no vertex 8


def polygon_mesh(space):
    tube = space.add_polymesh((3, 4))
    tube.n_close(True)
    for m in range(3):
        for n in range(4):
            tube.set_mesh_vertex((m, n), (m, Vec3.from_deg_angle(90 * n).x, Vec3.from_deg_angle(90 * n).y))


def smoothed(space):
    space.add_polyline2d([(0, 0), (1, 1), (9, 9), (2, 0)]).vertices[2].dxf.flags = 16  # of the spline's frame


def hatch(space):
    paths = space.add_hatch(**having(elevation=(0, 0, 3))).paths
    paths.add_polyline_path([(0, 0), (4, 0), (4, 4)])
    edges = paths.add_edge_path()
    edges.add_arc((2, 6), 1, 0, 180)
    edges.add_ellipse((2, 6), (2, 0), 0.5)
    edges.add_spline(control_points=[(0, 4), (1, 4), (2, 4), (3, 4)], degree=3, knot_values=[0] * 4 + [1] * 4)


def insert(space):
    inner, outer = space.doc.blocks.new("INNER", base_point=(1, 0)), space.doc.blocks.new("OUTER")
    inner.add_line((1, 0), (2, 0))
    outer.add_blockref("INNER", (0, 0), **having(rotation=90, xscale=2))
    outer.add_circle((0, 0, 1), 1)
    array = space.add_blockref("OUTER", (0, 0), **having(xscale=3, zscale=-1)).grid((2, 3), (5, 7))
    array.add_attrib("NUMBER", "1", (0, 0))


def dimension(space):
    space.add_linear_dim((5, 3), (0, 0), (9, 0)).render()


def layers(space):
    space.doc.layers.add("off").off()
    space.doc.layers.add("frozen").freeze()
    for name in ("0", "off", "frozen", "10", "31", "33", "5 8", "ENTITIES", "Wände"):
        space.add_line((1, 2, 3), (4, 5, 6), **having(layer=name))
        space.add_3dface([(1, 2, 3), (4, 5, 6), (7, 8, 0), (7, 8, 1)], **having(layer=name))


# What draws a kind of entity; how many points, lines and faces it becomes; the least and the largest coordinates.
KINDS = {
    "POINT": (lambda s: s.add_point((1, 2, 3)), (1, 0, 0), (1, 2, 3), (1, 2, 3)),
    "POINT, thick": (lambda s: s.add_point((1, 2, 3), **having(thickness=2)), (0, 1, 0), (1, 2, 3), (1, 2, 5)),
    "LINE": (lambda s: s.add_line((0, 1e-7, 1e22), (1 / 3, 0, 0)), (0, 1, 0), (0, 0, 0), (1 / 3, 1e-7, 1e22)),
    "LINE, thick": (lambda s: s.add_line((0, 0), (1, 1), **having(thickness=2)), (0, 0, 1), (0, 0, 0), (1, 1, 2)),
    "3DFACE": (lambda s: s.add_3dface([(0, 0, 1), (4, 0), (4, 3)]), (0, 0, 1), (0, 0, 0), (4, 3, 1)),
    "3DFACE, hidden edges": (lambda s: s.add_3dface(SQUARE, **having(invisible=15)), (0, 0, 1), (0, 0, 0), (4, 4, 0)),
    "3DFACE, concave": (lambda s: s.add_3dface([(0, 0), (4, 0), (1, 1), (0, 4)]), (0, 0, 2), (0, 0, 0), (4, 4, 0)),
    "SOLID, thick": (lambda s: s.add_solid(BOW, **having(thickness=4)), (0, 0, 6), (0, 0, 0), (4, 4, 4)),
    "TRACE from below": (lambda s: s.add_trace(BOW, **having(extrusion=(0, 0, -1))), (0, 0, 1), (-4, 0, 0), (0, 4, 0)),
    "LWPOLYLINE": (lambda s: s.add_lwpolyline(SQUARE, close=True), (0, 4, 0), (0, 0, 0), (4, 4, 0)),
    "LWPOLYLINE, round": (lambda s: s.add_lwpolyline([(0, 0, 1), (2, 0, 0)], "xyb"), (0, 25, 0), (0, -1, 0), (2, 0, 0)),
    "LWPOLYLINE, almost straight": (lambda s: s.add_lwpolyline(ALMOST, "xyb"), (0, 1, 0), (0, 0, 0), (8, 0, 0)),
    "LWPOLYLINE, wide": (lambda s: s.add_lwpolyline([(0, 0, 2, 2, 1e-15), (8, 0)]), (0, 0, 1), (0, -1, 0), (8, 1, 0)),
    "LWPOLYLINE, wide and round": (lambda s: s.add_lwpolyline(DISC, "xyseb"), (0, 0, 28), (-1, -2, 0), (3, 0, 0)),
    "POLYLINE in 2D": (lambda s: s.add_polyline2d(SQUARE, close=True), (0, 4, 0), (0, 0, 0), (4, 4, 0)),
    "POLYLINE, smoothed": (smoothed, (0, 2, 0), (0, 0, 0), (2, 1, 0)),
    "POLYLINE in 3D": (lambda s: s.add_polyline3d([(0, 0, 1), (1, 2, 3), (4, 4, 4)]), (0, 2, 0), (0, 0, 1), (4, 4, 4)),
    "polygon mesh, closed": (polygon_mesh, (0, 0, 8), (0, -1, -1), (2, 1, 1)),
    "polyface mesh": (lambda s: forms.cube().render_polyface(s), (0, 0, 6), (-0.5, -0.5, -0.5), (0.5, 0.5, 0.5)),
    "MESH": (mesh, (0, 0, 6), (0, 0, 0), (4, 3, 0)),
    "CIRCLE": (lambda s: s.add_circle((0, 0), 1), (0, 52, 0), (-1, -1, 0), (1, 1, 0)),
    "ARC": (lambda s: s.add_arc((0, 0), 1, 270, 90), (0, 25, 0), (0, -1, 0), (1, 1, 0)),
    "ELLIPSE": (lambda s: s.add_ellipse((0, 0, 1), (0, 2), 0.5), (0, 52, 0), (-1, -2, 1), (1, 2, 1)),
    "SPLINE": (lambda s: s.add_open_spline([(0, 0), (0, 1), (2, 1), (2, 0)]), (0, 48, 0), (0, 0, 0), (2, 0.75, 0)),
    "HELIX": (lambda s: s.add_helix(2, 1, 2), (0, 256, 0), (-2, -2, 0), (2, 2, 2)),
    "HATCH": (hatch, (0, 59, 0), (0, 0, 3), (4, 7, 3)),
    "INSERT": (insert, (0, 174, 0), (-3, -1, -1), (17, 7, 0)),
    "DIMENSION": (dimension, (0, 3, 2), (-0.1, 0.125, 0), (9.1, 3.375, 0)),
    "LEADER": (lambda s: s.add_leader([(0, 0), (5, 3), (9, 3)]), (0, 2, 1), (0, 0, 0), (9, 3, 0)),
    "layers": (layers, (0, 7, 7), (1, 2, 0), (7, 8, 6)),
}


def endless_array(space):
    space.doc.blocks.new("A").add_line((0, 0), (1, 1))
    space.add_blockref("A", (0, 0)).grid((9999, 9999), (2, 2))


def recursive(space):
    space.doc.blocks.new("A").add_blockref("A", (1, 1))
    space.add_blockref("A", (0, 0))


# What is drawn, the arguments, and what the program says.
REFUSED = [
    (lambda space: space.add_text("Dear reader"), ("in.dxf", "out.dxf"), "holds nothing to show"),
    (endless_array, ("in.dxf", "out.dxf"), "more than 5,000,000 parts"),
    (recursive, ("in.dxf", "out.dxf"), 'The block "A" contains itself.'),
    (mesh, ("in.dxf", "./in.dxf"), "is the input"),
    (mesh, ("in.dxf", "."), "is not a regular file"),
    (mesh, ("letter.dxf", "out.dxf"), "is no DXF file"),
    (mesh, ("nowhere.dxf", "out.dxf"), "No such file"),
]


class Explode(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)

    def run_program(self, *arguments, **environment):
        command = [os.environ["EXPLODE"], *arguments]
        return subprocess.run(command, capture_output=True, text=True, env={**os.environ, **environment})

    def write(self, name, text):
        with open(name, "w", encoding="ascii") as file:
            file.write(text)

    def draw(self, draw, version="R2010", form="asc"):
        document = ezdxf.new(version, setup=True)
        draw(document.modelspace())
        document.saveas("in.dxf", fmt=form)

    def explode(self, *options):
        """Returns the entities that the program makes of in.dxf, the lines about them in the file, and its message."""
        sys.argv[1:] = *options, "in.dxf", "out.dxf"
        with contextlib.redirect_stderr(io.StringIO()) as messages:
            runpy.run_path(os.environ["EXPLODE"])
        result = ezdxf.readfile("out.dxf")
        self.assertEqual([problem.message for problem in result.audit().errors], [])
        with open("out.dxf", encoding="utf-8") as file:
            section = file.read().partition("  2\nENTITIES\n")[2].partition("ENDSEC")[0]
        return result.modelspace(), section.splitlines(), messages.getvalue()

    def test_kinds(self):
        for name, (draw, counts, *extents) in KINDS.items():
            with self.subTest(name):
                self.draw(draw)
                entities, lines, _ = self.explode()
                types = collections.Counter(entity.dxftype() for entity in entities)
                self.assertEqual((types["POINT"], types["LINE"], types["3DFACE"], len(types)), (*counts, len(+types)))
                allowed = 1e-3 * max(high - low for low, high in zip(*extents))
                for axis, low, high in zip("123", *extents):
                    values = [value for code, value in zip(lines[::2], lines[1::2]) if re.match(f" {axis}[0-3]$", code)]
                    self.assertEqual([value for value in values if "." not in value], [])
                    self.assertAlmostEqual(min(map(float, values)), low, delta=allowed)
                    self.assertAlmostEqual(max(map(float, values)), high, delta=allowed)

    def test_versions(self):
        for version, form in zip(("R12", "R2000", "R2004", "R2007", "R2010", "R2013", "R2018"), ("asc", "bin") * 4):
            with self.subTest(version):
                self.draw(insert, version, form)
                self.assertEqual(len(self.explode()[0]), sum(KINDS["INSERT"][1]))

    def test_layers(self):
        self.draw(layers)
        entities, lines, _ = self.explode()
        self.assertEqual({entity.dxf.layer for entity in entities}, {"0", "10", "31", "33", "5 8", "ENTITIES", "Wände"})
        handles = [value for code, value in zip(lines[::2], lines[1::2]) if code == "  5"]
        self.assertEqual((len(set(handles)), [handle for handle in handles if handle.isdigit()]), (14, []))
        self.assertEqual(len(self.explode("--all")[0]), 18)

    def test_export(self):
        """A drawing of nothing but entities, as small programs write it, whole and cut off."""
        line = "0 LINE 8 0 60 1 10 1 20 2 30 3 11 4 21 5 31 6 "
        face = "0 3DFACE 8 0 70 15 10 0 20 0 30 0 11 4 21 0 31 0 12 4 22 4 32 0 13 0 23 4 33 0 "
        for end in ("0 LINE 8 0 10 1 20 2 30 3 11 4 2", "0 ENDSEC 0 EOF "):
            self.write("in.dxf", f"0 SECTION 2 ENTITIES 0 UNKNOWN 8 0 {line}{face}{end}".replace(" ", "\n"))
            entities, lines, message = self.explode()
            self.assertEqual([entity.dxftype() for entity in entities], ["3DFACE"], end)
            self.assertIn("12,4.0,22,4.0,32,0.0,13,0.0,23,4.0,33,0.0", ",".join(map(str.strip, lines)), end)
        self.assertIn("1 UNKNOWN", message)

    def test_options(self):
        self.draw(lambda space: space.add_lwpolyline([(1e6, 0), (1e6, 2)]))
        (line,), _, message = self.explode("--fit")
        self.assertEqual((line.dxf.start, line.dxf.end), (Vec3(0, -100, 0), Vec3(0, 100, 0)))
        self.assertIn("moved by (-1000000.0, -1.0, 0.0), then scaled by 100.0", message)
        self.draw(lambda space: space.add_circle((0, 0), 1))
        self.assertEqual(len(self.explode("--tolerance", "0.2")[0]), 8)
        self.assertIn(os.environ["VERSION"], self.run_program("--version").stdout)
        self.assertEqual(self.run_program("in.dxf", "-").stdout.count("AcDbLine\n"), 52)

    def test_view(self):
        self.write("tolmera", '#!/bin/sh\necho "$1"; grep -c AcDbFace "$1"')
        os.chmod("tolmera", 0o755)
        self.draw(mesh)
        os.rename("in.dxf", b"caf\xe9.dxf")  # Latin 1
        opened, faces = self.run_program("--view", b"caf\xe9.dxf", PATH=".:" + os.environ["PATH"]).stdout.split()
        self.assertEqual((os.path.basename(opened), faces, os.path.exists(opened)), ("caf_.dxf", "6", False))
        self.assertIn("zenity", self.run_program("--view", "--dialog", PATH=".").stderr)

    def test_refused(self):
        for draw, names, message in REFUSED:
            with self.subTest(message):
                self.draw(draw)
                self.write("letter.dxf", "Dear reader")
                before = sorted(os.listdir())
                done = self.run_program(*names)
                self.assertIn(message, done.stderr)
                self.assertEqual((done.returncode, sorted(os.listdir())), (1, before))

    def test_without_library(self):
        self.write("ezdxf.py", "raise ImportError(name='ezdxf')")
        done = self.run_program("in.dxf", "out.dxf", PYTHONPATH=".")
        self.assertIn("Install the package python3-ezdxf", done.stderr)
        self.assertEqual(done.returncode, 1)

    def test_picture(self):
        """Boxes from a block look like the same boxes as faces, on layers whose names look like group codes."""

        def boxes(space):
            space.doc.blocks.new("BOX").add_solid(BOW, **having(thickness=4))
            space.add_blockref("BOX", (-6, -6), **having(layer="33")).grid((2, 2), (8, 8))
            space.add_line((-8, -8, -8), (8, 8, 8), **having(layer="31"))

        def faces(space):
            space.add_line((-8, -8, -8), (8, 8, 8))
            for x, y in ((-6, -6), (2, -6), (-6, 2), (2, 2)):
                for corners in forms.cube(center=False).scale_uniform(4).translate(x, y).faces_as_vertices():
                    space.add_3dface(corners)

        self.draw(boxes)
        self.explode()
        self.draw(faces)
        for name in ("in", "out"):
            subprocess.run([os.environ["PREVIEW"], "-s", "128", name + ".dxf", name + ".png"], check=True)
        different = ["compare", "-metric", "AE", "in.png", "out.png", "null:"]
        self.assertEqual(subprocess.run(different, stderr=subprocess.PIPE, text=True).stderr, "0")
        colors = subprocess.run(["identify", "-format", "%k", "out.png"], stdout=subprocess.PIPE, text=True).stdout
        self.assertGreater(int(colors), 3)


sys.path.append(os.path.dirname(os.environ["EXPLODE"]))  # its modules
unittest.main()
