"""Presets and their routes."""

import json
import os
from dataclasses import dataclass, field

from . import _core


def presets():
    """Names of the factory presets, "init" first."""
    return _core.factory_presets()


@dataclass
class Route:
    """One modulation: source moves destination by amount, -1 to 1 of the destination's travel.

    Both go by readable names, such as "Function 1" and "Pitch".
    """

    source: str
    destination: str
    amount: float


@dataclass
class Preset:
    """A sound: settings that differ from those of a new processor, and routes.

    parameters maps full names to texts such as "250 ms" or positions from 0 to 1; tempo is a hint
    in beats per minute, or None.
    """

    name: str = ""
    description: str = ""
    tags: list = field(default_factory=list)
    tempo: float = None
    parameters: dict = field(default_factory=dict)
    routes: list = field(default_factory=list)

    @classmethod
    def load(cls, source):
        """The factory preset of a name, or the preset of a file.

        Raises KeyError for a name that there is not, and OSError for a file that can't be used.
        """
        return cls._from_text(_core.preset_text(os.fspath(source)))

    @classmethod
    def _from_text(cls, text):
        content = json.loads(text)
        routes = [
            Route(one["source"], one["destination"], one["amount"])
            for one in content.get("routings", [])
        ]
        return cls(
            content.get("name", ""),
            content.get("description", ""),
            content.get("tags", []),
            content.get("tempo"),
            content.get("parameters", {}),
            routes,
        )

    def _text(self):
        content = {
            "format": "tesserae-preset",
            "version": 1,
            "name": self.name,
            "description": self.description,
            "tags": list(self.tags),
            "parameters": dict(self.parameters),
            "routings": [vars(route) for route in self.routes],
        }
        if self.tempo is not None:
            content["tempo"] = self.tempo
        return json.dumps(content)

    def save(self, path):
        """Writes the preset to a file that all of Tesserae reads, whole or not at all.

        Raises ValueError for what no preset holds, and OSError where the file can't be written.
        """
        text = _core.preset_text(self._text())
        part = f"{os.fspath(path)}.part"
        with open(part, "w", encoding="utf-8") as file:
            file.write(text)
        os.replace(part, path)


def source_of(preset):
    """What the core takes: a name, a path, or the text of a Preset."""
    return preset._text() if isinstance(preset, Preset) else os.fspath(preset)
