"""Plays the LV2 and the VST3 in Ardour 7 and compares its exports with the renderer; see script/try-ardour."""

import base64
import glob
import json
import os
import re
import struct
import sys

import numpy as np

from checks import Checks, read_wav, run

RATE, BUFFER, FRAMES, SEED, PRESET = 48000, 1200, 240000, 7, "shimmer"
VST3_ID = b"2046504473616C637273745100000000"
HERE = os.path.dirname(os.path.abspath(__file__))
# As in ardour-make.lua: name, ticks of 12.5 frames, position for the renderer.
STEPS = [("Dry / Wet", 0, "50 %"), ("Pitch", 0, "0 st"), ("Freeze", 0, "Off"),
         ("Dry / Wet", 2302, "75 %"), ("Dry / Wet", 4738, "25 %"), ("Dry / Wet", 9598, "100 %"),
         ("Pitch", 2690, "9 st"), ("Pitch", 6824, "-18 st"), ("Pitch", 11134, "0 st"),
         ("Freeze", 5762, "On"), ("Freeze", 8450, "Off")]


def write_presets(bundle, home):
    """The factory preset with a fixed seed, for Ardour as a preset of the user's, and as a VST3's state."""
    name = PRESET.capitalize()
    manifest = open(f"{bundle}/manifest.ttl").read()
    presets = open(f"{bundle}/presets.ttl").read()
    uri = re.search(r"<([^>]+)>\n    a pset:Preset ;\n.*\n    rdfs:label \"%s\"" % name, manifest)[1]
    body = presets.split(f"<{uri}>\n")[1].split("\n<urn:")[0]
    body = body.replace(' "modified": false,', f' "modified": false,\n "seed": {SEED},')
    folder = f"{home}/.lv2/try.lv2"
    os.makedirs(folder)
    head = presets.split("\n<")[0]
    labelled = ("<urn:quorvan:tesserae#try> a pset:Preset ; rdfs:label \"Try\" ;\n"
                "    lv2:appliesTo <urn:quorvan:tesserae> ;\n")
    with open(f"{folder}/manifest.ttl", "w") as file:
        file.write(head + "\n" + labelled + "    rdfs:seeAlso <try.ttl> .\n")
    with open(f"{folder}/try.ttl", "w") as file:
        file.write(head + "\n" + labelled + body)
    controls = re.findall(r'lv2:symbol "(\w+)" ;\s+pset:value ([^ ;]+) ;', body)
    texts = ["__dpf_program__", "0", "__dpf_state_begin__", "instrument", body.split('"""')[1],
             "__dpf_state_end__", "__dpf_parameters_begin__"]
    texts += [text for pair in controls if pair[0] != "lv2_enabled" for text in pair]
    texts.append("__dpf_parameters_end__")
    state = b"".join(text.encode() + b"\0" for text in texts) + b"\xfe\0"
    size = len(state)
    return (b"VST3" + struct.pack("<i", 1) + VST3_ID + struct.pack("<q", 48 + size) + state +
            b"List" + struct.pack("<i", 1) + b"Comp" + struct.pack("<qq", 48, size))


def write_export_preset(home):
    """Ardour's export with 32-bit floats, which it brings the format for but no preset."""
    source = open("/usr/share/ardour7/export/CD only.preset").read()
    source = re.sub(r'id="[0-9a-f-]{36}" name="[^"]*"', 'id="7d4a4d0e-6a2f-4a5c-9c0e-2f6d0b1d7a11" name="Try"', source)
    floats = open("/usr/share/ardour7/export/BWAV 32float Export.format").read()
    source = re.sub(r'ExportFormat id="[^"]*"', 'ExportFormat id="%s"' % re.search(r'id="([0-9a-f-]{36})"', floats)[1], source)
    os.makedirs(f"{home}/.config/ardour7/export")
    with open(f"{home}/.config/ardour7/export/Try.preset", "w") as file:
        file.write(source)


def put_state(session, state):
    """Ardour 7.3 hangs where a preset of a VST3 is loaded, so its state goes into the saved session."""
    text = open(session).read()
    text, found = re.subn(r"(<chunk>)[^<]*(</chunk>)",
                          lambda m: m[1] + base64.b64encode(state).decode() + m[2], text)
    with open(session, "w") as file:
        file.write(text)
    return found == 1


def recorded(folder, start):
    """What Ardour has recorded, at its place in the song."""
    sound = np.zeros((FRAMES, 2), "<f4")
    for channel, side in enumerate("LR"):
        take = read_wav(glob.glob(f"{folder}/interchange/*/audiofiles/*{side}.wav")[0])[:, 0]
        take = take[:FRAMES - start]
        sound[start:start + len(take), channel] = take
    return sound


