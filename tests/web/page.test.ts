import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { after, before, test } from "node:test";
import type { BrowserContextOptions, Download, Locator, Page } from "playwright-core";
import { writeWav } from "../../web/src/record/writeWav.js";
import { chance } from "./fakes.js";
import { Served } from "./served.js";

const program = process.env["TESSERAE"] ?? "build/tools/tesserae";
let rate = 48000;
let served: Served;
let folder: string;

before(async () => {
    served = await Served.start();
    const page = await open();
    rate = await page.evaluate(() => new AudioContext().sampleRate);
    await page.context().close();
    folder = mkdtempSync(`${tmpdir()}/tesserae-page-`);
    const tone = Float32Array.from({ length: rate }, (_, i) => 0.5 * Math.sin(i / 20));
    const wav = writeWav([tone], rate);
    writeFileSync(`${folder}/tone.wav`, Buffer.from(await wav.arrayBuffer()));
    writeFileSync(`${folder}/text.wav`, "no sound");
    writeFileSync(`${folder}/broken.json`, '{"format": 3, "parameters": [');
});
after(async () => {
    await served.stop();
    rmSync(folder, { recursive: true });
});

/** A page that has been loaded; what goes wrong in it, or leaves it, fails the test. */
async function open(options: BrowserContextOptions = {}, fragment = ""): Promise<Page> {
    const context = await served.browser.newContext({ reducedMotion: "reduce", ...options });
    const page = await context.newPage();
    page.setDefaultTimeout(15000);
    page.on("pageerror", (problem) => assert.fail(problem));
    page.on("request", (request) => {
        const isOurs = request.url().startsWith(served.url) || request.url().startsWith("blob:");
        assert.ok(isOurs, `asks ${request.url()}`);
    });
    await page.goto(served.url + fragment);
    await transportButton(page, "Play").waitFor();
    return page;
}
const transportButton = (page: Page, name: string): Locator =>
    page.getByRole("toolbar").getByRole("button", { name, exact: true });
const button = (page: Page, name: string): Locator => page.getByRole("button", { name, exact: true });
const slider = (page: Page, name: string): Locator => page.getByRole("slider", { name, exact: true });
const reads = (one: Locator): Promise<string | null> => one.getAttribute("aria-valuetext");
const name = (page: Page): Promise<string | null> => page.locator(".sound-name").textContent();
const preset = (page: Page, called: string): Locator =>
    page.getByRole("option").filter({ hasText: called });

async function downloadedBy(page: Page, action: () => Promise<void>): Promise<Buffer> {
    const [file] = (await Promise.all([page.waitForEvent("download"), action()])) as [Download, void];
    return readFileSync(await file.path());
}
/** Samples of a WAV file as the page writes it. */
const samplesOf = (wav: Buffer): Float32Array => new Float32Array(new Uint8Array(wav.subarray(58)).buffer);
const peakOf = (samples: Float32Array): number => samples.reduce((a, b) => Math.max(a, Math.abs(b)), 0);

/** Drops a file on the page as a file manager does. */
async function drop(page: Page, path: string): Promise<void> {
    const bytes = readFileSync(path).toString("base64");
    const file = await page.evaluateHandle(
        ([text = "", called = ""]) => {
            const data = new DataTransfer();
            const content = Uint8Array.from(atob(text), (letter) => letter.charCodeAt(0));
            data.items.add(new File([content], called));
            return data;
        },
        [bytes, path.split("/").at(-1) ?? ""],
    );
    await page.dispatchEvent("body", "drop", { dataTransfer: file });
}

test("presets are found by word and tag, and chosen by mouse and keyboard", async () => {
    const page = await open();
    await page.getByRole("searchbox", { name: "Search", exact: true }).fill("dense");
    await preset(page, "Dense Cloud").click();
    assert.equal(await name(page), "Dense Cloud");
    assert.equal(await reads(slider(page, "Density")), "40.0 Hz");
    await page.getByRole("searchbox", { name: "Search", exact: true }).fill("");
    await page.getByLabel("Tag").selectOption("freeze");
    const count = await page.getByRole("option").filter({ hasText: "freeze" }).count();
    assert.ok(count > 0 && count < 48);
    await page.getByRole("listbox", { name: "Presets" }).getByRole("option").first().focus();
    await page.keyboard.press("End");
    assert.notEqual(await name(page), "Dense Cloud");
    await page.keyboard.press("Control+z");
    assert.equal(await name(page), "Dense Cloud");
    const tempo = page.getByRole("spinbutton", { name: "Tempo" });
    assert.equal(await tempo.inputValue(), "100");
    await tempo.fill("150");
    await tempo.press("Enter");
    await button(page, "Undo").click();
    await button(page, "Undo").click();
    assert.deepEqual([await name(page), await tempo.inputValue()], ["Init", "120"]);
    await page.context().close();
});

