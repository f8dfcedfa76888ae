# Makes the outlines of the letters of texts. fontTools reads the fonts, ezdxf lays out texts of several lines.
from __future__ import annotations

import math
import os
import re
from functools import lru_cache
from typing import Any, Iterator, Optional

from ezdxf.enums import MAP_TEXT_ENUM_TO_ALIGN_FLAGS, TextEntityAlignment
from ezdxf.lldxf import const
from ezdxf.math import Matrix44
from ezdxf.render.abstract_mtext_renderer import AbstractMTextRenderer
from ezdxf.tools import text_layout
from ezdxf.tools.fonts import FontFace, get_entity_font_face
from ezdxf.tools.text import MTextContext
from fontTools.pens.basePen import BasePen
from fontTools.ttLib import TTFont

from parts import Vertex, placed

FOLDERS = ("/usr/share/fonts", "/usr/local/share/fonts", "~/.local/share/fonts", "~/.fonts", "/usr/share/matplotlib")
# Substitutes for a font that is missing or lacks letters; the first that has them all is used.
FALLBACKS = ("dejavusans", "liberationsans", "notosans", "notosanscjk", "notosanscjkvf", "droidsansfallbackfull")
TOLERANCE = 1 / 30  # of the height of a capital letter

Point = tuple[float, float]
Outline = list[Vertex]  # closed: the last point is the first; or a bar of two points


class OutlinePen(BasePen):  # type: ignore[misc]
    """Draws a letter as lines."""

    def __init__(self, glyphs: Any, tolerance: float) -> None:
        super().__init__(glyphs)
        self.tolerance = tolerance
        self.outlines: list[list[Point]] = []

    def _moveTo(self, to: Point) -> None:
        self.outlines.append([to])

    def _lineTo(self, to: Point) -> None:
        if to != self.outlines[-1][-1]:
            self.outlines[-1].append(to)

    def _curveToOne(self, first: Point, second: Point, end: Point) -> None:
        start = self._getCurrentPoint()
        bend = 0.75 * max(bend_at(start, first, second), bend_at(first, second, end))
        count = math.ceil(math.sqrt(bend / self.tolerance)) or 1
        for t in (i / count for i in range(1, count + 1)):
            weights = ((1 - t) ** 3, 3 * t * (1 - t) ** 2, 3 * t * t * (1 - t), t**3)
            x, y = (sum(map(float.__mul__, weights, map(float, axis))) for axis in zip(start, first, second, end))
            self._lineTo((x, y))

    def _closePath(self) -> None:
        self._lineTo(self.outlines[-1][0])


def bend_at(before: Point, point: Point, after: Point) -> float:
    return math.hypot(before[0] - 2 * point[0] + after[0], before[1] - 2 * point[1] + after[1])


class Font:
    """A font whose capital letters are 1 high."""

    def __init__(self, path: str) -> None:
        self.file = TTFont(path, fontNumber=0, lazy=True)
        self.glyphs = self.file.getGlyphSet()
        self.names = self.file.getBestCmap()
        pen = OutlinePen(self.glyphs, math.inf)
        self.glyphs[self.names[ord("X")]].draw(pen)
        self.capital = float(max(y for outline in pen.outlines for _, y in outline))
        self.letters: dict[str, tuple[list[Outline], float]] = {}

    def letter(self, letter: str) -> tuple[list[Outline], float]:
        """Returns the outlines of a letter and its advance width."""
        if letter not in self.letters:
            glyph = self.glyphs[self.names.get(ord(letter), ".notdef")]
            pen = OutlinePen(self.glyphs, TOLERANCE * self.capital)
            glyph.draw(pen)
            outlines = [[(x / self.capital, y / self.capital, 0.0) for x, y in outline] for outline in pen.outlines]
            self.letters[letter] = outlines, glyph.width / self.capital
        return self.letters[letter]

    def width(self, text: str) -> float:
        return sum(self.letter(letter)[1] for letter in text)

    def outlines(self, text: str) -> Iterator[Outline]:
        start = 0.0
        for letter in text:
            outlines, width = self.letter(letter)
            yield from ([(start + x, y, z) for x, y, z in outline] for outline in outlines)
            start += width


@lru_cache(maxsize=None)
def font_files() -> dict[str, str]:
    """Returns the installed font files by name, in lower-case letters and digits, such as "dejavusansbold"."""
    files: dict[str, str] = {}
    for folder in FOLDERS:
        for place, _, names in os.walk(os.path.expanduser(folder)):
            for name in names:
                stem, ending = os.path.splitext(name.lower())
                if ending in (".ttf", ".otf", ".ttc"):
                    files.setdefault(plain(stem), os.path.join(place, name))
    return files


def plain(name: str) -> str:
    return re.sub("[^a-z0-9]|regular$", "", name.lower())


@lru_cache(maxsize=None)
def open_font(name: str) -> Optional[Font]:
    try:
        return Font(font_files()[name])
    except Exception:  # no such font, or a damaged one
        return None


