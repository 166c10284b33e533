from collections.abc import Iterable, Iterator, Mapping, MutableMapping, Sequence
from dataclasses import dataclass, field
from os import PathLike
from typing import Any, Literal

import numpy as np
from numpy.typing import ArrayLike, NDArray

__version__: str

_Source = str | PathLike[str] | "Preset"
_Value = str | float | bool
_Point = tuple[float | str, str, float | str] | tuple[float | str, str, float | str, str]

def parameters() -> list[dict[str, Any]]: ...
def presets() -> list[str]: ...

@dataclass
class Route:
    source: str
    destination: str
    amount: float

@dataclass
class Preset:
    name: str = ""
    description: str = ""
    tags: list[str] = field(default_factory=list)
    tempo: float | None = None
    parameters: dict[str, str | float] = field(default_factory=dict)
    routes: list[Route] = field(default_factory=list)
    @classmethod
    def load(cls, source: str | PathLike[str]) -> Preset: ...
    def save(self, path: str | PathLike[str]) -> None: ...

class Parameters(MutableMapping[str, Any]):
    def __getitem__(self, name: str) -> str: ...
    def __setitem__(self, name: str, value: _Value) -> None: ...
    def __delitem__(self, name: str) -> None: ...
    def __iter__(self) -> Iterator[str]: ...
    def __len__(self) -> int: ...
    def value(self, name: str) -> float: ...
    def position(self, name: str) -> float: ...
    def put(self, name: str, position: float) -> None: ...

class Processor:
    def __init__(
        self,
        sample_rate: float,
        seed: int | None = None,
        preset: _Source = "init",
        channels: Literal[1, 2] = 2,
        tempo: float | None = None,
        sidechain: Literal[0, 1, 2] = 0,
    ) -> None: ...
    def process(self, audio: ArrayLike, sidechain: ArrayLike | None = None) -> NDArray[np.float32]: ...
    def reset(self) -> None: ...
    def preset(self) -> Preset: ...
    def load(self, preset: _Source) -> None: ...
    @property
    def parameters(self) -> Parameters: ...
    @property
    def latency(self) -> int: ...
    @property
    def tail(self) -> float: ...
    @property
    def sample_rate(self) -> float: ...
    @property
    def channels(self) -> int: ...
    @property
    def sidechain(self) -> int: ...
    @property
    def seed(self) -> int: ...
    @property
    def engine_seconds(self) -> float: ...
    @property
    def tempo(self) -> float: ...
    @tempo.setter
    def tempo(self, bpm: float) -> None: ...

class Render:
    audio: NDArray[np.float32]
    sample_rate: float
    seed: int
    tempo: float
    preset: str
    warnings: list[str]
    engine_seconds: float
    grains: NDArray[np.void]
    modulation: NDArray[np.void] | None
    def __array__(self, dtype: Any = None) -> NDArray[Any]: ...
    def plot(self, axes: Sequence[Any] | None = None) -> Any: ...

def render(
    audio: ArrayLike,
    sample_rate: float,
    preset: _Source = "init",
    seed: int | None = None,
    set: Mapping[str, _Value] | None = None,
    automation: Iterable[_Point] | str | PathLike[str] | None = None,
    tail: float | Literal["auto"] = "auto",
    tail_fade: float | None = None,
    tempo: float | None = None,
    playing: bool = True,
    start_beat: float = 0.0,
    meter: str = "4/4",
    mono: bool = False,
    modulation: bool | Iterable[str] = False,
    sidechain: ArrayLike | None = None,
) -> Render: ...