test("controls follow mouse, keyboard and typed texts; undo takes each back", async () => {
    const page = await open();
    const feedback = slider(page, "Feedback");
    await feedback.focus();
    await page.keyboard.press("ArrowRight");
    const step = await reads(feedback);
    assert.notEqual(step, "-inf dB");
    await page.keyboard.press("Shift+ArrowRight");
    assert.notEqual(await reads(feedback), step);
    await page.keyboard.press("Control+z");
    assert.equal(await reads(feedback), "-inf dB");
    await page.keyboard.press("ArrowRight");
    await page.keyboard.press("Delete");
    assert.equal(await reads(feedback), "-inf dB");
    await slider(page, "Pitch").focus();
    await page.keyboard.press("End");
    await page.keyboard.press("Delete");
    assert.equal(await reads(slider(page, "Pitch")), "0.00 st");
    assert.match((await slider(page, "Pitch").getAttribute("title")) ?? "", /^Moves every grain/);
    const typed = page.getByRole("textbox", { name: "Grain Size, typed" });
    await typed.fill("120 ms");
    await typed.press("Enter");
    assert.equal(await reads(slider(page, "Grain Size")), "120 ms");
    await typed.fill("a herd");
    await typed.press("Enter");
    await page.getByRole("alert").filter({ hasText: "herd" }).waitFor();
    assert.equal(await reads(slider(page, "Grain Size")), "120 ms");
    await slider(page, "Spray").focus();
    await page.keyboard.type("7 %");
    await page.keyboard.press("Enter");
    const before = await reads(slider(page, "Spray"));
    assert.equal(before, "7.0 %");
    const box = await slider(page, "Spray").boundingBox();
    assert.ok(box);
    await page.mouse.move(box.x + 4, box.y + box.height / 2);
    await page.mouse.down();
    for (const share of [0.2, 0.4, 0.6])
        await page.mouse.move(box.x + share * box.width, box.y + box.height / 2);
    await page.mouse.up();
    const spray = Number(await slider(page, "Spray").inputValue());
    assert.ok(Math.abs(spray - 0.6) < 0.05, `${spray}`);
    assert.match((await name(page)) ?? "", /changed/);
    await page.keyboard.down("Shift");
    await page.mouse.down();
    await page.mouse.move(box.x + 0.1 * box.width, box.y);
    await page.mouse.up();
    await page.keyboard.up("Shift");
    assert.ok(Math.abs(Number(await slider(page, "Spray").inputValue()) - spray + 0.05) < 0.01);
    await button(page, "Undo").click();
    await button(page, "Undo").click();
    assert.equal(await reads(slider(page, "Spray")), before);
    await button(page, "Undo").click();
    await button(page, "Undo").click();
    assert.notEqual(await reads(slider(page, "Grain Size")), "120 ms");
    await button(page, "Redo").click();
    assert.equal(await reads(slider(page, "Grain Size")), "120 ms");
    await page.getByLabel("Granular Mode", { exact: true }).selectOption("Texture");
    assert.ok(await slider(page, "Random Layers").isVisible());
    assert.equal(await slider(page, "Random Density").isVisible(), false);
    await page.getByRole("searchbox", { name: "Search by name" }).fill("fx2 reverb decay");
    assert.ok((await page.locator(".rows .control").count()) > 0);
    await page.context().close();
});

test("a dropped file plays, is recorded and rendered, the render as the renderer's", async () => {
    const page = await open();
    await preset(page, "Dense Cloud").click();
    await drop(page, `${folder}/text.wav`);
    await page.getByRole("alert").filter({ hasText: "text.wav" }).waitFor();
    await drop(page, `${folder}/tone.wav`);
    await transportButton(page, "Stop").waitFor();
    assert.match((await page.locator("#source").textContent()) ?? "", /tone\.wav, 1\.0 s/);
    await button(page, "Record").click();
    await page.waitForTimeout(1500);
    const recorded = samplesOf(
        await downloadedBy(page, () => button(page, "Stop and download").click()),
    );
    assert.ok(recorded.length > 2 * rate && peakOf(recorded) > 0.01 && peakOf(recorded) < 2);
    await page.getByRole("spinbutton", { name: "Seed" }).fill("7");
    await page.getByRole("spinbutton", { name: "Seed" }).press("Tab");
    const made = samplesOf(
        await downloadedBy(page, () => button(page, "Render the whole source").click()),
    );
    const text = await downloadedBy(page, () => button(page, "Export preset").click());
    writeFileSync(`${folder}/mine.json`, text);
    const wanted = `${folder}/wanted.wav`;
    const frames = made.length / 2;
    const words = ["--preset", `${folder}/mine.json`, "--seed", "7", "--tail", `${frames / rate - 1}`];
    execFileSync(program, ["render", `${folder}/tone.wav`, "-o", wanted, "--format", "float", ...words, "-q"]);
    const all = readFileSync(wanted);
    const data = all.subarray(all.indexOf("data") + 8);
    const native = new Float32Array(new Uint8Array(data).buffer).subarray(0, made.length);
    const apart = made.reduce((most, one, i) => Math.max(most, Math.abs(one - (native[i] ?? 9))), 0);
    assert.ok(apart < 1e-6, `${apart} apart`);
    await page.context().close();
});

