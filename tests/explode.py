#!/usr/bin/python3 -B
# tolmera-explode on small drawings that ezdxf makes. A line of a table is a case: what is done => what must result.
# "circle((0, 0), 1, layer='a')" is ezdxf's add_circle() with that attribute; functions below draw the rest.
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
from ezdxf.enums import TextEntityAlignment
from ezdxf.math import Vec3
from ezdxf.render import forms

EXPLODE = os.environ["EXPLODE"]
ELL = [(0, 0), (3, 0), (3, 1)]
BOW = [(0, 0), (4, 0), (0, 2), (4, 2)]  # a rectangle in the order of a SOLID
U = [(0, 0), (4, 0), (4, 3), (3, 3), (3, 1), (1, 1), (1, 3), (0, 3)]
ROUND = [(0, 0, 1), (2, 0, 0), (2, 2, -1)]  # x, y, bulge: half a circle, a line, half a circle back
DOWN, SKEW = (0, 0, -1), (1, 2, 2)  # extrusions

# A drawing => N lines of LENGTH, faces of AREA, MIN to MAX, layers other than 0; or what is said if nothing is shown; then
# options. A block has the base point (1, 0). Layers are "Off" and "Frozen".
DRAWINGS = r"""
point((1, 2, 3)), point((1, 2), thickness=2, extrusion=SKEW), line((0, 5), (3, 6), thickness=-2) => 1 points of 0, 1 lines of 2, 1 faces of 6.325, 0 2 -2 to 3 6 3
_3dface([(0, 0, 1), (4, 0), (4, 3)]), _3dface([(0, 0), (0, 4), (0, 1, 1), (0, 0, 4)]), _3dface([(1, 1), (4, 0), (0, 0), (0, 4)]) => 5 faces of 14.18, 0 0 0 to 4 4 4
solid(BOW, thickness=4), trace(BOW, extrusion=DOWN) => 7 faces of 72, -4 0 0 to 4 2 4
lwpolyline([(0, 0, 2, 1, 1e-15), (8, 0)]), ell(const_width=0.5), polyline2d([(0, 5), (8, 5)], default_end_width=2), polyline2d([(0, 9), (8, 9)]).vertices[0].dxf.set("end_width", 2) => 5 faces of 30, 0 -1 0 to 8 10 0
lwpolyline([(0, 0, 2, 2, 1), (2, 0)], elevation=5, extrusion=DOWN) => 26 faces of 6.268, -3 -2 -5 to 1 0 -5
lwpolyline([(i, i % 2) for i in range(10003)]) => 10002 lines of 1.414e+04, 0 0 0 to 10002 1 0
space.add_polyline2d(ROUND, format="xyb", close=True, dxfattribs={"elevation": (0, 0, 2), "extrusion": DOWN}) => 47 lines of 9.579, -2.41 -1 -2 to 0 2 -2
polyline2d(ELL + [(9, 9), (4, 1)]).vertices[3].dxf.set("flags", 16), mpolygon(offset_vector=(5, 6)).paths.add_polyline_path(ELL) => 6 lines of 12.16, 0 0 0 to 8 7 0
polyline3d([(0, 0, 1), (3, 0, 1), (3, 4, 1)]).close() => 3 lines of 12, 0 0 1 to 3 4 1
tube(False, True), tube(True, False) => 17 faces of 28.28, 0 -1 -1 to 2 1 1
forms.cube().scale(1, 2, 3).render_polyface(space), forms.torus(4, 4).render_mesh(space) => 22 faces of 24.77, -1.1 -1.1 -1.5 to 1.1 1.1 1.5
circle((1, 2, 3), 5, thickness=1, extrusion=SKEW) => 52 faces of 31.4, -5.2 -2.47 -0.24 to 4.55 5.65 7.88
line((0, 0), (1000, 0)), circle((0, 0), 0.5) => 9 lines of 1003, -0.5 -0.5 0 to 1000 0.5 0
arc((0, 0), 1, 270, 45, extrusion=DOWN), ellipse((0, 9), (4, 0), 0.5, 2, 3), open_spline(U[:4]) => 46 lines of 10.92, -3.96 -1 0 to 3.55 10.82 0
space.add_helix(2, 1, 2), arc((0, 0), 1, 0, 360), ellipse((0, 9), (4, 0), 0.5) => 188 lines of 50.82, -4 -2 0 to 4 11 2
space.add_leader(ELL), space.add_mline(ELL) => 6 lines of 14, 1 faces of 1.027, 0 -1 0 to 4 1 0
hatch(elevation=(0, 0, 3)).paths.add_polyline_path(ROUND) => 47 lines of 9.579, 0 -1 3 to 2.41 2 3
(edges := hatch(extrusion=DOWN).paths.add_edge_path()), edges.add_arc((0, 0), 2, 180, 270, ccw=False), edges.add_ellipse((2, 6), (2, 0), 0.5, 90), edges.add_line((0, 0), (3, 4)), edges.add_spline(None, U[:4], [0] * 4 + [1] * 4) => 67 lines of 21.09, -4 -2 0 to 2 7 0
body([(0, 0), (4, 0), (4, 2), (0, 4)], [(1, 1), (3, 1), (1, 3)]) => 29 faces of 72.6, 0 0 0 to 4 4 2
block("A", "_3dsolid()").grid((9999, 9999), (1, 1)), body(U, curved="straight"), body(U, curved="plane"), block("B", "blockref('B', (0, 0))"), block("E", "()"), text(" ", "LEFT"), blockref("NOWHERE", (0, 0)), lwpolyline([(1, 1)]) => left out: 99980003 3DSOLID, 2 INSERT, 1 LWPOLYLINE
block("A", "ell()").grid((9999, 9999), (2, 2)) => The drawing has more than 5,000,000 points, lines and faces.
linear_dim((5, 3), (0, 0), (9, 0)).render() => 33 lines of 18.66, 2 faces of 0.02055, 0 0 0 to 9 3.52 0
block("A", "ell()", xscale=-2, yscale=3), block("A", "", (5, 0, 1), extrusion=DOWN).grid((3, 1), (10, 0)) => 8 lines of 21, -7 0 -1 to 2 21 0
block("A", "ell(elevation=3)", rotation=90, extrusion=SKEW).grid((2, 3), (10, -20)) => 12 lines of 24, 0.4 -4.11 -28.56 to 22.17 26.45 3.49
block("A", "block('B', 'circle((2, 0, 1), 1)', (5, 0, 1), rotation=90)", rotation=-90, xscale=9, zscale=4) => 52 lines of 36.67, 0 -45 8 to 2 -27 8
text("8%%d", "TOP_RIGHT", rotation=30, extrusion=DOWN) => 50 lines of 76.7, -0.06 -15.04 0 to 11.49 -1.29 0
text("H", "MIDDLE", style="GONE"), text("H", "MIDDLE_CENTER", (50, 0)), text("H", "BOTTOM_LEFT", (90, 0), width=2, oblique=45) => 36 lines of 220.8, -3.81 -5 0 to 133.94 13 0
text("HH", "ALIGNED"), text("HH", "FIT", (0, 50)) => 48 lines of 375.5, 2.61 0 0 to 45.2 52.98 0
mtext("{\\H2x;\\W2;\\Q45;H H}", char_height=10, attachment_point=9, rotation=90, width=60) => 24 lines of 335.3, -53.34 -35.87 0 to 0 14.61 0
mtext("{\\fDejaVu Serif;H}{\\fNone|b1;H}\\L\\SH/x;", insert=(50, 0)) => 65 lines of 57.59, 50.19 -6 0 to 58.44 0 0
ell(layer="OFF"), block("A", "ell(layer='a')", layer="Frozen"), block("B", "block('C', 'ell()')", layer="off"), block("D", "ell(layer='frozen')").grid((9999, 9999), (1, 1)) => in.dxf holds nothing to show. Hidden entities: 99980004.
block("A", "ell(layer='a')", layer="off"), block("B", "block('C', 'ell()')", layer="b").add_attrib("N", "H", (0, 0), {"flags": 1}) => 4 lines of 8, -2 0 0 to 2 1 0, a, b
block("A", "attdef('N', (0, 0), 'HHH'), attdef('N', (9, 9), 'H', flags=2, layer='b')", layer="a").add_attrib("N", "H", (0, 0), {"layer": "0"}) => 24 lines of 26.48, 0.34 0 0 to 10.24 11.5 0, a, b
ell(layer="frozen"), ell(layer="Wände 5%8") => 4 lines of 8, 0 0 0 to 3 1 0, Wände 5%8, frozen => --all
space.doc.layout("Layout1").add_point((0, 0)) => in.dxf holds nothing to show. Entities in paper space: 1.
text('H', 'LEFT'), block('A', '()').add_attrib('N', 'H', (0, 0)), circle((450000, 5600000), 0.5) => 160 lines of 3.141, 450000 5.6e+06 0 to 450000 5.6e+06 0 => --no-text --tolerance 0.0001
line((0, 0), (0, -0.999)) => 1 lines of 200, 0 -100 0 to 0 100 0 => --auto-fit
line((0, 0), (1e6 + 1, 0)) => 1 lines of 200, -100 0 0 to 100 0 0 => --auto-fit
line((0, 0, -1), (0, 0, 0.5)) => 1 lines of 1.5, 0 0 -1 to 0 0 0.5 => --auto-fit
line((0, 0, 5.2), (0, 0, 10.2)) => 1 lines of 200, 0 0 -100 to 0 0 100 => --auto-fit
"""

