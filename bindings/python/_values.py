"""Named tuples that calls return. Positions count characters of a title's text; `stop` is one past the last."""

from __future__ import annotations

from typing import TYPE_CHECKING, NamedTuple

if TYPE_CHECKING:
    from . import Title


class Span(NamedTuple):
    """A stretch of a title with an annotation."""

    annotation: str
    start: int
    stop: int


class Cue(NamedTuple):
    """A cue of a caption file: start and end in seconds from the beginning, the line above the times, and the title."""

    start: float
    end: float
    identifier: str
    title: Title


class Problem(NamedTuple):
    """Something in a caption file that has no effect, or not the intended one; lines count from 1."""

    line: int
    message: str


class Place(NamedTuple):
    """The size of a picture in pixels, and the place of its top left corner on the frame, perhaps between pixels."""

    x: float
    y: float
    width: int
    height: int


class Pixels(NamedTuple):
    """A rectangle of an array's pixels; width or height is 0 if it is empty."""

    x: int
    y: int
    width: int
    height: int


class ReportItem(NamedTuple):
    """One way in which a stretch of a title is not shown as requested.

    `kind` is "font missing" (another is used), "font substituted" (it does not have the characters), "glyph missing" (no font has
    them), "text clipped" (it does not fit its box), "glyphs clipped", "layer 1 clipped" or "layer 2 clipped" (at the picture's edge),
    "bold synthesised" or "italic synthesised" (the font has no such face), "regular missing" or "upright missing" (it has no other).
    """

    kind: str
    start: int
    stop: int
    font_asked: str
    font_used: str
