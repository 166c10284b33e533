"""Measures presets: renders side by side, numbers of each, distances between all pairs."""
import itertools
import os
from concurrent.futures import ThreadPoolExecutor

import numpy as np

import meters
from sounds import RATE

LOUDNESS_LU, PEAK_DB, MEL_DB, TIME_DB = 2.0, -1.0, 8.0, 5.0
TAIL = 30
HELD = ("frozen", "held", "holds", "for ever", "until")


class Result:
    """Numbers of one preset: loudness against the dry sound by sound and seed, in LU; highest true
    peak; seconds of tail; least share of a core; nearest neighbour with both distances."""

    def __init__(self, preset):
        self.preset = preset
        self.loudness = {"music": [], "speech": []}
        self.peak, self.tail, self.cpu = -200.0, 0.0, 1.0
        self.spectra = {}
        self.neighbour = ("", 99.0, 99.0)

    def faults(self, cpu_limit):
        """What breaks a limit, in words."""
        said = []
        for sound, values in self.loudness.items():
            worst = max(values, key=abs)
            if abs(worst) > LOUDNESS_LU:
                said.append(f"{worst:+.1f} LU on {sound}")
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
    return {sound: render(preset, sound, 1, more=("--set", "Dry / Wet=0 %"))[1]["loudnessLufs"]
            for sound in ("music", "speech")}


def measure(render, preset, dry, seeds, seconds):
    """All of one preset but its neighbour."""
    result = Result(preset)
    for sound, count in seeds.items():
        for seed in range(1, count + 1):
            listen = sound == "plucks" and seed == 1
            samples, summary = render(preset, sound, seed, TAIL if listen else 0)
            if listen:
                result.tail = meters.tail_seconds(samples, seconds)
            samples = samples[: seconds * RATE]
            result.peak = max(result.peak, meters.true_peak_db(samples))
            result.cpu = min(result.cpu, summary["cpuShare"])
            if sound in dry:
                result.loudness[sound].append(summary["loudnessLufs"] - dry[sound])
            if seed == 1:
                result.spectra[sound] = meters.mel_spectrum(samples), meters.time_spectrum(samples)
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
    dry = dry_loudness(render, presets[0])
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(
            lambda preset: measure(render, preset, dry, seeds, seconds), presets))
    find_neighbours(results)
    return results
