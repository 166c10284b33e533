"""Takes hold of the window of tesserae-live by the X server's own pointer and keys, gesture by gesture, while a
JACK server without a sound card runs, and reads from the states that the program saves what came of each: the
right parameter, by the right amount, and nothing else. A layout that has moved fails here: see facerig.py."""

import json
import os
import sys

from checks import Checks
from facerig import PLACES, Live, near
from jackrig import SERVER, Player, Server

CURVE = (40, 464, 704, 128)  # left, top, width and height of what a function is drawn on
# Rows of a control's menu, counted from its heading.
DEFAULT, LEARN = 2, 4
PAN = "MoteWeaver_RandomPan"


class Steps:
    """Gestures on a window, each of which is looked at and taken back."""

    def __init__(self, check, live):
        self.check, self.live, self.taken = check, live, 0
        self.start = live.state()["parameters"]

    def moved(self, state):
        """What is not where it was at the start."""
        now = state["parameters"]
        return {name: now.get(name) for name in {*now, *self.start} if now.get(name) != self.start.get(name)}

    def back(self, what="it"):
        """Undo brings back what was there at the start, by the button and by Ctrl-Z in turn."""
        self.taken += 1
        self.live.play(*(("Nowhere", "key ctrl+z") if self.taken % 2 else ("Undo", "click 1")))
        moved = self.moved(self.live.until(lambda state: not self.moved(state)))
        self.check(not moved, f"Undo takes {what} back{moved or ''}.")

    def makes(self, sentence, changes):
        """What the program itself reads from the sound with other texts is there, and nothing else."""
        wanted = self.live.positions(changes)
        now = self.live.until(lambda state: near(state["parameters"], wanted))
        self.check(near(now["parameters"], wanted), f"{sentence}: {self.moved(now)}.")
        self.back()

    def leads_to(self, sentence, holds):
        now = self.live.until(holds)
        self.check(holds(now), f"{sentence}: {self.moved(now)}.")


def gestures(steps):
    live = steps.live
    live.drag("Random Pan", 0, 40)
    steps.makes("A drag of 40 pixels down takes a fifth off", {PAN: "50 %"})
    live.play("keydown shift")
    live.drag("Random Pan", 0, -40)
    live.play("keyup shift")
    steps.makes("With Shift it moves a tenth of that", {PAN: "72 %"})
    live.play("Random Pan", "click 4")
    steps.makes("A notch of the wheel is 2 %", {PAN: "72 %"})
    live.play("Random Pan", "click --repeat 2 --delay 40 1")
    steps.makes("A double click brings the default", {PAN: None})
    live.choose("Random Pan", DEFAULT)
    steps.makes("So does the menu behind the right button", {PAN: None})
    live.play("Random Pan", "click 1", "key Up")
    steps.makes("An arrow key is 2 %", {PAN: "72 %"})
    live.play("Grain Size", "click 1", "key Return", "type '120 ms'", "key Return")
    steps.makes('"120 ms" is typed', {"MoteWeaver_GrainSizeAbsolute": "120 ms"})
    live.click("Beat")
    steps.makes("A segment is clicked", {"MoteWeaver_GranularMode": "Beat"})
    live.click("Freeze")
    steps.makes("A switch is clicked", {"MoteWeaver_BufferFreeze": "On"})


def curve_and_route(steps):
    live, (left, top, width, height) = steps.live, CURVE

    def has_point(state, x, y):
        now = state["parameters"]
        places = ((now.get(f"Function1_PointX{i}", 0), now.get(f"Function1_PointY{i}", 0)) for i in range(1, 65))
        return all(name.startswith("Function1_") for name in steps.moved(state)) and any(
            abs(px - x) < 0.5 / width + 1e-3 and abs(py - y) < 0.5 / height + 1e-3 for px, py in places)

    live.click("Function 1")
    point = (round(left + 0.25 * width), round(top + 0.2 * height))
    live.play(point, "click --repeat 2 --delay 40 1")
    steps.leads_to("A point is drawn", lambda state: has_point(state, 0.25, 0.8))
    live.drag(point, 0, 0.4 * height)
    steps.leads_to("It is pulled down", lambda state: has_point(state, 0.25, 0.4))
    live.click("Undo")
    steps.leads_to("Undo takes the pull back", lambda state: has_point(state, 0.25, 0.8))
    steps.back("the point")
    live.click("Grains")
    (x, y), (to_x, to_y) = PLACES["Function 2"], PLACES["Density"]
    live.drag("Function 2", to_x - x, to_y - y)
    quarter = {"Modulations_Dst12_Src3_Amount": 0.625}  # of -1..1
    steps.leads_to("A source that is dropped on a knob moves it by 25 %",
                   lambda state: near(steps.moved(state), quarter))
    steps.back("the route")


