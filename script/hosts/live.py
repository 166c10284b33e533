"""Plays tesserae-live between two JACK clients on a server of its own; see script/try-live."""

import glob
import os
import re
import signal
import subprocess
import sys
import time

import numpy as np

from checks import Checks, run
from jackrig import PERIOD, SERVER, Player, Server


class Live:
    """The program, and what it says."""

    def __init__(self, program, arguments, env, log):
        self.log = log
        self.process = subprocess.Popen([program, "--name", "live", *arguments], env=env,
                                        stderr=open(log, "w"), stdout=subprocess.DEVNULL)

    def says(self, sentence, times=1, seconds=15):
        end = time.monotonic() + seconds
        while time.monotonic() < end and self.process.poll() is None:
            if open(self.log).read().count(sentence) >= times:
                return True
            time.sleep(0.05)
        return open(self.log).read().count(sentence) >= times


def play(check, live, env):
    player = Player()
    level = float(np.sqrt(np.mean(player.record()[1] ** 2)))
    check(np.isfinite(level) and level > 0.02, f"Noise goes through it (level {level:.3f}).")
    ports = run(["jack_lsp", "-s", SERVER, "-l", "live:out_l"], env).stdout
    told = re.search(r"capture latency = \[ (\d+)", ports)
    check(told is not None and int(told[1]) >= 192,
          f"JACK has its latency: {told and told[1]} frames at its output, 192 of them its own.")
    for value in (20, 60, 100):
        player.tell(0xB0, 75, value)
    check(live.says("Dry / Wet follows Controller 75"), "It learns Dry / Wet from a MIDI controller.")
    player.tell(0xB0, 75, 0)
    time.sleep(0.5)
    dry, delay, _ = player.likeness()
    player.tell(0xB0, 75, 127)
    time.sleep(0.5)
    wet, _, heard = player.likeness()
    check(dry > 0.9 and wet < 0.5 and np.isfinite(heard).all(),
          f"The controller moves it: likeness with the input {dry:.3f} at 0, {wet:.3f} at 127.")
    check((delay - 192) % PERIOD == 0, f"The dry sound is {delay} frames late: its 192 and whole periods.")
    for i in range(100):
        player.tell(0xC0, i % 2)
        time.sleep(0.02)
    player.tell(0xC0, 1)
    check(live.says('Preset "Bar Canon"'), "Program change 1 loads the second preset of the set list.")
    player.tell(0xC0, 0)
    check(live.says('Preset "Shimmer"'), "Program change 0 loads the first.")
    player.end()


def main(build, scratch):
    check = Checks()
    program = f"{build}/plugins/live/tesserae-live"
    env = dict(os.environ, HOME=scratch, XDG_DATA_HOME=f"{scratch}/data", JACK_DEFAULT_SERVER=SERVER,
               JACK_NO_AUDIO_RESERVATION="1")
    alone = run([program], env)
    check(alone.returncode == 6 and alone.stderr.count("\n") == 1 and "Start one" in alone.stderr,
          f"Without a server it says so and ends with 6: {alone.stderr.strip()}")
    server = Server(env)
    trapped = dict(env, LD_PRELOAD=glob.glob(f"{build}/tests/plugins/*process_trap.so")[0])
    live = Live(program, ["--connect", "--seed", "1", "--set-list", "Shimmer", "bar-canon",
                          "--learn", "Dry / Wet"], trapped, f"{scratch}/log")
    try:
        if check(live.says("plays at 48000 Hz"), "It starts on a server."):
            play(check, live, env)
        server.end(signal.SIGKILL)
        check(live.says("has gone"), "It sees the server die.")
        server = Server(env)
        if check(live.says("plays at 48000 Hz", 2), "It comes back with a new server."):
            player = Player()
            level = float(np.sqrt(np.mean(player.record()[1] ** 2)))
            check(level > 0.02, f"Noise goes through it again (level {level:.3f}).")
            live.process.send_signal(signal.SIGINT)
            code = live.process.wait(10)
            gone = not player.client.get_ports("live:.*")
            check(code == 0 and gone, f"Ctrl-C ends it with {code}, and its ports are gone.")
            player.end()
            caught = re.findall(r"(\d+) buffers, (\d+) allocations", open(live.log).read())
            check(len(caught) == 1 and int(caught[0][0]) > 100 and caught[0][1] == "0",
                  f"Its process callback, presets coming beside it: {caught} buffers, allocations and locks.")
        map_file = f"{scratch}/data/tesserae/midi-map.json"
        check(os.path.exists(map_file) and "Dry / Wet" in open(map_file).read(), "What it learnt is kept in a file.")
    finally:
        for process in (live.process, server.process):
            if process.poll() is None:
                process.terminate()
                process.wait(10)
    check.end()


main(*sys.argv[1:])
