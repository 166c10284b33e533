"""What is measured of one render or of a pair."""
import numpy as np
from scipy import signal

from sounds import RATE

FLOOR_DB = 80


def true_peak_db(samples):
    """Peak at four times the rate, in dB of full scale. Only blocks within 4 dB of the highest
    sample are looked at: between samples the rest would have to rise by more than that."""
    block, margin = 4096, 64
    highest, peak = np.abs(samples).max(), 1e-9
    for start in range(0, len(samples), block):
        if np.abs(samples[start : start + block]).max() > 0.63 * highest:
            piece = samples[max(0, start - margin) : start + block + margin]
            peak = max(peak, np.abs(signal.resample_poly(piece, 4, 1, axis=0)).max())
    return 20 * np.log10(peak)


def tail_seconds(samples, start):
    """How long after `start` seconds the last sample above -90 dB comes."""
    loud = np.flatnonzero(np.abs(samples).max(1) > 10 ** (-90 / 20))
    return max(0.0, loud[-1] / RATE - start) if len(loud) else 0.0


def powers(samples, frame, hop):
    """Power of both channels together over frequency and time."""
    spectra = signal.stft(samples.T, RATE, nperseg=frame, noverlap=frame - hop, boundary=None,
                          padded=False)[2]
    return (np.abs(spectra) ** 2).sum(0)


def mel_bank(frame, bands):
    """Triangles, equally wide on the mel scale between 50 Hz and 16 kHz."""
    mel = np.linspace(*(2595 * np.log10(1 + np.array([50, 16000]) / 700)), bands + 2)
    edges = 700 * (10 ** (mel / 2595) - 1)
    bank = np.array([np.interp(np.fft.rfftfreq(frame, 1 / RATE), edges[b : b + 3], [0, 1, 0])
                     for b in range(bands)])
    return bank / bank.sum(1, keepdims=True)


def mel_spectrum(samples):
    """Forty bands every 21 ms, in dB and not below 80 dB under the loudest."""
    power = mel_bank(2048, 40) @ powers(samples, 2048, 1024)
    level = 10 * np.log10(power + 1e-20)
    return np.maximum(level, level.max() - FLOOR_DB).astype(np.float32)


def time_spectrum(samples):
    """How fast and how much the level moves: spectra of the envelopes of eight bands, each at its
    own level, in twenty steps from 0.4 to 40 Hz, in dB. Delays and colour do not show."""
    envelopes = np.sqrt(mel_bank(1024, 8) @ powers(samples, 1024, RATE // 100))
    envelopes /= np.sqrt((envelopes**2).mean(1, keepdims=True)) + 1e-6
    count = envelopes.shape[1]
    moving = (envelopes - envelopes.mean(1, keepdims=True)) * np.hanning(count)
    power = np.abs(np.fft.rfft(moving)) ** 2 / count
    speeds, edges = np.fft.rfftfreq(count, 0.01), np.geomspace(0.4, 40, 21)
    steps = []
    for low, high in zip(edges, edges[1:]):
        inside = (speeds >= low) & (speeds < high)
        inside[np.argmin(np.abs(speeds - np.sqrt(low * high)))] = True
        steps.append(power[:, inside].mean(1))
    return 10 * np.log10(np.stack(steps, 1) + 1e-4)


def mel_distance(a, b):
    """Mean difference of two mel spectra that are matched in level, in dB."""
    difference = a - b
    return float(np.abs(difference - difference.mean()).mean())


def time_distance(a, b):
    """Mean difference of two time spectra, in dB. Another seed gives up to 2.7."""
    return float(np.abs(a - b).mean())