@lru_cache(maxsize=10_000)
def font_for(face: FontFace, letters: frozenset[str]) -> Font:
    """Returns the font of a style, or the first fallback that has all the letters."""
    style = ("bold" if face.is_bold else "") + ("italic" if face.is_italic else "")
    oblique = FALLBACKS[0] + style.replace("italic", "oblique")
    names = (plain(face.family + style), plain(os.path.splitext(face.ttf)[0]), oblique, *FALLBACKS)
    fonts = [font for font in map(open_font, names) if font]
    return next((font for font in fonts if all(ord(letter) in font.names for letter in letters)), fonts[0])


def font_of(face: FontFace, text: str) -> Font:
    return font_for(face, frozenset(text))


def face_of(entity: Any) -> FontFace:
    try:
        return get_entity_font_face(entity)
    except const.DXFTableEntryError:  # the style does not exist
        return FontFace()


def outlines(entity: Any) -> Iterator[Outline]:
    """Yields the outlines of the letters of a TEXT, an MTEXT, an ATTRIB or an ATTDEF."""
    if entity.dxftype() == "MTEXT":
        yield from Layout().outlines(entity)
    elif getattr(entity, "has_embedded_mtext_entity", False):
        yield from Layout().outlines(entity.virtual_mtext_entity())
    else:
        text = entity.plain_text()
        font = font_of(face_of(entity), text)
        matrix = alignment(entity, font.width(text)) * entity.wcs_transformation_matrix()
        yield from (list(placed(outline, matrix)) for outline in font.outlines(text))


def alignment(entity: Any, width: float) -> Matrix44:
    """Returns the matrix that gives a line of text its height and its alignment."""
    align, height = entity.get_align_enum(), entity.dxf.height
    horizontal, vertical = MAP_TEXT_ENUM_TO_ALIGN_FLAGS[align]
    x = {const.LEFT: 0.0, const.RIGHT: -width}.get(horizontal, -width / 2)
    y = {const.TOP: -1.0, const.MIDDLE: -0.5, const.BOTTOM: 0.3}.get(vertical, 0.0)
    if align is TextEntityAlignment.MIDDLE:
        y = -0.5
    stretch = entity.fit_length() / (width * height or 1.0) or 1.0
    return Matrix44.translate(x, y, 0.0) * Matrix44.scale(
        height * stretch, height * stretch if align is TextEntityAlignment.ALIGNED else height, 1.0
    )


class Layout(AbstractMTextRenderer):
    """Lays out texts of several lines, whose letters may differ in size and font."""

    def __init__(self) -> None:
        super().__init__()  # type: ignore[no-untyped-call]
        self.drawn: list[Outline] = []

    def outlines(self, entity: Any) -> list[Outline]:
        layout = self.layout_engine(entity)
        layout.place(align=text_layout.LayoutAlignment(entity.dxf.attachment_point))
        layout.render(entity.ucs().matrix)
        return self.drawn

    def word(self, text: str, ctx: MTextContext) -> text_layout.ContentCell:
        font = font_of(ctx.font_face, text)
        width = font.width(text) * ctx.cap_height * ctx.width_factor
        slant = math.tan(math.radians(ctx.oblique)) * ctx.cap_height
        scale = Matrix44([ctx.cap_height * ctx.width_factor, 0, 0, 0, slant, ctx.cap_height, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1])
        renderer = Renderer(self.drawn, list(font.outlines(text)), scale)
        align, stroke = text_layout.CellAlignment(ctx.align), self.get_stroke(ctx)
        return text_layout.Text(width=width, height=ctx.cap_height, valign=align, stroke=stroke, renderer=renderer)

    def fraction(self, data: tuple[str, str, str], ctx: MTextContext) -> text_layout.ContentCell:
        upper, lower, kind = data
        if not kind:
            return self.word(upper, ctx)
        cells, stacking = (self.word(upper, ctx), self.word(lower, ctx)), self.get_stacking(kind)
        return text_layout.Fraction(*cells, stacking=stacking, renderer=Renderer(self.drawn, [], Matrix44()))

    def space_width(self, ctx: MTextContext) -> float:
        return font_of(ctx.font_face, " ").width(" ") * ctx.cap_height * ctx.width_factor

    def get_font_face(self, mtext: Any) -> FontFace:
        return face_of(mtext)

    def make_bg_renderer(self, mtext: Any) -> text_layout.ContentRenderer:
        return text_layout.DoNothingRenderer()


class Renderer(text_layout.ContentRenderer):
    """Draws a word, its underline, overline and strike-through, and the bar of a fraction."""

    def __init__(self, drawn: list[Outline], outlines: list[Outline], scale: Matrix44) -> None:
        self.drawn, self.outlines, self.scale = drawn, outlines, scale

    def render(self, left: float, bottom: float, right: float, top: float, m: Optional[Matrix44] = None) -> None:
        place = self.scale * Matrix44.translate(left, bottom, 0.0) * (m or Matrix44())
        self.drawn += [list(placed(outline, place)) for outline in self.outlines]

    def line(self, x1: float, y1: float, x2: float, y2: float, m: Optional[Matrix44] = None) -> None:
        self.drawn.append(list(placed([(x1, y1, 0.0), (x2, y2, 0.0)], m or Matrix44())))
