"""What the trials in hosts share: a sentence for each thing shown, processes that are cleaned up, sound."""

import struct
import subprocess
import sys

import numpy as np


class Checks:
    """Prints PASS or FAIL for each thing shown; failed counts the latter."""

    def __init__(self):
        self.failed = 0

    def __call__(self, holds, sentence):
        print(("PASS: " if holds else "FAIL: ") + sentence, flush=True)
        self.failed += 0 if holds else 1
        return holds

    def end(self):
        sys.exit(1 if self.failed else 0)


def run(command, env=None, seconds=60, **more):
    """Runs a program to its end and answers what it was; a program that hangs is killed and fails."""
    try:
        return subprocess.run(command, env=env, timeout=seconds, capture_output=True, text=True,
                              errors="replace", **more)
    except subprocess.TimeoutExpired as late:
        text = (late.stdout or b"").decode(errors="replace")
        return subprocess.CompletedProcess(command, 124, text, f"It hung for {seconds} s.")


def read_wav(path):
    """Frames by channels of a WAV file of 32-bit floats."""
    data = open(path, "rb").read()
    channels, at = 0, 12
    while at + 8 <= len(data):
        name, size = data[at:at + 4], struct.unpack("<I", data[at + 4:at + 8])[0]
        if name == b"fmt ":
            channels = struct.unpack("<H", data[at + 10:at + 12])[0]
        if name == b"data":
            return np.frombuffer(data[at + 8:at + 8 + size], "<f4").reshape(-1, channels)
        at += 8 + size + size % 2
    raise ValueError(f"{path} holds no sound.")
