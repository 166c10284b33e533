"""A tesserae-live whose window is played by the X server's own pointer and keys, and what its states say."""

import json
import os
import signal
import subprocess
import time

from checks import run

# Where the controls stand in a window of 1280 x 800.
PLACES = {
    "Presets": (292, 20), "Undo": (484, 20), "Grains": (76, 396), "Effects and space": (204, 396),
    "Density": (64, 512), "Grain Size": (224, 512), "Random Pan": (972, 548), "Dry / Wet": (1144, 432),
    "Beat": (292, 460), "Freeze": (60, 260), "Function 1": (284, 740), "Function 2": (460, 740),
    "Save as": (372, 628), "Search": (520, 68), "First preset": (560, 108), "Nowhere": (700, 396),
}
SOUND = {"Dry / Wet": "50 %", "MoteWeaver_RandomPan": "70 %", "MoteWeaver_GrainSizeAbsolute": "180 ms",
         "MoteWeaver_GranularPhaseHelper_RateUnSynced": "40 Hz"}


def write_preset(file, parameters, name="Trial"):
    with open(file, "w", encoding="utf-8") as out:
        json.dump({"format": "tesserae-preset", "version": 1, "name": name, "parameters": parameters}, out)
    return file


class Live:
    """A tesserae-live with a window, and what it saves."""

    def __init__(self, program, scratch, env, name="live"):
        self.saved, self.preset = f"{scratch}/{name}.state", f"{scratch}/{name}.preset"
        self.command = [program, "--name", name, "--quiet", "--save-state"]
        self.env, self.scale = env, 1.0
        write_preset(self.preset, SOUND)
        before = self.windows()
        self.process = subprocess.Popen([*self.command, self.saved, "--preset", self.preset], env=env)
        self.window = self.wait(lambda: next(iter(self.windows() - before), None))

    def windows(self):
        found = run(["xdotool", "search", "--onlyvisible", "--name", "^Tesserae$"], self.env)
        return set(found.stdout.split())

    def wait(self, look, seconds=10):
        """What look answers, as soon as that is something."""
        end = time.monotonic() + seconds
        while time.monotonic() < end and self.process.poll() is None:
            if found := look():
                return found
            time.sleep(0.01)
        return None

    def state(self):
        before = os.stat(self.saved).st_ino
        self.process.send_signal(signal.SIGUSR1)
        self.wait(lambda: os.stat(self.saved).st_ino != before)
        with open(self.saved, encoding="utf-8") as file:
            return json.load(file)

    def until(self, holds):
        """The first state that holds answers True to, or else the last one."""
        last = [self.state()]

        def look():
            last[0] = self.state()
            return holds(last[0])

        self.wait(look)
        return last[0]

    def positions(self, changes):
        """Positions that the sound has with other texts; None takes a parameter out. The program itself reads
        them, for which it needs no server."""
        texts = {name: text for name, text in {**SOUND, **changes}.items() if text is not None}
        file = write_preset(f"{self.preset}.wanted", texts)
        nobody = dict(self.env, JACK_DEFAULT_SERVER="nobody", JACK_NO_START_SERVER="1")
        run([*self.command, file + ".state", "--headless", "--preset", file], nobody)
        with open(file + ".state", encoding="utf-8") as state:
            return json.load(state)["parameters"]

    def play(self, *words):
        """Lines of xdotool, with a place's name or (x, y) where it moves the pointer."""
        lines = []
        for word in words:
            place = PLACES.get(word, word)
            if isinstance(place, tuple):
                x, y = (round(self.scale * length) for length in place)
                place = f"mousemove --window {self.window} {x} {y}"
            lines.append(place)
        told = run(["xdotool", "-"], self.env, input="\n".join(lines) + "\n")
        if told.returncode != 0 or told.stderr:
            raise RuntimeError(told.stderr)

    def click(self, place):
        self.play(place, "click 1")

    def drag(self, place, dx, dy):
        x, y = PLACES.get(place, place)
        self.play((x, y), "mousedown 1", (x + dx / 2, y + dy / 2), (x + dx, y + dy), "mouseup 1")

    def choose(self, place, row):
        """In the menu behind the right button, whose first row is but a heading."""
        self.play(place, "click 3", *["key Down"] * row, "key Return")

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGINT)
        return self.process.wait(10)


def near(one, other, by=1e-4):
    return one.keys() == other.keys() and all(
        None not in (one[name], other[name]) and abs(one[name] - other[name]) <= by
        for name in one)
