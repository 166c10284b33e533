// Bundles the page's scripts and lays everything that a static file server needs into dist/.
import { createHash } from "node:crypto";
import { cpSync, mkdirSync, readdirSync, readFileSync, rmSync } from "node:fs";
import { build } from "esbuild";

const here = new URL("../", import.meta.url).pathname;
const out = `${here}dist`;

/** One file for each script, without anything that is fetched later. */
function bundle(entryPoints, define = {}) {
    return build({
        absWorkingDir: here,
        entryPoints,
        outdir: out,
        define,
        bundle: true,
        format: "esm",
        target: "es2022",
        minify: true,
        legalComments: "none",
        logLevel: "warning",
    });
}

rmSync(out, { recursive: true, force: true });
mkdirSync(out);
cpSync(`${here}static`, out, { recursive: true });
cpSync(`${here}build/engine/web/engine/tesserae.wasm`, `${out}/tesserae.wasm`);
await bundle({
    page: "src/page.ts",
    audio: "src/worklet/audio.ts",
    render: "src/worker/render.ts",
});

// What is kept for use without a network is all that lies there, under the sum of it.
const files = readdirSync(out).sort();
const sum = createHash("sha256");
for (const file of files) sum.update(file).update(readFileSync(`${out}/${file}`));
await bundle(
    { offline: "src/offline/serviceWorker.ts" },
    {
        FILES: JSON.stringify(["./", ...files]),
        VERSION: JSON.stringify(sum.digest("hex").slice(0, 16)),
    },
);
