// bench.js [NATIVE.json]: what the engine costs in headless Chromium, in percent of the render quantum's
// time, beside what Google Benchmark has measured of the same scenarios outside of it.
import { cpSync, mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { build } from "esbuild";
import { chromium } from "playwright-core";
import { serve } from "./server.js";

const here = new URL("../", import.meta.url).pathname;
const bench = new URL("../../bench/", import.meta.url).pathname;

/** The positions of a scenario, from where the other benchmarks have them. */
function scenario(file, name) {
    const text = readFileSync(bench + file, "utf8");
    const block = new RegExp(`${name}\\{([^;]*)\\};`).exec(text)?.[1];
    if (!block) throw new Error(`${file} has no ${name}.`);
    const rows = block.matchAll(/\{"([^"]+)",\s*([\d.]+)f(?:\s*\/\s*([\d.]+)f)?\}/g);
    return [...rows].map(([, parameter, above, below]) => [parameter, above / (below ?? 1)]);
}

const worst = scenario("Scenarios.h", "kWorst");
const slots = scenario("processor/ProcessorBenchmark.cpp", "kDearSlots");
const rows = [
    { name: "worst case, two dearest effects", native: "WorstWithSlots", positions: [...worst, ...slots] },
    { name: "medium cloud", native: "Medium", positions: scenario("Scenarios.h", "kMedium") },
    { name: "init", native: null, positions: [] },
];
const measured = process.argv[2] ? JSON.parse(readFileSync(process.argv[2], "utf8")).benchmarks : [];
const nativePercent = (name) =>
    measured.find((row) => row.name === `BM_Processor${name}/48000`)?.core_percent;

const folder = `${mkdtempSync(`${tmpdir()}/tesserae-bench-`)}/`;
cpSync(`${here}dist`, folder, { recursive: true });
await build({
    absWorkingDir: here,
    entryPoints: { page: "tools/benchPage.ts" },
    outdir: folder,
    bundle: true,
    format: "esm",
    target: "es2022",
});
const server = await serve(folder, 0);
const browser = await chromium.launch({
    executablePath: "/usr/bin/chromium",
    args: ["--no-sandbox", "--autoplay-policy=no-user-gesture-required"],
});
try {
    const page = await browser.newPage();
    const open = async () => {
        await page.goto(`http://127.0.0.1:${server.address().port}/`);
        await page.waitForFunction(() => "bench" in globalThis);
    };
    for (const { name, native, positions } of rows) {
        await open();
        const percent = await page.evaluate((settings) => globalThis.bench.cost(settings), positions);
        const other = native && nativePercent(native);
        const ratio = other ? `, outside ${other.toFixed(2)} %, ratio ${(percent / other).toFixed(2)}` : "";
        console.log(`${name}: ${percent.toFixed(2)} % of the quantum's time${ratio}`);
    }
    await open();
    const seconds = await page.evaluate(() => globalThis.bench.firstSound());
    console.log(`first sound: ${seconds.toFixed(2)} s after the page was opened`);
} finally {
    await browser.close();
    server.closeAllConnections();
    server.close();
    rmSync(folder, { recursive: true });
}
