"""A JACK server without a sound card, and a client that plays through a program and listens."""

import os
import queue
import signal
import subprocess
import time

import jack
import numpy as np

RATE, PERIOD, SERVER = 48000, 1024, f"tesserae-try-{os.getpid()}"


jack.set_error_function(lambda text: None)
jack.set_info_function(lambda text: None)


class Server:
    """jackd without a sound card."""

    def __init__(self, env):
        self.process = subprocess.Popen(
            ["jackd", "-n", SERVER, "--no-realtime", "-d", "dummy", "-r", str(RATE), "-p", str(PERIOD)],
            env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        subprocess.run(["jack_wait", "-s", SERVER, "-w", "-t", "10"], env=env,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def end(self, how=signal.SIGTERM):
        self.process.send_signal(how)
        self.process.wait(10)


class Player:
    """Sends noise and MIDI into the program, and records both what it sends and what comes back."""

    def __init__(self, inputs=("live:in_l", "live:in_r"), output="live:out_l", midi="live:midi"):
        self.client = jack.Client("player", servername=SERVER, no_start_server=True)
        self.send = self.client.outports.register("send")
        self.back = self.client.inports.register("back")
        self.midi = self.client.midi_outports.register("midi")
        self.events, self.sent, self.heard, self.records = queue.SimpleQueue(), [], [], False
        self.chance = np.random.default_rng(1)
        self.client.set_process_callback(self.process)
        self.client.activate()
        for source, target in [*((self.send, name) for name in inputs), (output, self.back), (self.midi, midi)]:
            self.connect(source, target)

    def connect(self, source, target):
        """A program that has just come may show its ports a moment before they can be wired."""
        for _ in range(100):
            try:
                return self.client.connect(source, target)
            except jack.JackError:
                time.sleep(0.1)
        raise TimeoutError(f"{source} can't be wired to {target}.")

    def process(self, frames):
        noise = (0.2 * self.chance.standard_normal(frames)).astype("<f4")
        self.send.get_array()[:] = noise
        if self.records:
            self.sent.append(noise)
            self.heard.append(self.back.get_array().copy())
        self.midi.clear_buffer()
        while not self.events.empty():
            self.midi.write_midi_event(0, self.events.get())

    def tell(self, *message):
        self.events.put(message)
        time.sleep(0.1)

    def record(self, seconds=1.5):
        self.sent, self.heard, self.records = [], [], True
        time.sleep(seconds)
        self.records = False
        time.sleep(0.1)
        return np.concatenate(self.sent), np.concatenate(self.heard)

    def likeness(self):
        """The greatest correlation of what comes back with what was sent, and at how many frames' delay."""
        sent, heard = self.record()
        size = 2 * len(sent)
        product = np.fft.irfft(np.fft.rfft(heard, size) * np.conj(np.fft.rfft(sent, size)))[:8192]
        best = int(np.argmax(np.abs(product)))
        scale = np.sqrt(np.sum(sent**2.0) * np.sum(heard**2.0)) + 1e-30
        return float(abs(product[best]) / scale), best, heard

    def end(self):
        self.client.deactivate()
        self.client.close()
