import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { deflateSync } from "node:zlib";
import { Catalog } from "../../web/src/engine/Catalog.js";
import { EngineModule } from "../../web/src/engine/EngineModule.js";
import { SavedSounds } from "../../web/src/share/SavedSounds.js";
import { readFragment, writeFragment } from "../../web/src/share/ShareLink.js";
import { chance, storage } from "./fakes.js";

const module = new WebAssembly.Module(readFileSync("web/dist/tesserae.wasm"));
const catalog = new Catalog(new EngineModule(module));

test("a sound comes back from a link to the bit", async () => {
    const next = chance(3);
    const sounds = catalog.presets.map(({ id }) => catalog.factorySound(id));
    const anywhere = Float32Array.from(sounds[0]?.positions ?? [], (position, index) =>
        catalog.parameters[index]?.role === "setting" ? next(2 ** 30) / 2 ** 30 : position,
    );
    sounds.push({ name: "Ä \ud83c\udfb5", description: "\n", tags: ["a"], tempo: 93.3, positions: anywhere });
    for (const sound of sounds)
        for (const seed of [null, 0, 2 ** 53 - 1]) {
            const shared = { sound, seed, tempo: 120.5 };
            const reading = await readFragment(await writeFragment(shared, catalog), catalog);
            assert.deepEqual(reading, { shared });
        }
});

test("a hostile link is refused with a sentence", async () => {
    const sound = catalog.factorySound("worn-tape");
    const good = await writeFragment({ sound, seed: 1, tempo: 90 }, catalog);
    const pack = (text: string) => `#s1=${deflateSync(text, { level: 9 }).toString("base64url")}`;
    const bad = ["", "#", "#s1=", "#s2=AAAA", `${good}A`, pack("A".repeat(2 ** 26)), "#s1=".padEnd(1e6, "A")];
    const body = '"tempo":120,"positions":{"Dry / Wet":';
    const texts = ["null", "[]", `{${body}2}}`, `{${body}"1"}}`, `{"seed":-1,${body}1}}`, `{${body}1,"No":0}}`];
    bad.push(...texts.map(pack));
    for (let end = 0; end < good.length; end += 7) bad.push(good.slice(0, end));
    const next = chance(4);
    for (let round = 0; round < 500; ++round) {
        const at = 4 + next(good.length - 4);
        bad.push(good.slice(0, at) + ("abcdABCD12-_=%\0é"[next(16)] ?? "") + good.slice(at + 1));
    }
    for (const fragment of bad) {
        const reading = await readFragment(fragment, catalog);
        if ("problem" in reading) assert.match(reading.problem, /^The .+\.$/);
        else assert.deepEqual(reading.shared, { sound, seed: 1, tempo: 90 }, fragment);
    }
});

test("saved sounds are kept, and a storage that refuses is told of", () => {
    const kept = storage();
    const sounds = new SavedSounds(catalog, () => kept);
    const text = catalog.writePreset(catalog.factorySound("shimmer").positions, { name: "A" });
    sounds.save(" Mine ", text);
    sounds.save("Broken", "{");
    sounds.rename("Mine", "Ours");
    assert.equal(sounds.read("Ours"), text);
    assert.throws(() => sounds.rename("Ours", "Broken"), /already\.$/);
    assert.deepEqual(sounds.list().map((one) => one.isBroken), [true, false]);
    sounds.remove("Ours");
    assert.throws(() => sounds.read("Ours"), /no saved sound "Ours"\.$/);
    assert.throws(() => new SavedSounds(catalog, () => assert.fail()).list(), /closed to this page\.$/);
});
