"""Tries the LV2 as hosts without a window do: its turtle, its presets, jalv on a JACK server of its own."""

import os
import re
import subprocess
import sys
import time

import numpy as np

from checks import Checks, run
from jackrig import SERVER, Player, Server

URI = "urn:quorvan:tesserae"
# What the framework writes that the schemas of LV2 do not know: two properties of another project's,
# and an extension of a third one's.
KNOWN = ("moddevices.com/ns/mod#label", "moddevices.com/ns/mod#brand", "kxstudio.sf.net/ns/lv2ext/programs#Interface",
         "kxstudio.sf.net/ns/lv2ext/programs#UIInterface")


def try_turtle(check, bundle, env):
    told = run(["lv2_validate"] + [f"{bundle}/{name}.ttl" for name in ("manifest", "Tesserae", "presets")], env)
    complaints = re.split(r"\n(?=error|warning)", told.stdout + told.stderr)
    complaints = [text for text in complaints if text.startswith(("error", "warning"))]
    new = [text for text in complaints if not any(known in text for known in KNOWN)]
    check("checked" in told.stdout + told.stderr and not new,
          f"lv2_validate has nothing new to say ({len(complaints)} complaints known) {' '.join(new)}")
    info = run(["lv2info", URI], env).stdout
    presets = re.findall(r"^\s+(\S.*)$", info.split("Presets:")[-1].split("Port 0")[0], re.M)
    check(len(presets) >= 48, f"lilv lists {len(presets)} presets, as {presets[:3]}.")
    check("lv2core#latency" in info and "lv2core#enabled" in info, "Latency and bypass are designated.")


class Jalv:
    """The plug-in in jalv, which takes commands on its standard input."""

    def __init__(self, env, *arguments):
        self.process = subprocess.Popen(["jalv", "-x", "-n", "live", *arguments], env=env, text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        end = time.monotonic() + 15
        while time.monotonic() < end and "live:" not in run(["jack_lsp", "-s", SERVER], env).stdout:
            time.sleep(0.1)

    def ask(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        time.sleep(0.5)

    def end(self):
        self.process.stdin.close()
        self.process.terminate()
        self.process.wait(10)


def write_state(bundle, folder, sound):
    """A state as LV2 hosts save it: the first factory preset's text with another setting."""
    text = re.search(r'"""(.*?)"""', open(f"{bundle}/presets.ttl").read(), re.S)[1]
    os.makedirs(folder)
    with open(f"{folder}/state.ttl", "w") as file:
        file.write("@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
                   "@prefix pset: <http://lv2plug.in/ns/ext/presets#> .\n"
                   "@prefix state: <http://lv2plug.in/ns/ext/state#> .\n"
                   f"<> a pset:Preset ; lv2:appliesTo <{URI}> ; state:state [ <urn:distrho:instrument> "
                   f'"""{text.replace(*sound)}""" ] .\n')


def hear(player):
    likeness, _, heard = player.likeness()
    return likeness, float(np.sqrt(np.mean(heard**2))), bool(np.isfinite(heard).all())


def try_jalv(check, bundle, env, scratch):
    ports = dict(inputs=("live:lv2_in_l", "live:lv2_in_r"), output="live:lv2_out_l", midi="live:lv2_events_in")
    first = Jalv(env, URI)
    player = Player(**ports)
    _, level, finite = hear(player)
    check(finite and level > 0.02, f"Noise goes through jalv (level {level:.3f}).")
    first.ask("set dry_wet 0")
    time.sleep(0.5)
    dry, _, _ = hear(player)
    first.ask("set dry_wet 100")
    wet, _, _ = hear(player)
    check(dry > 0.9 and wet < 0.5, f"A control moves the sound: likeness with the input {dry:.3f} dry, {wet:.3f} wet.")
    player.end()
    first.end()
    write_state(bundle, f"{scratch}/state", ('"Dry / Wet": 0.5', '"Dry / Wet": 0.0'))
    second = Jalv(env, "-l", f"{scratch}/state", URI)
    player = Player(**ports)
    again, level, finite = hear(player)
    check(finite and again > 0.9, f"jalv loads a state, and it is heard: dry, its likeness is {again:.3f}.")
    player.end()
    second.end()


def main(build, scratch):
    check = Checks()
    env = dict(os.environ, HOME=scratch, LV2_PATH=f"{scratch}/lv2:/usr/lib/lv2", JACK_DEFAULT_SERVER=SERVER,
               JACK_NO_AUDIO_RESERVATION="1")
    os.makedirs(f"{scratch}/lv2")
    os.symlink(f"{build}/plugins/dpf/Tesserae.lv2", f"{scratch}/lv2/Tesserae.lv2")
    try_turtle(check, f"{build}/plugins/dpf/Tesserae.lv2", env)
    server = Server(env)
    try:
        try_jalv(check, f"{build}/plugins/dpf/Tesserae.lv2", env, scratch)
    finally:
        server.end()
    check.end()


main(*sys.argv[1:])
