"""What calls return, as named tuples. Positions count characters of a title's text; `stop` is the one after the last."""

from __future__ import annotations

from typing import TYPE_CHECKING, NamedTuple

if TYPE_CHECKING:
    from . import Title


class Span(NamedTuple):
    """A stretch of a title on which an annotation holds."""

    annotation: str
    start: int
    stop: int


class Cue(NamedTuple):
    """A cue of a caption file: seconds from the begin of the programme, the line above the times, and what is shown."""

    start: float
    end: float
    identifier: str
    title: Title


class Problem(NamedTuple):
    """Something in a caption file that adds nothing, or not what was meant; lines count from 1."""

    line: int
    message: str


class Place(NamedTuple):
    """The size of a picture in pixels, and where its top left corner comes on the frame, perhaps between two pixels."""

    x: float
    y: float
    width: int
    height: int


class Pixels(NamedTuple):
    """Whole pixels of an array; no width or height when it holds none."""

    x: int
    y: int
    width: int
    height: int


class ReportItem(NamedTuple):
    """One matter in which a stretch of a title is not shown as it was asked for.

    `kind` is "font missing" (another one serves), "font substituted" (it lacks the characters), "glyph missing" (no font has
    them), "text clipped" (the box has no room), "glyphs clipped", "layer 1 clipped" or "layer 2 clipped" (the picture ends),
    "bold synthesised" or "italic synthesised" (the font has no such face), "regular missing" or "upright missing" (it has no other).
    """

    kind: str
    start: int
    stop: int
    font_asked: str
    font_used: str
