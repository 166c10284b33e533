"""Renders from array to array."""

import json
import os

import numpy as np

from . import _core
from ._preset import source_of


class Render:
    """What came of a render.

    audio        float32, (channels, frames), without latency
    sample_rate  hertz
    seed         the start of chance that was in force
    tempo        beats per minute at the start
    preset       the preset's name
    warnings     sentences on what may not be meant so
    grains       a structured array with a row for each grain that was started: time, duration,
                 tape_position, tape_length, source_duration (seconds), semitones, pan (0 left to 1
                 right), gain (linear), shape (index of "Shape"), right, reversed
    modulation   a structured array with "time" in seconds, the seven sources (-1 to 1) and the
                 destinations that were asked for (positions 0 to 1); None without modulation=
    """

    def __init__(self, result, sample_rate):
        self.audio = result["audio"]
        self.sample_rate = sample_rate
        self.seed = result["seed"]
        self.tempo = result["tempo"]
        self.preset = result["preset"]
        self.warnings = result["warnings"]
        self.engine_seconds = result["engine_seconds"]
        self.grains = result["grains"]
        self.modulation = None
        if result["modulation"] is not None:
            names, table = result["modulation"]
            self.modulation = np.rec.fromarrays(list(table.T), names=names).view(np.ndarray)

    def __array__(self, dtype=None):
        return np.asarray(self.audio, dtype)

    def plot(self, axes=None):
        """Draws waveform, grains over the tape, and modulation where there is any. Needs matplotlib.

        axes are three of matplotlib's, or None for a new figure. Returns the figure.
        """
        from ._plot import plot

        return plot(self, axes)


def render(
    audio,
    sample_rate,
    preset="init",
    seed=None,
    set=None,
    automation=None,
    tail="auto",
    tail_fade=None,
    tempo=None,
    playing=True,
    start_beat=0.0,
    meter="4/4",
    mono=False,
    modulation=False,
    sidechain=None,
):
    """Runs sound through the processor as the program "tesserae render" does, to the same bits.

    audio        (channels, frames) with one or two channels, or (frames,)
    sample_rate  of audio, in hertz
    preset       a factory preset's name, a file, or a Preset
    seed         start of all chance; None takes one of chance, which the result tells
    set          parameters put elsewhere: {"Feedback": "-6 dB", "Pitch": 7}. Numbers are in the
                 parameter's unit, or the index of a choice. In texts a bare number from 0 to 1 is a
                 position, as on the command line
    automation   a list of (time, parameter, position) or (time, parameter, position, ramp) with
                 ramp "linear" or "exponential", or the path of such a list as JSON or CSV. Times
                 are seconds or texts such as "4 beats" and "5:3"; positions as in texts of set
    tail         seconds of sound behind the input, or "auto": until it has faded, at most 30
    tail_fade    seconds of fade at the end of a tail that still sounds; None is as the program
    tempo        beats per minute; None takes the preset's, or 120
    playing      whether the song plays
    start_beat   song position at the start, in quarter notes
    meter        time signature in which automation counts bars
    mono         one output channel
    modulation   True keeps the modulation sources; a list of names adds destinations
    sidechain    sound for the envelope follower, in shape and rate as audio; where it is shorter,
                 silence follows. Without one the follower takes the input

    Returns a Render. Other threads of Python run meanwhile.
    """
    wish = _core.RenderWish()
    wish.sample_rate = sample_rate
    wish.preset = source_of(preset)
    wish.seed = seed
    wish.set = [
        (name, value if isinstance(value, str) else float(value))
        for name, value in (set or {}).items()
    ]
    if isinstance(automation, (str, os.PathLike)):
        wish.automation_file = os.fspath(automation)
    elif automation is not None:
        wish.automation = json.dumps([list(point) for point in automation])
    wish.tail = None if tail == "auto" else tail
    wish.tail_fade = tail_fade
    wish.tempo = tempo
    wish.playing = playing
    wish.start_beat = start_beat
    wish.meter = meter
    wish.mono = mono
    wish.shows_modulation = modulation is not False and modulation is not None
    wish.destinations = [] if isinstance(modulation, bool) else list(modulation or [])
    return Render(_core.render(audio, sidechain, wish), sample_rate)