test("a link brings the same sound; hostile links and files change nothing and say why", async () => {
    const page = await open();
    await preset(page, "Tape Garden").click();
    await slider(page, "Spray").focus();
    await page.keyboard.press("ArrowRight");
    const spray = await reads(slider(page, "Spray"));
    await button(page, "Share a link").click();
    await page.getByLabel("Link").waitFor();
    const fragment = new URL(page.url()).hash;
    const seed = await page.getByRole("spinbutton", { name: "Seed" }).inputValue();
    assert.notEqual(seed, "");
    await page.context().close();

    const other = await open({}, fragment);
    await other.locator(".news").filter({ hasText: "Tape Garden" }).waitFor();
    assert.equal(await reads(slider(other, "Spray")), spray);
    assert.equal(await other.getByRole("spinbutton", { name: "Seed" }).inputValue(), seed);
    const pick = chance(1);
    for (let round = 0; round < 12; ++round) {
        const at = 4 + pick(fragment.length - 4);
        const hostile = round % 2 ? fragment.slice(0, at) : `${fragment.slice(0, at)}x${fragment.slice(at + 2)}`;
        await other.evaluate((hash) => (location.hash = hash), hostile);
        await other.locator(".problem:visible").filter({ hasText: "link" }).waitFor();
        await button(other, "Put away").click();
    }
    await drop(other, `${folder}/broken.json`);
    await other.getByRole("alert").filter({ hasText: "broken.json" }).waitFor();
    assert.equal(await reads(slider(other, "Spray")), spray);
    await other.context().close();
});

test("sounds are saved in the browser, and imported from files", async () => {
    const page = await open();
    await slider(page, "Spray").focus();
    await page.keyboard.press("End");
    await page.getByLabel("Name", { exact: true }).fill("My own <b>sound</b>");
    await button(page, "Save here").click();
    await page.reload();
    await preset(page, "My own <b>sound</b>").click();
    assert.equal(await reads(slider(page, "Spray")), "100.0 %");
    const text = await downloadedBy(page, () => button(page, "Export preset").click());
    writeFileSync(`${folder}/own.json`, text);
    await button(page, "Remove").click();
    await button(page, "Undo").click();
    const selected = page.locator("[role=option][aria-selected=true]");
    assert.match((await selected.textContent()) ?? "", /^Init/);
    await drop(page, `${folder}/own.json`);
    await page.locator(".news").filter({ hasText: "imported" }).waitFor();
    assert.equal(await name(page), "My own <b>sound</b>");
    assert.equal(await reads(slider(page, "Spray")), "100.0 %");
    await page.context().close();
});

test("what a browser lacks or refuses is said in a sentence", async () => {
    const page = await open({ permissions: [] });
    await button(page, "Microphone").click();
    await page.getByRole("alert").filter({ hasText: /microphone/i }).waitFor();
    await page.context().close();
    const context = await served.browser.newContext();
    await context.addInitScript("delete globalThis.AudioWorkletNode");
    const old = await context.newPage();
    await old.goto(served.url);
    await old.getByRole("alert").filter({ hasText: "This browser cannot" }).waitFor();
    await context.close();
});

test("axe finds nothing, dark and light, from 360 to 2560 px, and nothing overflows", async () => {
    const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
    for (const [width, colorScheme] of [
        [360, "dark"],
        [360, "light"],
        [1280, "light"],
        [2560, "dark"],
    ] as const) {
        const page = await open({ viewport: { width, height: 900 }, colorScheme });
        await page.getByRole("searchbox", { name: "Search by name" }).fill("reverb");
        await button(page, "Keys").click();
        await button(page, "Close").click();
        await page.evaluate(axe);
        const found = await page.evaluate(async () => {
            const { violations } = await (globalThis as unknown as Axe).axe.run();
            return violations.map(({ id, nodes }) => `${id}: ${nodes.map((one) => one.html).join(" ")}`);
        });
        assert.deepEqual(found, [], `${width} ${colorScheme}`);
        const wide = await page.evaluate(() => document.documentElement.scrollWidth);
        assert.ok(wide <= width, `${wide} px in ${width}`);
        await page.context().close();
    }
});

interface Axe {
    readonly axe: {
        run(): Promise<{ violations: { id: string; nodes: { html: string }[] }[] }>;
    };
}
