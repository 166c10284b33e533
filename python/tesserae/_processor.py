"""The processor as a stream."""

from collections.abc import MutableMapping

from . import _core
from ._preset import Preset, source_of


class Parameters(MutableMapping):
    """Where the parameters of a processor stand, by label ("Feedback") or full name.

    Reading gives the text that a display shows, such as "-6.0 dB". Writing takes such a text; a
    number in the unit of that text; the index or the name of a choice; or True and False. Iteration
    goes over full names. A label that several share, such as "Grain Size", means the one in force.
    """

    def __init__(self, stream):
        self._stream = stream

    def __getitem__(self, name):
        return self._stream.text(name)

    def __setitem__(self, name, value):
        self._stream.put(name, value if isinstance(value, str) else float(value))

    def __delitem__(self, name):
        raise TypeError("Parameters can't be removed.")

    def __iter__(self):
        return (parameter["name"] for parameter in _core.parameters())

    def __len__(self):
        return len(_core.parameters())

    def value(self, name):
        """The number behind the text, in its unit: decibels, milliseconds, the index of a choice."""
        return self._stream.value(name)

    def position(self, name):
        """The place of the knob, 0 to 1."""
        return self._stream.position(name)

    def put(self, name, position):
        """Puts the knob at a place, 0 to 1."""
        self._stream.put_position(name, position)


class Processor:
    """A processor that sound streams through, piece by piece, with all that it remembers kept.

    sample_rate  in hertz, from 1000 to 768000
    seed         start of all chance, a whole number of 64 bits; None takes one of chance
    preset       a factory preset's name, a file, or a Preset
    channels     of the input: 1 or 2
    tempo        beats per minute; None takes the preset's, or 120
    sidechain    channels of a side-chain, 1 or 2; 0 is without one: then the envelope follower
                 takes the input

    The song plays from beat 0 on. Output is what the program renders, behind `latency` frames.
    Separate processors may work in separate threads at once; the interpreter's lock is not held.
    """

    def __init__(self, sample_rate, seed=None, preset="init", channels=2, tempo=None, sidechain=0):
        self._stream = _core.Stream(
            sample_rate, seed, source_of(preset), channels, tempo, sidechain
        )

    def process(self, audio, sidechain=None):
        """Runs sound through: (channels, frames), or (frames,) for one channel, of any length.

        sidechain is as long, with the channels that the processor was made for; None is silence.
        Returns float32 of the shape (2, frames). What it is told of `audio` lies `latency` frames
        later in it.
        """
        return self._stream.process(audio, sidechain)

    def reset(self):
        """Clears all that sounds, and starts song and chance anew. Parameters stay."""
        self._stream.reset()

    @property
    def parameters(self):
        """The parameters, as a mapping that can be written."""
        return Parameters(self._stream)

    @property
    def latency(self):
        """Frames by which the output lies behind."""
        return self._stream.latency()

    @property
    def tail(self):
        """Seconds that it may go on sounding behind its input at most; inf where it may not end."""
        return self._stream.tail()

    @property
    def sample_rate(self):
        """Hertz."""
        return self._stream.sample_rate()

    @property
    def channels(self):
        """Channels of the input."""
        return self._stream.channels()

    @property
    def sidechain(self):
        """Channels of the side-chain."""
        return self._stream.side_channels()

    @property
    def seed(self):
        """Start of all chance."""
        return self._stream.seed()

    @property
    def engine_seconds(self):
        """Seconds that the engine has worked, beside which stands what Python takes."""
        return self._stream.engine_seconds()

    @property
    def tempo(self):
        """Beats per minute; can be written."""
        return self._stream.tempo()

    @tempo.setter
    def tempo(self, bpm):
        self._stream.set_tempo(bpm)

    def preset(self):
        """The sound of now as a Preset."""
        return Preset._from_text(self._stream.capture())

    def load(self, preset):
        """Takes over a preset: a name, a file, or a Preset. Clears what sounds."""
        self._stream.load(source_of(preset))

    def __getstate__(self):
        # Settings, not sound.
        settings = self.sample_rate, self.seed, self._stream.capture()
        made = (*settings, self.channels, self.tempo, self.sidechain)
        return made, self._stream.position("Bypass")

    def __setstate__(self, state):
        made, bypass = state
        self._stream = _core.Stream(*made)
        if bypass > 0:
            self._stream.put_position("Bypass", bypass)
