"""Factory presets from their files through the renderer."""
import json
import subprocess
import tempfile
from pathlib import Path

from sounds import read_wave

PRESETS = Path(__file__).resolve().parents[2] / "presets"


class Preset:
    """One file of presets/, with what its parameters tell about playing it."""

    def __init__(self, path):
        content = json.loads(path.read_text())
        self.path, self.id = path, path.stem
        self.name, self.description = content["name"], content["description"]
        self.tags, self.parameters = content["tags"], content["parameters"]
        self.sources = {routing["source"] for routing in content.get("routings", [])}

    def side_chained(self):
        return self.parameters.get("Envelope Follower Source") == "Side-Chain"

    def played_by(self):
        """What moves the sound beside its input."""
        by = ["side-chain" if self.side_chained() else "input level"]
        by = by if "Envelope Follower" in self.sources else []
        by += sorted(source for source in self.sources if source.startswith("Macro"))
        notes = ("Straight", "Triplet", "Dotted")
        in_time = any(value in notes for value in self.parameters.values())
        return ", ".join(by + ["tempo"] * in_time)


def presets(names):
    """The presets of these names, or all: init first, then by name."""
    found = [Preset(path) for path in sorted(PRESETS.glob("*.json"))]
    return sorted((preset for preset in found if not names or preset.id in names),
                  key=lambda preset: (preset.id != "init", preset.id))


class Renderer:
    """Runs the renderer on the test sounds; the drums play every side-chain."""

    def __init__(self, tesserae, sounds):
        self.tesserae, self.sounds = tesserae, sounds

    def __call__(self, preset, sound, seed, tail=0, more=()):
        """Samples, frames x channels, and the renderer's summary."""
        with tempfile.TemporaryDirectory() as folder:
            out = Path(folder) / "out.wav"
            command = [self.tesserae, "render", self.sounds[sound], "-o", out, "--json",
                       "--preset", preset.path, "--seed", str(seed), "--tail", str(tail), *more]
            if preset.side_chained():
                command += ["--sidechain", self.sounds["drums"]]
            run = subprocess.run(command, capture_output=True, text=True)
            if run.returncode != 0:
                raise SystemExit(f"{preset.id}: {run.stderr}")
            return read_wave(out), json.loads(run.stdout)
