"""Plays on the window of tesserae-live at random, by the X server's own pointer and keys, while a JACK
server without a sound card runs: it has to stay alive, and its memory where it is."""

import os
import random
import signal
import subprocess
import sys
import time

import jack

from checks import Checks, run
from jackrig import SERVER, Server

WIDTH, HEIGHT = 1280, 800
GROWTH = 32  # megabytes: menus, presets and undo steps that have not been seen before


def gesture(chance):
    """One gesture, in the words of xdotool."""
    x, y = chance.randrange(4, WIDTH - 4), chance.randrange(4, HEIGHT - 4)
    start = f"mousemove {x} {y}\n"
    kind = chance.randrange(10)
    if kind < 4:
        steps = "".join(
            f"mousemove_relative -- {chance.randrange(-30, 31)} {chance.randrange(-30, 31)}\nsleep 0.01\n"
            for _ in range(chance.randrange(1, 6)))
        return start + "mousedown 1\n" + steps + "mouseup 1\n"
    if kind < 6:
        return start + f"click --repeat {chance.randrange(1, 4)} {chance.choice((4, 5))}\n"
    if kind == 6:
        return start + "click 3\nsleep 0.02\n" + chance.choice(("key Escape\n", "click 1\n"))
    if kind == 7:
        return start + "click --repeat 2 --delay 30 1\n"
    if kind == 8:
        return "".join(f"key {chance.choice(('Tab', 'Up', 'Down', 'Left', 'Escape', 'Delete'))}\n"
                       for _ in range(3))
    return start + f"click 1\nkey {chance.randrange(10)}\nkey Return\nkey Escape\n"


def megabytes(process):
    with open(f"/proc/{process.pid}/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGESIZE") / 1048576.0


def play(check, live, env, seconds, seed):
    found = run(["xdotool", "search", "--sync", "--onlyvisible", "--name", "Tesserae"], env, 30)
    if not check(found.returncode == 0, "Its window opens."):
        return
    chance = random.Random(seed)
    began, count, before, most = time.monotonic(), 0, None, 0.0
    while time.monotonic() - began < seconds and live.poll() is None:
        run(["xdotool", "-"], env, input="".join(gesture(chance) for _ in range(20)))
        count += 20
        if live.poll() is None:
            most = max(most, megabytes(live))
        if before is None and time.monotonic() - began > 0.4 * seconds:
            before = most
    lives = live.poll() is None
    check(lives, f"It lives after {count} gestures in {seconds:.0f} s (seed {seed}).")
    grown = most - (before or most)
    check(grown < GROWTH, f"Its memory is {most:.0f} MB at most, {grown:.1f} MB above the first part's.")
    if lives:
        live.send_signal(signal.SIGINT)
        check(live.wait(10) == 0, "Ctrl-C ends it.")


def main(program, scratch, seconds, seed):
    check = Checks()
    env = dict(os.environ, HOME=scratch, XDG_DATA_HOME=f"{scratch}/data", JACK_DEFAULT_SERVER=SERVER,
               JACK_NO_AUDIO_RESERVATION="1")
    server = Server(env)
    watcher = jack.Client("watcher", servername=SERVER, no_start_server=True)
    late = []
    watcher.set_xrun_callback(late.append)
    watcher.activate()
    live = subprocess.Popen([program, "--name", "live", "--preset", "dense-cloud", "--run", "--quiet"], env=env)
    try:
        play(check, live, env, float(seconds), int(seed))
        watcher.deactivate()
        print(f"JACK was late {len(late)} times, with a load of {os.getloadavg()[0]:.1f} on the machine.")
    finally:
        for process in (live, server.process):
            if process.poll() is None:
                process.terminate()
                process.wait(10)
    check.end()


main(*sys.argv[1:])
