// Bundles tests/web/ for node, and what of it runs inside the page, into build/tests/.
import { readdirSync } from "node:fs";
import { build } from "esbuild";

const here = new URL("../", import.meta.url).pathname;
const tests = new URL("../../tests/web/", import.meta.url).pathname;
const all = {
    absWorkingDir: here,
    outdir: `${here}build/tests`,
    bundle: true,
    format: "esm",
    target: "es2022",
    logLevel: "warning",
};
const files = readdirSync(tests).filter((file) => file.endsWith(".test.ts"));
await build({
    ...all,
    entryPoints: files.map((file) => tests + file),
    platform: "node",
    packages: "external",
});
await build({ ...all, entryPoints: [`${tests}harness.ts`] });
