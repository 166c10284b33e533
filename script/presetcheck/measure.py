"""Measures presets: renders side by side, numbers of each, distances between all pairs."""
import itertools
import os
from concurrent.futures import ThreadPoolExecutor

import numpy as np

import meters
from renders import presets as load
from sounds import RATE, SOUNDS

LOUDNESS_LU, PEAK_DB, MEL_DB, TIME_DB = 2.0, -1.0, 8.0, 5.0
TAIL = 30
HELD = ("frozen", "held", "holds", "for ever", "until")


class Result:
    """Numbers of one preset: loudness against the dry sound by sound, in LU; highest true peak over
    all seeds; seconds of tail; least share of a core; nearest neighbour with both distances."""

    def __init__(self, preset):
        self.preset = preset
        self.loudness, self.spectra = {}, {}
        self.peak, self.tail, self.cpu = -200.0, 0.0, 1.0
        self.neighbour = ("", 99.0, 99.0)

    def note(self, samples, summary):
        """Peak and processor time of one more render."""
        self.peak = max(self.peak, meters.true_peak_db(samples))
        self.cpu = min(self.cpu, summary["cpuShare"])

    def faults(self, cpu_limit):
        """What breaks a limit, in words."""
        said = []
        for sound, loudness in self.loudness.items():
            if abs(loudness) > LOUDNESS_LU:
                said.append(f"{loudness:+.1f} LU on {sound}")
        if self.peak > PEAK_DB:
            said.append(f"peak {self.peak:.1f} dB")
        if self.neighbour[1] < MEL_DB and self.neighbour[2] < TIME_DB:
            said.append(f"too near to {self.neighbour[0]}")
        if self.tail >= TAIL - 0.1 and not any(word in self.preset.description for word in HELD):
            said.append("endless, and the description does not say so")
        if self.cpu > cpu_limit:
            said.append(f"{100 * self.cpu:.2f} % of a core")
        return said


def dry_loudness(render, preset):
    """What the renderer measures of the two sounds with nothing of the preset in them."""
    return {sound: render(preset, sound, 1, more=("--set", "Dry / Wet=0 %"))[1]["loudnessLufs"]
            for sound in ("music", "speech")}


def measure(render, preset, dry, seeds, seconds):
    """All of one preset but its neighbour: the first seed on each sound by itself, the others for
    their peaks on all in a row. The plucks are listened to till their tail is over."""
    result = Result(preset)
    for sound in SOUNDS:
        samples, summary = render(preset, sound, 1, TAIL if sound == "plucks" else 0)
        if sound == "plucks":
            result.tail = meters.tail_seconds(samples, seconds)
        samples = samples[: seconds * RATE]
        result.spectra[sound] = meters.mel_spectrum(samples), meters.time_spectrum(samples)
        if sound in dry:
            result.loudness[sound] = summary["loudnessLufs"] - dry[sound]
        result.note(samples, summary)
    for seed in range(2, seeds + 1):
        result.note(*render(preset, "all", seed))
    return result


def find_neighbours(results):
    """Gives each its neighbour: the one that comes nearest to breaking both limits."""
    for a, b in itertools.combinations(results, 2):
        pairs = [(a.spectra[sound], b.spectra[sound]) for sound in a.spectra]
        mel = float(np.mean([meters.mel_distance(x[0], y[0]) for x, y in pairs]))
        time = float(np.mean([meters.time_distance(x[1], y[1]) for x, y in pairs]))
        for one, other in ((a, b), (b, a)):
            nearness = lambda mel, time: max(mel / MEL_DB, time / TIME_DB)
            if nearness(mel, time) < nearness(*one.neighbour[1:]):
                one.neighbour = (other.preset.id, mel, time)


def measure_all(render, presets, seeds, seconds):
    """A result for each preset."""
    dry = dry_loudness(render, load(["init"])[0])
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(
            lambda preset: measure(render, preset, dry, seeds, seconds), presets))
    find_neighbours(results)
    return results
