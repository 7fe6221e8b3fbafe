"""Annotated titles over video frames: a palette and a text in, NumPy pixels out.

    >>> import numpy, qzanno
    >>> palette = qzanno.Palette.load("examples/broadcast.plist")
    >>> palette.annotations
    ['b', 'i', 'Warning', 'Emphasis', 'Speaker', 'Centre', 'Top', 'Role', 'Lower Third']

A title is a text with named annotations on stretches of it, counted in characters as in Python:

    >>> title = qzanno.Title("ADA: The engine weaves")
    >>> title.annotate("Speaker", 0, 4)
    >>> title.spans
    [Span(annotation='Speaker', start=0, stop=4)]

A renderer draws titles for one screen, by default 1920 x 1080. Pictures are arrays of height x width x 4 bytes, R, G, B, A:

    >>> renderer = qzanno.Renderer(palette, frame=(640, 360))
    >>> picture = renderer.render(title)
    >>> picture.shape, picture.dtype, bool(picture.any())
    ((360, 640, 4), dtype('uint8'), True)

Renderers also draw into your own array, or over your own frame, without a copy:

    >>> frame = numpy.full((360, 640, 4), 255, numpy.uint8)
    >>> changed = renderer.composite(title, frame)
    >>> bool((frame[:changed.y] == 255).all())
    True

Cues of a caption file have times and a title:

    >>> captions = qzanno.Captions.load("examples/captions.srt", palette)
    >>> captions[1].start, captions[1].title.text
    (4.5, 'At the top of the safe part of the screen')

Errors are raised with the library's message:

    >>> qzanno.Title("Hello", annotations=["Speaker"]).annotate("Role", 3, 9)
    Traceback (most recent call last):
    ValueError: "Role": characters 3 to 9 are not within a text of 5
    >>> qzanno.Palette.load("missing.plist")
    Traceback (most recent call last):
    qzanno.FileError: missing.plist: cannot be opened: No such file or directory

Any number of threads may use palettes, fonts and captions. A renderer serves one thread at a time while others wait; threads with their own
renderers draw at the same time, since drawing releases the interpreter lock.
"""

try:
    import numpy as _numpy  # noqa: F401
except ImportError:
    raise ImportError("qzanno draws into arrays of NumPy, which is not installed; install numpy (python3-numpy on Debian)") from None

from ._qzanno import (
    AnnotationError,
    Captions,
    Error,
    FileError,
    Fonts,
    FormatError,
    Palette,
    Renderer,
    Title,
    __version__,
)
from ._values import Cue, Pixels, Place, Problem, ReportItem, Span

__all__ = [
    "AnnotationError",
    "Captions",
    "Cue",
    "Error",
    "FileError",
    "Fonts",
    "FormatError",
    "Palette",
    "Pixels",
    "Place",
    "Problem",
    "Renderer",
    "ReportItem",
    "Span",
    "Title",
]
