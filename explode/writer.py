# Writes points, lines and faces as a DXF file in text form. A reader such as Tolmera's may read any line of only the
# digits 0 1 2 3 5 8 and blanks as a group code, so only layer names may look like that; form() keeps them harmless.
from __future__ import annotations

import io
import re
from functools import lru_cache
from itertools import chain
from typing import BinaryIO

from ezdxf.filemanagement import new
from ezdxf.lldxf.encoding import decode_dxf_unicode

from parts import FACE, LINE, POINT, Parts
from progress import Progress

# In hexadecimal it begins with a letter, as no group code does. The file's other objects have smaller handles.
FIRST_HANDLE = 0xA00000

CLASSES = {POINT: "AcDbPoint", LINE: "AcDbLine", FACE: "AcDbFace"}
CORNERS = {POINT: 1, LINE: 2, FACE: 4}


def write(stream: BinaryIO, parts: Parts, colors: dict[str, int], progress: Progress) -> None:
    """Writes parts to a stream. `colors` has colour numbers by layer name in lower case."""
    layers = {layer: valid_name(layer) for layer in dict.fromkeys(parts.layers)}
    head, tail = frame({name: colors.get(layer.lower(), 7) for layer, name in layers.items()}, parts)
    stream.write(head.encode())
    handle = FIRST_HANDLE
    for kind, layer, coordinates in progress.counted(3, len(parts.kinds), parts):
        shape, order = form(kind, layers[layer])
        # A bare 0 would end the entity, so there is always a decimal point.
        values = [text if "." in text else text.replace("e", ".0e") for text in map(repr, coordinates)]
        length = len(values) // 3 - len(order) + 1
        columns = [values[3 * corner + axis :: 3] for corner in order for axis in range(3)]
        groups = tuple(chain.from_iterable(zip(range(handle, handle + length), *columns)))
        stream.write((shape * length % groups).encode())
        handle += length
    stream.write(tail.encode())


@lru_cache(maxsize=None)
def form(kind: str, name: str) -> tuple[str, list[int]]:
    """Returns the text of an entity on the layer `name`, with placeholders for its handle and coordinates, and the
    order of its corners. A reader may read a layer name such as 31 as a group code. That does harm only if this code
    completes the entity, so another code comes last."""
    corners = list(range(CORNERS[kind]))
    for order in (corners, corners[1:] + corners[:1]):
        if f"3{order[-1]}" not in name or name.strip("012358 \t"):
            break
    else:
        name = escaped(name[0]) + name[1:]
    groups = "".join(f" {axis}{corner}\n%s\n" for corner in order for axis in (1, 2, 3))
    layer = name.replace("%", "%%")
    return f"  0\n{kind}\n  5\n%X\n100\nAcDbEntity\n  8\n{layer}\n100\n{CLASSES[kind]}\n{groups}", order


def frame(colors: dict[str, int], parts: Parts) -> tuple[str, str]:
    """Returns what comes before and after the entities: header, tables with the coloured layers, and objects."""
    document = new("R2000" if "".join(colors).isascii() else "R2007")  # the first version in UTF-8
    for name, color in colors.items():
        if not document.layers.has_entry(name):
            document.layers.add(name, color=color if 0 < color < 256 else 7)
    document.modelspace().reset_extents(*parts.extents())  # becomes $EXTMIN and $EXTMAX
    document.entitydb.handles.reset(f"{FIRST_HANDLE + parts.count:X}")
    text = io.StringIO()
    document.write(text)
    begin = "  2\nENTITIES\n"
    head, tail = text.getvalue().rsplit(begin, 1)
    # A reader that looks for the section must not find a layer of that name.
    return head.replace("ENTITIES", escaped("E") + "NTITIES") + begin, tail


def valid_name(layer: str) -> str:
    """Returns the name of a layer without the characters that no name may have."""
    return re.sub(r'[<>/\\":;?*=`\0-\x1f\ud800-\udfff]', "_", decode_dxf_unicode(layer)) or "0"


def escaped(character: str) -> str:
    r"""Returns a character in DXF's own notation, \U+XXXX."""
    return rf"\U+{ord(character):04X}"
