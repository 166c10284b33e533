import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { after, before, test } from "node:test";
import type { Page } from "playwright-core";
import type { Harness } from "./harness.js";
import { Served } from "./served.js";

const tesserae = process.env["TESSERAE"] ?? "build/tools/tesserae";
const folder = mkdtempSync(`${tmpdir()}/tesserae-web-`);
const rates = [44100, 48000];
declare const harness: Harness;

let served: Served;
let page: Page;

before(async () => {
    served = await Served.start();
    const context = await served.withFiles(folder);
    page = await context.newPage();
    await page.goto(served.url);
    execFileSync("cp", ["web/build/tests/harness.js", folder]);
    await page.addScriptTag({ url: "test/harness.js", type: "module" });
    await page.waitForFunction(() => "harness" in globalThis);
});
after(async () => {
    await served.stop();
    rmSync(folder, { recursive: true });
});

/** Three seconds of music through every preset, by the renderer, one second of tail. */
function renderNative(rate: number, presets: readonly string[]): void {
    const raw = ["--rate", String(rate), "--format", "raw", "--seconds", "3"];
    execFileSync(tesserae, ["demo-sound", `${folder}/${rate}.raw`, ...raw]);
    const jobs = presets.map((preset) => ({
        input: `${folder}/${rate}.raw`,
        output: `${folder}/${preset}-${rate}.raw`,
        "raw-rate": rate,
        format: "raw",
        seed: 7,
        tail: 1,
        preset,
    }));
    writeFileSync(`${folder}/jobs.jsonl`, jobs.map((job) => JSON.stringify(job)).join("\n"));
    execFileSync(tesserae, ["batch", `${folder}/jobs.jsonl`, "-q", "--workers", "2"]);
}

for (const rate of rates)
    test(`every factory preset sounds as from the renderer, ${rate} Hz`, async () => {
        const presets = await page.evaluate(() => harness.presets);
        assert.equal(presets.length, 48);
        renderNative(rate, presets);
        const bad: string[] = [];
        for (const preset of presets) {
            const differences = await page.evaluate(
                ([hz, name]) =>
                    harness.compare(`test/${hz}.raw`, hz, name, `test/${name}-${hz}.raw`),
                [rate, preset] as const,
            );
            if (!differences.every((difference) => difference <= 1e-6))
                bad.push(`${preset}: ${differences.join(", ")}`);
        }
        assert.deepEqual(bad, []);
    });

test("pictures show grains, tape, levels and scopes", async () => {
    const seen = await page.evaluate(() => harness.watch("test/48000.raw", 48000, "dense-cloud"));
    assert.ok(seen.pictures > 5, JSON.stringify(seen));
    assert.ok(seen.grains > 5 && seen.grains <= 258, JSON.stringify(seen));
    assert.ok(seen.output > 0.01 && seen.output <= 1.01, JSON.stringify(seen));
    assert.ok(seen.tape > 0.1 && seen.writePlace > 0.01 && seen.writePlace <= 1);
});

test("the display moves, and tells in words what it shows", async () => {
    const seen = await page.evaluate(() => harness.draw("test/48000.raw", 48000, "dense-cloud"));
    assert.equal(new Set(seen.looks).size, 3);
    assert.match(seen.label ?? "", /^\d+ grains, tape \d+\.\d s, output (silent|-\d+ dB)$/);
});

for (const most of [1800, 0.5])
    test(`a recording has every frame, ${most} seconds at most`, async () => {
        const { isFull, bytes } = await page.evaluate((s) => harness.record(48000, s), most);
        const file = Buffer.from(bytes);
        const samples = new Float32Array(Uint8Array.from(file.subarray(58)).buffer);
        assert.deepEqual([file.readUInt32LE(54), isFull], [4 * samples.length, most < 1]);
        assert.ok(isFull ? samples.length === 48000 : samples.length > 72000);
        for (let at = samples.findIndex((one) => one > 0); at + 2 < samples.length; ++at)
            assert.ok(Math.abs((samples[at + 2] ?? 0) - (samples[at] ?? 0) - 1) < 1e-3, `gap at ${at}`);
    });
