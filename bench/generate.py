#!/usr/bin/python3
# Writes a drawing for the benchmark: N faces, lines or points of a hilly terrain, in the format of AutoCAD 2000; or a
# plan of N rooms with walls as polylines, doors as blocks, tables as circles, and text.
# Usage: generate.py faces|lines|points|rooms N
import math
import sys

import ezdxf

KINDS = {"faces": ("3DFACE", "AcDbFace", 4), "lines": ("LINE", "AcDbLine", 2), "points": ("POINT", "AcDbPoint", 1)}


def corner(index: int, x: float, y: float) -> str:
    z = 40 * math.sin(x / 60) * math.cos(y / 45) + 8 * math.sin((x + 2 * y) / 9)
    return f" {10 + index}\n{x:.6f}\n {20 + index}\n{y:.6f}\n {30 + index}\n{z:.6f}"


def write_terrain(entity: str, marker: str, corners: int, count: int) -> None:
    print("  0\nSECTION\n  2\nHEADER\n  9\n$ACADVER\n  1\nAC1015\n  0\nENDSEC\n  0\nSECTION\n  2\nENTITIES")
    columns = math.ceil(math.sqrt(count))
    step = 900 / columns
    for i in range(count):
        row, column = divmod(i, columns)
        print(f"  0\n{entity}\n  5\n{0x1000 + i:X}\n330\n1F\n100\nAcDbEntity\n  8\nTERRAIN\n100\n{marker}")
        for index, (right, up) in enumerate([(0, 0), (1, 0), (1, 1), (0, 1)][:corners]):
            print(corner(index, step * (column + right) - 450, step * (row + up) - 450))
    print("  0\nENDSEC\n  0\nEOF")


def write_rooms(count: int) -> None:
    drawing = ezdxf.new()
    door = drawing.blocks.new("DOOR")
    door.add_line((0, 0), (0, 0.9))
    door.add_arc((0, 0), 0.9, 0, 90)
    plan = drawing.modelspace()
    for i in range(count):
        x, y = 6 * (i % 50), 4 * (i // 50)
        plan.add_lwpolyline([(x, y), (x + 5.7, y), (x + 5.7, y + 3.7), (x, y + 3.7)], close=True)
        plan.add_blockref("DOOR", (x + 1, y), dxfattribs={"rotation": 90 * (i % 4)})
        plan.add_circle((x + 3, y + 2), 0.6)
        if i % 10 == 0:
            plan.add_text(f"Room {i}", dxfattribs={"insert": (x + 0.3, y + 3), "height": 0.4})
    drawing.write(sys.stdout)


if __name__ == "__main__":
    kind, count = sys.argv[1], int(sys.argv[2])
    if kind == "rooms":
        write_rooms(count)
    else:
        write_terrain(*KINDS[kind], count)