# PATTERN | REPLACEMENT in a drawing of a face and three lines => how many are left, and what is said.
DAMAGED = r"""
(\$HANDSEED\n) *5 | \1five => 4 .* can be read: Invalid group code "five "
( 11\n)3\.0 | \1x => 3 .* can be read: Invalid floating point
( 11\n3\.0\n)[^~]* | \1 => 1 .* was cut off
(OBJECTS\n(?:.*\n)+?)102\n\{.*\n((?:.*\n)*)  0\nENDSEC | \1\2 => 4 .* can be read
"""

# An output => why it is refused.
REFUSED = """
link.dxf => is the input
protected.dxf => is not a writable file
pipe => is not a writable file
folder/out.dxf => is not a writable folder
"""

# Commands, run in order in one folder => what they write, among other things.
COMMANDS = r"""
$EXPLODE --version => tolmera-explode (Tolmera) $VERSION
$EXPLODE --tolerance 0 in.dxf - 2>&1 => LENGTH must be positive
echo [broken >ezdxf.ini; $EXPLODE --fit --no-text in.dxf - 2>&1 >/dev/null => tolmera-explode: fitted: moved by (-1.5, -0.5, 0.0), then scaled by 66.6
$EXPLODE --progress in.dxf out.dxf 2>&-; grep -L progress out.dxf => out.dxf
$EXPLODE --fit in.dxf - 2>/dev/full | grep -c AcDbLine$ => 14
$EXPLODE in.dxf - >&- 2>&-; echo $? => 1
echo Dear reader >odd.dxf; $EXPLODE odd.dxf - 2>&1 => is not a DXF file
printf '0\nSECTION\n2\nENTITIES\n0\nA\033B\n8\n0\n0\nPOINT\n8\n0\n60\n1\n0\nENDSEC\n0\nEOF\n' >odd.dxf; $EXPLODE odd.dxf - 2>&1 => left out: 1 A?B tolmera-explode: odd.dxf holds nothing to show. Hidden entities: 1.
$EXPLODE --all odd.dxf - 2>/dev/null | grep -c AcDbPoint => 1
umask 027; $EXPLODE in.dxf new.dxf; stat -c %a new.dxf; rm new.dxf => 640
n=$(printf n%.0s {1..250}); $EXPLODE in.dxf $n; ls | grep -c nnn; rm $n => 1
>out.dxf; chmod 640 out.dxf; ln -s out.dxf link.dxf; $EXPLODE in.dxf link.dxf; stat -c %a out.dxf link.dxf => 640 777
(ulimit -f 1; $EXPLODE in.dxf out.dxf 2>&1) => File too large
grep -c AcDbLine$ out.dxf; ls -A => 14 ezdxf.ini in.dxf link.dxf odd.dxf out.dxf
echo "raise ImportError(name='ezdxf')" >ezdxf.py; PYTHONPATH=. $EXPLODE in.dxf out.dxf 2>&1 => Install
"""


