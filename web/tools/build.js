// Bundles the page's scripts and lays everything that a static file server needs into dist/.
import { cp, mkdir, rm } from "node:fs/promises";
import { build } from "esbuild";

const out = new URL("../dist/", import.meta.url).pathname;
const here = new URL("../", import.meta.url).pathname;

await mkdir(out, { recursive: true });
await build({
    absWorkingDir: here,
    // One file each: the page, the audio thread, the worker that renders, the one that keeps all
    // of it for use without a network.
    entryPoints: {
        page: "src/page.ts",
        audio: "src/worklet/audio.ts",
        render: "src/worker/render.ts",
    },
    outdir: out,
    bundle: true,
    format: "esm",
    target: "es2022",
    minify: true,
    legalComments: "none",
    logLevel: "warning",
});
await cp(`${here}static`, out, { recursive: true });
await rm(`${out}.gitkeep`, { force: true });
