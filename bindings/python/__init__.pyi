import os
from collections.abc import Iterable, Iterator
from typing import Literal, SupportsIndex, final, overload

import numpy
from numpy.typing import NDArray

from ._values import Cue as Cue
from ._values import Pixels as Pixels
from ._values import Place as Place
from ._values import Problem as Problem
from ._values import ReportItem as ReportItem
from ._values import Span as Span

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
__version__: str

class Error(Exception): ...
class FileError(Error, OSError): ...
class FormatError(Error, ValueError): ...
class AnnotationError(Error, LookupError): ...

@final
class Palette:
    @staticmethod
    def load(path: str | os.PathLike[str]) -> Palette: ...
    @staticmethod
    def from_bytes(data: bytes) -> Palette: ...
    @property
    def annotations(self) -> list[str]: ...

@final
class Fonts:
    def __init__(self, folders: Iterable[str | os.PathLike[str]]) -> None: ...
    @property
    def problems(self) -> list[str]: ...

@final
class Title:
    def __init__(self, text: str, annotations: Iterable[str] = ()) -> None: ...
    def annotate(self, annotation: str, start: int = 0, stop: int | None = None) -> None: ...
    @property
    def text(self) -> str: ...
    @property
    def spans(self) -> list[Span]: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> Title: ...
    def __deepcopy__(self, memo: object) -> Title: ...

@final
class Captions:
    @staticmethod
    def load(
        path: str | os.PathLike[str], palette: Palette, *, looks: Literal["house", "file", "both"] = "both"
    ) -> Captions: ...
    @staticmethod
    def from_bytes(
        data: bytes,
        format: str,
        palette: Palette,
        *,
        looks: Literal["house", "file", "both"] = "both",
    ) -> Captions: ...
    @property
    def problems(self) -> list[Problem]: ...
    def __len__(self) -> int: ...
    @overload
    def __getitem__(self, index: SupportsIndex) -> Cue: ...
    @overload
    def __getitem__(self, index: slice) -> list[Cue]: ...
    def __iter__(self) -> Iterator[Cue]: ...

@final
class Renderer:
    def __init__(
        self,
        palette: Palette,
        *,
        screen: tuple[float, float] = (1920, 1080),
        frame: tuple[int, int] | None = None,
        fonts: Fonts | None = None,
        language: str = "",
        direction: Literal["natural", "ltr", "rtl"] = "natural",
    ) -> None: ...
    def measure(self, title: Title, *, area: Literal["screen", "box"] = "box") -> Place: ...
    def render(
        self,
        title: Title,
        *,
        area: Literal["screen", "box"] = "screen",
        alpha: Literal["premultiplied", "straight"] = "premultiplied",
        out: NDArray[numpy.uint8] | None = None,
    ) -> NDArray[numpy.uint8]: ...
    def composite(
        self, title: Title, frame: NDArray[numpy.uint8], *, area: Literal["screen", "box"] = "screen"
    ) -> Pixels: ...
    def report(self, title: Title, *, area: Literal["screen", "box"] = "screen") -> list[ReportItem]: ...
