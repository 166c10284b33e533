"""Tesserae, a live granular processor, for NumPy arrays.

    import numpy as np, tesserae

    result = tesserae.render(sound, 48000, preset="dense-cloud", seed=7)
    result.audio                   # float32, (2, frames)
    result.grains["semitones"]     # one row for each grain

    stream = tesserae.Processor(48000, seed=7, preset="dense-cloud")
    stream.parameters["Feedback"] = "-6 dB"
    out = stream.process(block)    # as often as there are blocks

Sound is float32, full scale 1.0, of the shape (channels, frames) or, in mono, (frames,). Arrays of
float32 whose samples lie side by side are read where they are. The same input, preset and seed give
the same bits each time, and those of the program "tesserae render".

Wrong values raise ValueError, names that mean nothing KeyError, and files that can't be used
OSError, each with a sentence that says what would do.
"""

from . import _core
from ._preset import Preset, Route, presets
from ._processor import Parameters, Processor
from ._render import Render, render

__version__ = _core.version
__all__ = ["Parameters", "Preset", "Processor", "Render", "Route", "parameters", "presets", "render"]


def parameters():
    """All settings as a list of dictionaries.

    "name" is the full name, "label" the readable one; either serves wherever a parameter is named.
    "lowest", "highest" and "default" are texts, "minimum" and "maximum" numbers in the unit that
    the texts show, "choices" the names of those that are chosen from a list.
    """
    return _core.parameters()
