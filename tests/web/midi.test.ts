import assert from "node:assert/strict";
import { test } from "node:test";
import { MidiInput } from "../../web/src/midi/MidiInput.js";
import { storage } from "./fakes.js";

test("MIDI moves what it was learnt for, on whatever instrument and after a reload", async () => {
    const kept = storage();
    type Port = { state: string; onmidimessage?: (event: { data: Uint8Array }) => void };
    const inputs = new Map<string, Port>([["1", { state: "connected" }]]);
    const access = { inputs, onstatechange: () => undefined };
    const play = (port: string, ...data: number[]) =>
        inputs.get(port)?.onmidimessage?.({ data: Uint8Array.from(data) });
    const moves: number[][] = [];
    const request = async () => access as unknown as MIDIAccess;
    const make = async () => {
        const midi = new MidiInput(request, () => kept);
        midi.onMove = (...move) => moves.push(move);
        return midi.connect().then(() => midi);
    };
    const midi = await make();
    midi.learn(5);
    for (const data of [[0x90, 60, 127], [0xf8], [0xb0, 123, 0]]) play("1", ...data);
    assert.deepEqual([midi.learning, moves], [5, []]);
    for (const data of [[0xb2, 74, 127], [0xb2, 74, 0], [0xb1, 74, 1]]) play("1", ...data);
    midi.learn(8);
    for (const data of [[0, 64], [0, 0], [127, 127]]) play("1", 0xe0, ...data);
    assert.deepEqual(moves.splice(0), [[5, 1], [5, 0], [8, 0.5], [8, 0], [8, 1]]);

    const again = await make();
    inputs.delete("1");
    inputs.set("2", { state: "connected" });
    access.onstatechange();
    play("2", 0xb2, 74, 127);
    again.forget(5);
    play("2", 0xb2, 74, 0);
    assert.deepEqual([moves, [...again.assignments.keys()]], [[[5, 1]], [8]]);
    const refused = new MidiInput(() => Promise.reject(new Error()), () => kept);
    await assert.rejects(() => refused.connect(), /access to MIDI.*\.$/);
});