def rendered(tesserae, scratch, sound, ahead, grid, latency):
    """The renderer on the same sound, begun so many frames of silence ahead of the song's start.

    Ardour runs a plug-in early by its latency: place and controls belong to what comes out. It tells a
    VST3 the frame of each step (a grid of 1), an LV2 where a control stands at the start of a buffer."""
    none = np.zeros((ahead + latency, 2), "<f4")
    early = np.concatenate([none[:ahead], sound[latency:], none[:latency]])
    early.tofile(f"{scratch}/in.raw")
    with open(f"{scratch}/steps.csv", "w") as file:
        file.write("seconds,parameter,position\n")
        for name, tick, position in STEPS:
            frame = -(-(tick * 25 // 2) // grid) * grid + (ahead if tick > 0 else 0)
            file.write(f"{frame / RATE!r},{name},{position}\n")
    made = run([tesserae, "render", f"{scratch}/in.raw", "-o", f"{scratch}/out.raw", "--force",
                "--format", "raw", "--raw-rate", str(RATE), "--preset", PRESET, "--seed", str(SEED),
                "--tempo", "120", "--start-beat", repr(-ahead * 2 / RATE), "--tail", "0",
                "--automation", f"{scratch}/steps.csv"])
    assert made.returncode == 0, made.stderr
    made = np.fromfile(f"{scratch}/out.raw", "<f4").reshape(-1, 2)[ahead:]
    return np.concatenate([none[:latency], made[:FRAMES - latency]])


def export(folder, out, env):
    """Ardour 7.3 frees its export graph wrongly now and then, and dies of it; then it is asked again."""
    for _ in range(5):
        told = run(["ardour7-lua", f"{HERE}/ardour-export.lua", folder, str(BUFFER), str(FRAMES), out], env)
        if "EXPORTED" in told.stdout:
            break
        print(f"Ardour died in its export: {(told.stderr or told.stdout).strip().splitlines()[-1:]}")
    return told


def try_format(check, kind, build, scratch, env, state):
    folder, tesserae = f"{scratch}/{kind}", f"{build}/tools/tesserae"
    made = run(["ardour7-lua", f"{HERE}/ardour-make.lua", folder, kind, str(BUFFER)], env)
    region = re.search(r"REGION\s+(\d+)\s+(\d+)", made.stdout)
    if not check(made.returncode == 0 and region is not None,
                 f"Ardour records onto a track with the {kind}, automates three of its controls, saves and closes."):
        return print(made.stdout[-2000:], made.stderr[-2000:])
    if kind == "VST3":
        check(put_state(f"{folder}/try.ardour", state), "The session holds the state of the VST3 as one text.")
    exports = []
    for number in "12":
        out = f"{scratch}/{kind}{number}"
        os.mkdir(out)
        told = export(folder, out, env)
        if not check("EXPORTED" in told.stdout, f"Ardour opens the session and exports, time {number}."):
            return print(told.stdout[-2000:], told.stderr[-2000:])
        exports.append(read_wav(f"{out}/out.wav"))
    own = json.loads(run([tesserae, "info", "--json"]).stdout)["processing"]["latencyFrames"]
    latency = int(re.search(r"LATENCY\s+(\d+)", told.stdout)[1])
    check(latency == own, f"Ardour takes the latency of the {kind} as {latency} frames; the library has {own}.")
    check(np.array_equal(*exports), f"Both exports of the {kind} are equal to the bit.")
    sound = recorded(folder, int(region[1]))
    ahead, grid = (BUFFER, 1) if kind == "VST3" else (0, BUFFER)
    wanted = rendered(tesserae, scratch, sound, ahead, grid, latency)
    level = float(np.sqrt(np.mean(exports[0] ** 2)))
    change = float(np.abs(exports[0] - sound).max())
    check(np.isfinite(exports[0]).all() and level > 0.01 and change > 0.1,
          f"The export is a sound of its own (level {level:.3f}, up to {change:.2f} from the input).")
    away = float(np.abs(exports[0] - wanted).max())
    check(away <= 1.0e-6, f"The {kind}'s export is the renderer's sound within {away:.1e}; 1e-06 is allowed.")


def main(build, scratch):
    check = Checks()
    home = f"{scratch}/home"
    os.makedirs(f"{home}/.vst3")
    os.makedirs(f"{home}/.lv2")
    os.symlink(f"{build}/plugins/dpf/Tesserae.lv2", f"{home}/.lv2/Tesserae.lv2")
    os.symlink(f"{build}/plugins/dpf/Tesserae.vst3", f"{home}/.vst3/Tesserae.vst3")
    env = {key: value for key, value in os.environ.items() if not key.startswith("XDG_")}
    env.update(HOME=home, LV2_PATH=f"{home}/.lv2:/usr/lib/lv2", LD_LIBRARY_PATH="/usr/lib/ardour7")
    state = write_presets(f"{build}/plugins/dpf/Tesserae.lv2", home)
    write_export_preset(home)
    scan = run(["/usr/lib/ardour7/ardour-vst3-scanner", "-f", "-v", f"{home}/.vst3/Tesserae.vst3"], env)
    check(scan.returncode == 0 and "Found Plugin: Tesserae" in scan.stdout + scan.stderr,
          "Ardour's scanner finds the VST3.")
    for kind in ("LV2", "VST3"):
        try_format(check, kind, build, scratch, env, state)
    check.end()


main(*sys.argv[1:])
