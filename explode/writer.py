# Writes points, lines and faces as a DXF file in text form. A reader such as Tolmera's takes every line of the digits
# 0 1 2 3 5 8 and blanks for a possible group code, so other lines are not written like that.
import io
import re

import ezdxf

from shapes import FACE, LINE, POINT

# Handles that begin with a letter are no group codes. The other objects of the file have smaller ones.
FIRST_HANDLE = 0xA00000

CLASSES = {POINT: "AcDbPoint", LINE: "AcDbLine", FACE: "AcDbFace"}
CORNER_CODES = ((10, 20, 30), (11, 21, 31), (12, 22, 32), (13, 23, 33))


def write(stream, shapes, colors, middle, factor, progress):
    """Writes shapes to a binary stream, with `middle` as their origin and scaled by `factor`. `colors` has the number
    of a layer's colour by its name in lower case."""
    layers = {layer: valid_name(layer) for layer in set(shapes.layers)}
    low, high = ([(value - center) * factor for value, center in zip(corner, middle)] for corner in shapes.extents())
    head, tail = frame({name: colors.get(layer.lower(), 7) for layer, name in layers.items()}, low, high, shapes.count)
    stream.write(head.encode())
    handle = FIRST_HANDLE
    for kind, layer, coordinates in progress("Writing", shapes):
        values = [number((value - middle[i % 3]) * factor) for i, value in enumerate(coordinates)]
        corners = [values[i : i + 3] for i in range(0, len(values), 3)]
        for part in zip(corners, corners[1:]) if kind == LINE else [corners]:
            stream.write(entity(kind, handle, layers[layer], part).encode())
            handle += 1
    stream.write(tail.encode())


def entity(kind, handle, name, corners):
    """Returns an entity on the layer `name`, with its corners as texts."""
    name, corners = unmistakable(name, list(zip(CORNER_CODES, corners)))
    groups = "".join(f"{code:3}\n{text}\n" for codes, corner in corners for code, text in zip(codes, corner))
    return f"  0\n{kind}\n  5\n{handle:X}\n100\nAcDbEntity\n  8\n{name}\n100\n{CLASSES[kind]}\n{groups}"


def unmistakable(name, corners):
    """Returns a layer's name, and corners with their codes. A reader may take a layer's name such as 31 for a group
    code. That only harms if it completes the entity, so the corners are written in an order in which another code comes
    last."""
    for order in (corners, corners[1:] + corners[:1]):
        last_code = str(order[-1][0][2])
        if last_code not in name or name.strip("012358 \t"):
            return name, order
    return escaped(name[0]) + name[1:], corners


def frame(colors, low, high, count):
    """Returns what comes before and behind `count` entities: header, tables with the coloured layers, and objects."""
    document = ezdxf.new("R2000" if "".join(colors).isascii() else "R2007")  # which is the first in UTF-8
    for name, color in colors.items():
        if not document.layers.has_entry(name):
            document.layers.add(name, color=color if 0 < color < 256 else 7)
    document.header["$EXTMIN"], document.header["$EXTMAX"] = low, high
    document.entitydb.handles.reset(f"{FIRST_HANDLE + count:X}")
    text = io.StringIO()
    document.write(text)
    begin = "  2\nENTITIES\n"
    head, tail = text.getvalue().rsplit(begin, 1)
    # A reader that looks for the section must not find a layer of that name.
    return head.replace("ENTITIES", escaped("E") + "NTITIES") + begin, tail


def number(value):
    """Returns the shortest text that reads as `value`, always with a decimal point: a bare 0 would end the entity."""
    text = repr(value + 0.0)  # 0.0 for -0.0
    return text if "." in text else text.replace("e", ".0e")


def valid_name(layer):
    """Returns the name of a layer without the characters that no name may have."""
    return re.sub(r'[<>/\\":;?*=`\0-\x1f\ud800-\udfff]', "_", ezdxf.decode_dxf_unicode(layer)) or "0"


def escaped(character):
    r"""Returns a character in DXF's own notation, \U+XXXX."""
    return rf"\U+{ord(character):04X}"
