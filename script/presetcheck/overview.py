"""Writes docs/presets.md from the presets' files and what was measured."""
from measure import TAIL

HEAD = """# The factory presets

`script/check-presets --write docs/presets.md` writes this page from the files in `presets/` and
from what it measures. Loudness is told against the dry sound, on music and on speech, in LU; a tail
is the time from the end of plucked strings to the last sample above -90 dB.

    tesserae render in.wav -o out.wav --preset NAME [--sidechain drums.wav] [--set "Macro 1=60 %"]

Played by: "side-chain" is the sound of `--sidechain`, "input level" how loud the input is, macros
are knobs for a performer, "tempo" says that it goes with the song.

| Preset | What it does | Tags | Played by | LU | Tail |
| --- | --- | --- | --- | --- | --- |
"""


def row(result):
    preset = result.preset
    music, speech = (f"{loudness:+.1f}" for loudness in result.loudness.values())
    tail = "held" if result.tail >= TAIL - 0.1 else f"{result.tail:.0f} s"
    return (f"| `{preset.id}` | {preset.description} | {', '.join(preset.tags)} | "
            f"{preset.played_by()} | {music}, {speech} | {tail} |\n")


def write_overview(path, results):
    with open(path, "w") as file:
        file.write(HEAD + "".join(row(result) for result in results))
