"""The Python module beside the program."""

import os
import pickle
import subprocess
import threading
import wave

import numpy as np
import pytest
import tesserae

RATE = 48000
SOUND = (np.random.default_rng(1).standard_normal((2, RATE)) * 0.2).astype(np.float32)


def run_program(folder, sound, *options):
    """What "tesserae render" makes of sound, as (channels, frames)."""
    sound.T.tofile(folder / "in.raw")
    raw = ["--raw-rate", str(RATE), "--raw-channels", str(sound.shape[0]), "--format", "raw"]
    names = [folder / "in.raw", "-o", folder / "out.raw", "--force", "-q"]
    subprocess.run([os.environ["TESSERAE"], "render", *names, *raw, *options], check=True)
    return np.fromfile(folder / "out.raw", np.float32).reshape(-1, 2).T


def test_render_gives_the_bits_of_the_program(tmp_path):
    same = np.testing.assert_array_equal
    automation = [(0.25, "Feedback", 0.9), ("1 beats", "Pitch", 0.2, "linear")]
    (tmp_path / "a.json").write_text('[[0.25, "Feedback", 0.9], ["1 beats", "Pitch", 0.2, "linear"]]')
    options = ["--preset", "tape-garden", "--seed", "7", "--set", "Dry / Wet=0.6"]
    options += ["--automation", tmp_path / "a.json", "--tempo", "93"]
    result = tesserae.render(
        SOUND, RATE, "tape-garden", 7, {"Dry / Wet": 60}, automation, tempo=93, modulation=["Pitch"]
    )
    same(result.audio, run_program(tmp_path, SOUND, *options))
    mono = tesserae.render(SOUND[0], RATE, "dense-cloud", seed=3, tail=0.5)
    program = run_program(tmp_path, SOUND[:1], "--preset", "dense-cloud", "--seed", "3", "--tail", "0.5")
    same(mono.audio, program)
    assert len(mono.grains) > 20 and np.all(np.diff(mono.grains["time"]) >= 0)
    assert {"time", "Function 1", "Pitch"} <= set(result.modulation.dtype.names)
    assert np.ptp(result.modulation["time"]) > 0.5


def test_streams_do_not_depend_on_their_cuts_and_give_the_same_bits():
    whole = tesserae.render(SOUND, RATE, "dense-cloud", seed=5, tail=0).audio
    stream = tesserae.Processor(RATE, seed=5, preset="dense-cloud")
    padded = np.concatenate([SOUND, np.zeros((2, stream.latency), np.float32)], axis=1)
    for _ in range(2):
        pieces = [stream.process(piece) for piece in np.array_split(padded, 37, axis=1)]
        np.testing.assert_array_equal(np.concatenate(pieces, axis=1)[:, stream.latency :], whole)
        stream.reset()
    sliced = np.empty((2, 2, padded.shape[1]))[:, 0]  # doubles, rows apart
    sliced[:] = padded
    np.testing.assert_array_equal(stream.process(sliced)[:, stream.latency :], whole)


def test_a_side_chain_is_that_of_the_program(tmp_path):
    side = np.round(np.sin(np.arange(RATE // 2) ** 2 / 1e7) * 16000).astype("<i2")
    with wave.open(str(tmp_path / "side.wav"), "wb") as file:
        file.setparams((1, 2, RATE, 0, "NONE", ""))
        file.writeframes(side.tobytes())
    side = side.astype(np.float32) / 32768
    sound = tesserae.render(SOUND, RATE, "borrowed-breath", 3, tail=0, sidechain=side).audio
    options = ["--preset", "borrowed-breath", "--seed", "3", "--tail", "0", "--sidechain", tmp_path / "side.wav"]
    np.testing.assert_array_equal(sound, run_program(tmp_path, SOUND, *options))
    stream = pickle.loads(pickle.dumps(tesserae.Processor(RATE, 3, "borrowed-breath", sidechain=1)))
    half = [stream.process(SOUND[:, : RATE // 2], side), stream.process(SOUND[:, RATE // 2 :])]
    late = np.concatenate(half, axis=1)[:, stream.latency :]
    np.testing.assert_array_equal(late, sound[:, : late.shape[1]])


def test_parameters_are_texts_and_numbers_and_survive_pickling():
    stream = tesserae.Processor(RATE, seed=1, channels=1)
    parameters = stream.parameters
    parameters["Feedback"] = "-6 dB"
    assert parameters["Feedback"] == "-6.0 dB"
    parameters["feedback"] = -12
    assert parameters.value("Feedback") == pytest.approx(-12, abs=0.01)
    parameters["Granular Mode"] = "Texture"
    assert parameters.value("Granular Mode") == 1
    parameters.put("Dry / Wet", 0.25)
    assert parameters.position("Dry / Wet") == 0.25 and len(dict(parameters)) > 300
    copy = pickle.loads(pickle.dumps(stream))
    assert dict(copy.parameters) == dict(parameters)
    stream.reset()  # the copy does not glide from where the parameters were
    np.testing.assert_array_equal(copy.process(SOUND[0]), stream.process(SOUND[0]))


def test_presets_load_save_and_render_alike(tmp_path):
    assert tesserae.presets()[0] == "init" and len(tesserae.presets()) > 40
    preset = tesserae.Preset.load("dense-cloud")
    preset.parameters["Dry / Wet"] = 0.5
    preset.routes.append(tesserae.Route("Function 1", "Pitch", 0.5))
    preset.save(tmp_path / "mine.json")
    assert tesserae.Preset.load(tmp_path / "mine.json").routes == preset.routes
    by_file = tesserae.render(SOUND, RATE, tmp_path / "mine.json", seed=2, tail=0).audio
    np.testing.assert_array_equal(tesserae.render(SOUND, RATE, preset, 2, tail=0).audio, by_file)
    assert tesserae.Processor(RATE, 2, preset).preset().routes == preset.routes


@pytest.mark.parametrize(
    "error, sentence, call",
    [
        (KeyError, "dense-cloud", lambda: tesserae.render(SOUND, RATE, "dense-clud")),
        (KeyError, "Feedback", lambda: tesserae.Processor(RATE).parameters["Feedbak"]),
        (ValueError, "9 parsec", lambda: tesserae.render(SOUND, RATE, set={"Feedback": "9 parsec"})),
        (ValueError, "3 channels", lambda: tesserae.render(np.zeros((3, 9)), RATE)),
        (ValueError, "no floats", lambda: tesserae.render(np.zeros((2, 9), int), RATE)),
        (ValueError, "sample rate", lambda: tesserae.render(SOUND, 10)),
        (ValueError, "1000 to", lambda: tesserae.Processor(10)),
        (ValueError, "channels=1", lambda: tesserae.Processor(RATE).process(SOUND[0])),
        (OSError, "does not exist", lambda: tesserae.Preset.load("./nowhere.json")),
        (ValueError, "Pich", lambda: tesserae.Processor(RATE, 1, tesserae.Preset(parameters={"Pich": 1}))),
    ],
)
def test_errors_speak(error, sentence, call):
    with pytest.raises(error, match=sentence):
        call()


def test_threads_work_at_once_each_with_its_own():
    alone = [tesserae.render(SOUND, RATE, "tape-garden", seed, tail=0).audio for seed in range(4)]
    found = {}

    def work(seed):
        found[seed] = tesserae.render(SOUND, RATE, "tape-garden", seed, tail=0).audio

    threads = [threading.Thread(target=work, args=(seed,)) for seed in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for seed in range(4):
        np.testing.assert_array_equal(found[seed], alone[seed])