def lessons(check, live, player):
    live.choose("Dry / Wet", LEARN)
    player.tell(0xB0, 74, 3)
    live.until(lambda state: state["midi"])
    player.tell(0xB0, 74, 127)
    now = live.until(lambda state: state["midi"] and state["parameters"]["Dry / Wet"] == 1.0)
    check(len(now["midi"]) == 1 and now["parameters"]["Dry / Wet"] == 1.0,
          f"MIDI is learnt and moves the knob: {now['midi']}.")
    live.click("Undo")
    now = live.until(lambda state: not state["midi"])
    check(not now["midi"], "Undo takes back what was learnt.")


def presets(check, live, scratch):
    before = live.state()["parameters"]
    live.click("Presets")
    live.play("Save as", "click 1", "type 'By hand'", "key Tab", "type 'dark, of mine'", "key Return")
    now = live.until(lambda state: state["preset"] == "By hand")
    file, tags = f"{scratch}/data/tesserae/presets/By hand.json", None
    if os.path.exists(file):
        with open(file, encoding="utf-8") as kept:
            tags = json.load(kept)["tags"]
    check(now["preset"] == "By hand" and tags == ["dark", "of mine"], f"A preset is saved, with its tags: {tags}.")
    live.play("Search", "click 1", "type 'bar canon'", "First preset", "click 1")
    now = live.until(lambda state: state["preset"] == "Bar Canon")
    check(now["preset"] == "Bar Canon" and not near(now["parameters"], before), "A preset is found and loaded.")
    live.click("Undo")
    now = live.until(lambda state: state["preset"] == "By hand")
    check(now["preset"] == "By hand" and near(now["parameters"], before), "Undo brings back the one before.")
    live.play("key Escape")


def sizes(steps):
    live = steps.live
    for scale in (1.5, 2.0, 1.0):
        width, height = round(1280 * scale), round(800 * scale)
        live.play(f"windowsize {live.window} {width} {height}")
        now = live.until(lambda state: state["window"] == {"width": width, "height": height})
        steps.check(now["window"]["width"] == width, f"The window is drawn out to {width} x {height}.")
        live.scale = scale
        live.drag("Random Pan", 0, 40)
        steps.makes(f"The same drag, {40 * scale:.0f} pixels now, moves as much", {PAN: "50 %"})


def two_windows(check, live, other):
    live.play(f"windowmove {other.window} 1300 0")
    before, wanted = live.state()["parameters"], other.positions({PAN: "50 %"})
    other.drag("Random Pan", 0, 40)
    now = other.until(lambda state: near(state["parameters"], wanted))["parameters"]
    check(near(now, wanted) and near(live.state()["parameters"], before),
          "A drag in the window of another instance moves that one alone.")


def main(program, scratch):
    check = Checks()
    env = dict(os.environ, HOME=scratch, XDG_DATA_HOME=f"{scratch}/data", JACK_DEFAULT_SERVER=SERVER,
               JACK_NO_AUDIO_RESERVATION="1")
    server = Server(env)
    live, other = Live(program, scratch, env), None
    try:
        if check(live.window is not None, "Its window opens."):
            steps, player = Steps(check, live), Player()
            gestures(steps)
            curve_and_route(steps)
            sizes(steps)
            lessons(check, live, player)
            presets(check, live, scratch)
            player.end()
            other = Live(program, scratch, env, "other")
            two_windows(check, live, other)
        check(all(one.end() == 0 for one in (live, other) if one), "Ctrl-C ends it.")
    finally:
        for process in (live.process, other and other.process, server.process):
            if process and process.poll() is None:
                process.terminate()
                process.wait(10)
    check.end()


main(*sys.argv[1:])
