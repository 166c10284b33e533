"""The four sounds that presets are measured with, the same every time: the renderer's own music, a
synthetic voice, plucked strings and drums. Stereo at 48 kHz, with true peaks at -3 dB."""
import subprocess
import wave

import numpy as np
from scipy import signal

RATE = 48000
SOUNDS = ("music", "speech", "plucks", "drums")
PEAK = 10 ** (-3 / 20)
TEXT = (
    "A grain of sound is shorter than a word. Take many of them, lay them side by side, and you "
    "hear a voice that nobody has spoken! Take fewer, and it falls apart. Which one is it? Seven "
    "small steps, then silence; six more, and the bell begins to ring."
)


def read_wave(path):
    """Samples of a 16, 24 or 32 bit WAV file, frames x channels, full scale = 1."""
    with wave.open(str(path)) as file:
        width, channels = file.getsampwidth(), file.getnchannels()
        raw = np.frombuffer(file.readframes(file.getnframes()), np.uint8).reshape(-1, width)
    words = np.zeros((len(raw), 4), np.uint8)
    words[:, 4 - width :] = raw
    return words.view("<i4").reshape(-1, channels).astype(np.float64) / 2**31


def write_wave(path, samples):
    with wave.open(str(path), "wb") as file:
        file.setnchannels(2)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(np.round(samples * 32767).astype("<i2").tobytes())


def speech(folder, seconds):
    """Debian's espeak-ng reads a text, with its pauses."""
    path = folder / "voice.wav"
    subprocess.run(["espeak-ng", "-v", "en", "-s", "150", "-w", path, TEXT], check=True)
    with wave.open(str(path)) as file:
        rate = file.getframerate()
    voice = read_wave(path)[:, 0]
    voice = signal.resample_poly(voice, RATE // 50, rate // 50)
    voice = np.resize(voice, seconds * RATE)
    return np.stack([voice, voice], 1)


def plucks(seconds):
    """Karplus-Strong strings: a line in A minor, two to three notes a second, left and right."""
    chance = np.random.default_rng(1)
    out = np.zeros((seconds * RATE, 2))
    notes = [0, 7, 12, 15, 10, 3, 7, -5]
    time, step = 0.05, 0
    while time < seconds - 0.2:
        period = int(RATE / (220 * 2 ** (notes[step % len(notes)] / 12)))
        length = min(int(1.2 * RATE), len(out) - int(time * RATE))
        burst = np.zeros(length)
        burst[:period] = chance.uniform(-1, 1, min(period, length))[:length]
        feedback = np.zeros(period + 2)
        feedback[0], feedback[period], feedback[period + 1] = 1, -0.4975, -0.4975
        note = signal.lfilter([1], feedback, burst)
        pan = 0.5 + 0.3 * np.sin(step)
        at = int(time * RATE)
        out[at : at + length] += note[:, None] * [1 - pan, pan]
        time += (0.25, 0.5, 0.25, 0.375)[step % 4]
        step += 1
    return out


def drums(seconds):
    """Kick, snare and hats at 120 BPM, with a fill in every second bar."""
    chance = np.random.default_rng(2)
    out = np.zeros((seconds * RATE, 2))
    t = np.arange(int(0.3 * RATE)) / RATE
    kick = np.sin(2 * np.pi * (48 * t + 4.5 * (1 - np.exp(-t * 38)))) * np.exp(-t * 13)
    noise = chance.standard_normal((2, len(t)))
    snare = 0.4 * noise[0] * np.exp(-t * 22) + 0.5 * np.sin(2 * np.pi * 190 * t) * np.exp(-t * 30)
    bright = signal.butter(2, 7000, "high", fs=RATE, output="sos")
    hat = 0.25 * signal.sosfilt(bright, noise[1]) * np.exp(-t * 60)
    steps = {0: kick, 4: snare, 7: kick, 10: kick, 12: snare}
    for sixteenth in range(int(seconds * 8)):
        place = sixteenth % 16
        hits = [hat * (0.6 if place % 2 else 1.0) * [[0.8], [1.2]]]
        if place in steps:
            hits.append(np.tile(steps[place], (2, 1)))
        if sixteenth % 32 > 27:
            hits.append(np.tile(snare * 0.7, (2, 1)))
        at = sixteenth * RATE // 8
        for hit in hits:
            piece = out[at : at + len(t)]
            piece += hit.T[: len(piece)]
    return out


def make(tesserae, folder, seconds):
    """Writes all four for that many whole seconds each, and "all", one behind the other; answers
    their paths by name."""
    paths = {name: folder / f"{name}.wav" for name in (*SOUNDS, "all")}
    subprocess.run([tesserae, "demo-sound", paths["music"], "--seconds", str(seconds)],
                   check=True, stdout=subprocess.DEVNULL)
    for name, samples in (("speech", speech(folder, seconds)), ("plucks", plucks(seconds)),
                          ("drums", drums(seconds))):
        peak = np.abs(signal.resample_poly(samples, 4, 1)).max()
        write_wave(paths[name], samples * (PEAK / peak))
    write_wave(paths["all"], np.concatenate([read_wave(paths[name]) for name in SOUNDS]))
    return paths
