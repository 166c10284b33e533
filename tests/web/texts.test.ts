import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { Catalog } from "../../web/src/engine/Catalog.js";
import { EngineModule } from "../../web/src/engine/EngineModule.js";
import { chance } from "./fakes.js";
import { Session } from "../../web/src/page/Session.js";

const module = new WebAssembly.Module(readFileSync("web/dist/tesserae.wasm"));
const catalog = new Catalog(new EngineModule(module));

test("sounds come back from presets and states as they were", () => {
    for (const { id, name } of catalog.presets) {
        const { positions } = catalog.factorySound(id);
        for (const text of [catalog.writePreset(positions, { name }), catalog.writeState(positions)]) {
            const reading = catalog.readSound(text);
            assert.ok(reading.sound, id);
            assert.deepEqual(reading.warnings, []);
            assert.deepEqual(reading.sound.positions, positions);
        }
    }
});

test("a broken text changes nothing and says why", () => {
    const { positions } = catalog.factorySound("shimmer");
    const good = [catalog.writePreset(positions, { name: "A" }), catalog.writeState(positions)];
    const pieces = ["", "\0", "\ud800", '"', "{", "]", "1e999", "-1e-400", "NaN", "\\ud800", "é", "[".repeat(500)];
    const next = chance(1);
    let refused = 0;
    for (let round = 0; round < 800; ++round) {
        let text = good[round % 2] ?? "";
        for (let change = next(4); change >= 0; --change) {
            const at = next(text.length);
            text = text.slice(0, at) + pieces[next(pieces.length)] + text.slice(at + next(9));
        }
        const reading = catalog.readSound(text);
        if (reading.sound) {
            assert.ok(reading.sound.positions.every((position) => position >= 0 && position <= 1));
        } else {
            ++refused;
            assert.match(reading.problem, /\.$/);
        }
    }
    assert.ok(refused > 250 && refused < 800);
    for (const text of ["", "null", "[]", '{"format":"tesserae-preset"}', "x".repeat(1 << 20)])
        assert.equal(catalog.readSound(text).sound, null);
    assert.deepEqual(catalog.factorySound("shimmer").positions, positions);
});

test("the way back leaves sounding what sounds; another sound clears it", () => {
    const session = new Session(catalog);
    const told: string[] = [];
    session.engine = { set: () => told.push("set"), load: () => told.push("load") };
    session.nudge(catalog.parameter("Feedback").index, 0.1);
    session.setTempo(90);
    session.fixSeed();
    for (let step = 0; step < 3; ++step) session.undo();
    assert.deepEqual(told, ["set", "set"]);
    assert.deepEqual([session.tempo, session.seed, session.canUndo], [120, null, false]);
    session.load(catalog.factorySound("shimmer"));
    assert.equal(told.at(-1), "load");
});
