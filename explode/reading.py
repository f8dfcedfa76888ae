# Reads a DXF file of any version, text or binary, and what can be read of a damaged one.
from __future__ import annotations

import os
import re
import time
from io import BytesIO
from typing import NamedTuple, Optional

from ezdxf import recover
from ezdxf.document import Drawing
from ezdxf.entities import solid
from ezdxf.filemanagement import readfile
from ezdxf.lldxf.types import tag_type
from ezdxf.lldxf.validator import is_binary_dxf_file, is_dxf_file

from parts import Refused
from progress import Progress

SHARE = 0.5  # of the whole work
BYTES_PER_SECOND = 2e6  # of text, to guess how far the reading is

# Without these records the others lose their place; so they are kept up to their flaw.
FRAMES = (b"SECTION", b"ENDSEC", b"TABLE", b"ENDTAB", b"BLOCK", b"ENDBLK", b"SEQEND", b"EOF")


class Read(NamedTuple):
    document: Drawing
    remark: Optional[str]  # why the file is shown only in part, as a sentence for the user


def read(path: str, progress: Progress) -> Read:
    if os.path.exists(path) and not os.path.isfile(path):
        raise Refused(f"{path} is not a regular file.")
    # ezdxf 0.18 gives the name of group 60, which hides an entity, to group 70 of a 3DFACE, too. That only hides edges,
    # which does not matter here.
    for codes in ("acdb_face_group_codes", "merged_face_group_codes"):
        getattr(solid, codes, {}).pop(70, None)
    begin, seconds = time.monotonic(), (os.path.getsize(path) or 1) / BYTES_PER_SECOND
    progress.stage(SHARE, lambda: (time.monotonic() - begin) / seconds)
    binary = is_binary_dxf_file(path)
    if not binary and not is_dxf_file(path):
        raise Refused(f"{path} is no DXF file.")
    try:
        return Read(readfile(path), None)
    except MemoryError:
        raise
    except Exception as problem:  # a damaged file raises whatever the library stumbles over
        if isinstance(problem, OSError) and problem.errno:
            raise
        reason = " ".join(str(problem).split()) or type(problem).__name__
    damaged = f"{path} is damaged, and is shown as far as it can be read: {reason}"
    for last in () if binary else (b"", b"OBJECTS"):
        records, remark = mend(path, last)
        try:
            return Read(recover.read(BytesIO(b"  0\n".join([b"", *records])))[0], remark or damaged)
        except MemoryError:
            raise
        except Exception:
            continue
    raise Refused(f"{path} is damaged: {reason}")


def mend(path: str, last: bytes) -> tuple[list[bytes], Optional[str]]:
    """Returns the sound records of a text file as far as the section `last`, and a remark if the file was cut off."""
    with open(path, "rb") as file:
        records = re.split(rb"^[ \t]*0[ \t]*\r?\n(?=[0-9A-Z_]*[A-Z])", file.read(), flags=re.MULTILINE)[1:]
    remark = None
    if not records or records[-1].strip() != b"EOF":
        del records[-1:]
        remark = f"{path} was cut off, and is shown as far as it goes."
    sound = []
    for record in records:
        lines = record.splitlines()
        if last and lines[0] == b"SECTION" and lines[2:3] == [last]:
            break
        end = next((i for i in range(1, len(lines), 2) if not is_sound(lines[i : i + 2])), None)
        if end is None:
            sound.append(record)
        elif lines[0].strip() in FRAMES:
            while end > 3 and lines[0] == b"SECTION" and lines[end].strip() != b"9":
                end -= 2  # as far as whole variables of the header
            sound.append(b"\n".join(lines[:end]) + b"\n")
    return [*sound, b"ENDSEC\n", b"EOF\n"], remark


def is_sound(lines: list[bytes]) -> bool:
    """Tells whether a group code and its value make sense."""
    try:
        code, value = lines
        tag_type(int(code))(value.decode(errors="replace"))
        return True
    except ValueError:
        return False
