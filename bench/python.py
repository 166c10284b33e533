#!/usr/bin/python3
"""Time that the Python module takes beside the engine, for buffers of ten seconds.

Run with PYTHONPATH=build/python. Prints shares of all time spent in process and in render.
"""

import time

import numpy as np
import tesserae

RATE = 48000
SOUND = (np.random.default_rng(1).standard_normal((2, 10 * RATE)) * 0.2).astype(np.float32)


def share_of_stream(preset):
    stream = tesserae.Processor(RATE, seed=1, preset=preset)
    stream.process(SOUND)
    before = stream.engine_seconds
    start = time.perf_counter()
    for _ in range(5):
        stream.process(SOUND)
    return 1 - (stream.engine_seconds - before) / (time.perf_counter() - start)


def share_of_render(preset):
    # A render counts the processor's time, a stream the clock's.
    start, engine = time.thread_time(), 0.0
    for seed in range(20):
        engine += tesserae.render(SOUND, RATE, preset, seed, tail=0).engine_seconds
    return 1 - engine / (time.thread_time() - start)


for name in ("init", "dense-cloud", "tape-garden"):
    print(
        f"{name}: outside the engine {share_of_stream(name):.2%} of process, "
        f"{share_of_render(name):.2%} of render"
    )
