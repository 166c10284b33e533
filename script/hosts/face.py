"""Plays on the window of tesserae-live at random, by the X server's own pointer and keys, while a JACK
server without a sound card runs: it has to stay alive, its memory where it is, and no buffer may be late of its
own making.

JACK counts a buffer as late whoever was to blame, and on a machine that is shared it mostly is the machine, which gave
the audio thread no processor in time. So the program's process callback is measured from outside of the program, by a
library in front of JACK's (tests/plugins/live/ProcessTrap.cpp): the processor time that the thread has spent in it,
which stands still while others have the processor. A buffer is late of the program's own making where the callback
worked for longer than the buffer lasts, or where it gave the processor away by itself, as for a lock, and came back
too late. What it allocates or locks is counted too, and has to be nothing."""

import os
import random
import re
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


def listen(check, log):
    """What the library in front of the program has measured."""
    found = re.search(r"(\d+) buffers, (\d+) allocations or locks, (\d+) late, (\d+) of its own making; ([\d.]+) %",
                      log)
    if not check(found is not None and int(found[1]) > 0, "Its process callback was measured."):
        return
    buffers, trapped, late, own = (int(found[i]) for i in range(1, 5))
    check(own == 0, f"Of {buffers} buffers {own} were late of its own making, {late - own} because they waited for the "
          f"machine; they took {found[5]} % of their time at most.")
    check(trapped == 0, f"Its process callback allocates or locks {trapped} times.")


def main(program, trap, scratch, seconds, seed):
    check = Checks()
    env = dict(os.environ, HOME=scratch, XDG_DATA_HOME=f"{scratch}/data", JACK_DEFAULT_SERVER=SERVER,
               JACK_NO_AUDIO_RESERVATION="1")
    server = Server(env)
    watcher = jack.Client("watcher", servername=SERVER, no_start_server=True)
    late = []
    watcher.set_xrun_callback(late.append)
    watcher.activate()
    log = open(f"{scratch}/log", "w+", encoding="utf-8")
    live = subprocess.Popen([program, "--name", "live", "--preset", "dense-cloud", "--run", "--quiet"],
                            env=dict(env, LD_PRELOAD=trap), stderr=log)
    try:
        play(check, live, env, float(seconds), int(seed))
        log.seek(0)
        listen(check, log.read())
        watcher.deactivate()
        print(f"JACK was late {len(late)} times, with a load of {os.getloadavg()[0]:.1f} on the machine.")
    finally:
        for process in (live, server.process):
            if process.poll() is None:
                process.terminate()
                process.wait(10)
    check.end()


main(*sys.argv[1:])