def block(space, name, content, place=(0, 0), **attributes):
    if name not in space.doc.blocks:
        draw(space.doc.blocks.new(name, base_point=(1, 0)), content)
    return space.add_blockref(name, place, dxfattribs=attributes)


def text(space, content, align, place=(0, 0), **attributes):
    space.add_text(content, height=10, dxfattribs=attributes).set_placement(place, (40, 0), TextEntityAlignment[align])


def tube(space, *closed):
    made = space.add_polymesh((3, 4))
    made.close(*closed)
    for i, vertex in enumerate(made.vertices):
        vertex.dxf.location = (i // 4, *Vec3.from_deg_angle(90 * i).xyz[:2])


def body(space, *rings, curved=""):
    """Draws a prism of the first ring with the others as holes, and a cube in it; curves an edge ("straight") or a face ("plane")."""
    meshes = [forms.extrude(Vec3.list(ring), [Vec3(), Vec3(0, 0, 2)], caps=True) for ring in rings]
    bodies, solid = list(map(acis.body_from_mesh, meshes)), space.add_3dsolid()
    for cap, *holes in zip(*([face for face in b.lump.shells()[0].faces() if face.surface.normal.z] for b in bodies)):
        for hole in holes:
            cap.append_loop(hole.loop)
    bodies[0].append_lump(acis.body_from_mesh(forms.cube()).lump)
    acis.export_dxf(solid, bodies[:1])
    if curved:
        solid.sat = "\n".join(solid.sat).replace(f"{curved}-", "cone-", 1).split("\n")


def draw(space, content):
    def add(name, *values, **attributes):
        return getattr(space, name)(*values, dxfattribs=attributes)

    names = {re.sub("^3", "_3", name[4:]): partial(add, name) for name in dir(space) if name.startswith("add_")}
    names |= {own.__name__: partial(own, space) for own in (block, text, tube, body)}
    names["ell"] = partial(add, "add_lwpolyline", ELL)
    eval(content, {**globals(), **names, "space": space})


def cases(table):
    return [[part.strip() for part in line.split("=>")] for line in table.strip().splitlines()]


def read(path):
    """Returns the entities of a result as pairs of layer and corners."""
    names = "location", "start", "end", "vtx0", "vtx1", "vtx2", "vtx3"
    space = ezdxf.readfile(path).modelspace()
    return [(e.dxf.layer, [e.dxf.get(name) for name in names if e.dxf.hasattr(name)]) for e in space]


def size(first, *rest):
    if len(rest) < 2:
        return first.distance(*rest or [first])
    return sum((b - first).cross(c - first).magnitude for b, c in zip(rest, rest[1:])) / 2


def summary(parts):
    """Returns number and length or area of the parts, their extents, and their layers other than 0."""
    said = []
    for name, corners in (("points", 1), ("lines", 2), ("faces", 4)):
        sizes = [size(*part) for _, part in parts if len(part) == corners]
        said += [f"{len(sizes)} {name} of {sum(sizes):.4g}"] if sizes else []
    axes = list(zip(*(corner.xyz for _, part in parts for corner in part)))
    said += [" to ".join(" ".join(f"{round(end(axis), 2) + 0.0:g}" for axis in axes) for end in (min, max))]
    return ", ".join(said + sorted({layer for layer, _ in parts} - {"0"}))


class Explode(unittest.TestCase):
    def setUp(self):
        self.enterContext(chdir(self.enterContext(tempfile.TemporaryDirectory())))
        main.__globals__["write"] = self.hear

    def draw(self, content, version="R2010", form="asc"):
        document = ezdxf.new(version)
        document.layers.add("Off", color=255).off()
        document.layers.add("Frozen").freeze()
        draw(document.modelspace(), content)
        document.saveas("in.dxf", fmt=form)

    def explode(self, *options, output="out.dxf"):
        """Returns the parts in the result, and what is said."""
        self.said = ""
        failed = main([*options, "in.dxf", output])
        return [] if failed else read(output), self.said

    def hear(self, message):
        self.said += message.replace("tolmera-explode: ", "")

    def test_drawings(self):
        for content, wanted, *options in cases(DRAWINGS):
            with self.subTest(content):
                self.draw(content)
                parts, said = self.explode(*" ".join(options).split())
                self.assertEqual(summary(parts) if parts else said.partition("\n")[0], wanted, said)

    def test_versions(self):
        for version, form in zip(("R12", "R2000", "R2004", "R2007", "R2010", "R2013", "R2018"), ("asc", "bin") * 4):
            with self.subTest(version, form=form):
                new = version > "R2"
                self.draw("circle((0, 0), 9), _3dface(U[:4], invisible=15)" + ", body(U)" * new, version, form)
                self.assertEqual(len(self.explode()[0]), 53 + 26 * new)

    def test_result(self):
        self.draw("ell(layer='Off', elevation=1e-5), point((0, 0), layer='OFF')")
        self.assertEqual(self.explode("--all")[0][0], ("Off", [(0, 0, 1e-5), (3, 0, 1e-5)]))
        result = ezdxf.readfile("out.dxf")
        self.assertEqual(result.audit().errors, [])
        self.assertEqual(result.layers.get("Off").color, 255)
        self.assertEqual((result.header["$EXTMIN"], result.header["$EXTMAX"]), ((0, 0, 0), (3, 1, 1e-5)))

    def test_damaged(self):
        for change, wanted in cases(DAMAGED):
            with self.subTest(change):
                self.draw("[line((0, 0), (x, 0)) for x in (2, 3)], _3dface(U[:4]), block('A', 'line((0, 0), (4, 0))')")
                damaged = re.sub(*change.split(" | "), Path("in.dxf").read_text("utf-8"), count=1)
                Path("in.dxf").write_text(damaged, "utf-8", newline="\r\n")
                parts, said = self.explode()
                self.assertRegex(f"{len(parts)} {said}", wanted)

    def test_refused(self):
        self.draw("ell()")
        os.mkdir("folder", 0o555)
        os.mkfifo("pipe")
        os.chmod("pipe", 0o666)
        os.symlink("in.dxf", "link.dxf")
        Path("protected.dxf").touch(0o444)
        os.chmod(".", 0o777)
        before = sorted(os.listdir())
        self.addCleanup(os.seteuid, os.geteuid())
        os.seteuid(os.getuid() or 65534)  # to root nothing is protected
        for output, wanted in cases(REFUSED):
            with self.subTest(output):
                self.assertIn(wanted, self.explode(output=output)[1])
                self.assertEqual(sorted(os.listdir()), before)

    def test_commands(self):
        self.draw("ell(), text('H', 'LEFT')")
        for command, wanted in cases(COMMANDS):
            with self.subTest(command):
                shell = subprocess.run(["bash", "-c", command], capture_output=True, text=True, env={**os.environ, "HOME": "."})
                self.assertIn(wanted.replace("$VERSION", os.environ["VERSION"]), " ".join(shell.stdout.split()))

    def test_progress_and_interruption(self):
        self.draw("block('A', 'ell(), circle((0, 0), 1)').grid((200, 200), (5, 5))")
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(number, signal.SIG_DFL)  # nohup ignores SIGHUP
            command = [EXPLODE, "--progress", "in.dxf", "out.dxf"]
            with subprocess.Popen(command, stderr=subprocess.PIPE, text=True) as child:
                while os.listdir() == ["in.dxf"] and child.poll() is None:
                    time.sleep(0.01)
                child.send_signal(number)
                *lines, last = child.stderr.read().splitlines()
            self.assertEqual((child.returncode, last, os.listdir()), (1, "tolmera-explode: Interrupted.", ["in.dxf"]))
            self.assertEqual((lines, lines[0], lines[-1] >= "progress: 80"), (sorted(set(lines)), "progress: 40", True))


sys.path.append(os.path.dirname(EXPLODE))  # its modules
main = runpy.run_path(EXPLODE)["main"]
unittest.main()
