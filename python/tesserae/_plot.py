"""The picture of a render, with matplotlib."""

import numpy as np


def _draw_grains(axes, grains):
    """Each grain as a line over the tape: left ones orange, right ones blue."""
    for side, colour in ((False, "tab:orange"), (True, "tab:blue")):
        chosen = grains[grains["right"] == side]
        way = np.where(chosen["reversed"], -1, 1) * chosen["source_duration"]
        times = np.stack([chosen["time"], chosen["time"] + chosen["duration"]])
        places = np.stack([chosen["tape_position"], chosen["tape_position"] + way])
        axes.plot(times, places, color=colour, alpha=0.7, linewidth=1.0)
    axes.set_ylabel("tape (s)")


def _draw_modulation(axes, modulation):
    for name in modulation.dtype.names[1:]:
        if np.ptp(modulation[name]) > 0:
            axes.plot(modulation["time"], modulation[name], label=name, linewidth=0.8)
    if axes.lines:
        axes.legend(loc="upper right", fontsize="small")
    axes.set_ylabel("modulation")


def plot(result, axes=None):
    import matplotlib.pyplot as pyplot

    if axes is None:
        count = 2 if result.modulation is None else 3
        _, axes = pyplot.subplots(count, sharex=True, figsize=(10, 2.5 * count))
    times = np.arange(result.audio.shape[1]) / result.sample_rate
    axes[0].plot(times, result.audio.T, linewidth=0.4)
    axes[0].set_ylabel("level")
    _draw_grains(axes[1], result.grains)
    if result.modulation is not None:
        _draw_modulation(axes[2], result.modulation)
    axes[-1].set_xlabel("time (s)")
    return axes[0].figure
