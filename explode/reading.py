# Reads DXF files of any version, text or binary, and damaged ones as far as possible.
from __future__ import annotations

import re
from io import BytesIO
from typing import Optional

from ezdxf import recover
from ezdxf.document import Drawing
from ezdxf.entities import solid
from ezdxf.filemanagement import readfile
from ezdxf.lldxf.types import tag_type

from parts import Refused

# A group code 0 with a name after it, which begins an entity, a section or the like.
BEGIN = re.compile(rb"^[ \t]*0[ \t]*\r?\n(?=[0-9A-Z_]*[A-Z])", re.MULTILINE)
OBJECTS = re.compile(BEGIN.pattern + rb"SECTION\s+2\s+OBJECTS\s", re.MULTILINE)


def read(path: str) -> tuple[Drawing, Optional[str]]:
    """Returns the document and, if it is incomplete, the reason as a sentence for the user."""
    # ezdxf 0.18 reads group 70 of a 3DFACE, which hides edges, as group 60, which hides the entity.
    for codes in ("acdb_face_group_codes", "merged_face_group_codes"):
        getattr(solid, codes, {}).pop(70, None)
    try:
        return readfile(path), None
    except (OSError, MemoryError):
        raise
    except Exception as problem:  # ezdxf may raise anything for a damaged file
        reason = " ".join(str(problem).split()) or type(problem).__name__
    with open(path, "rb") as file:
        content = file.read()
    was_cut_off = not content.rstrip().endswith(b"EOF")
    drawn, *objects = OBJECTS.split(content, maxsplit=1)
    records = BEGIN.split(drawn)[1:]
    if not records:  # it is binary, or not a DXF file
        raise Refused(f"{path} is damaged: {reason}")
    if was_cut_off and not objects:
        del records[-1:]
    try:
        document = recover.read(BytesIO(b"  0\n".join([b"", *filter(None, map(repaired, records)), b"EOF\n"])))[0]
    except Exception:
        raise Refused(f"{path} is damaged: {reason}")
    if was_cut_off:
        return document, f"{path} was cut off, and is shown as far as it goes."
    return document, f"{path} is damaged, and is shown as far as it can be read: {reason}"


def repaired(record: bytes) -> bytes:
    """Returns a record, or nothing if a group code is not a number or a value has the wrong type. Keeps the first seven
    lines of a faulty header, which give the version of the file."""
    lines = record.splitlines()
    try:
        for code, value in zip(lines[1::2], lines[2::2], strict=True):
            tag_type(int(code))(value.decode(errors="replace"))
        return record
    except ValueError:
        return b"\n".join([*lines[:7], b""]) if lines[2:3] == [b"HEADER"] else b""
