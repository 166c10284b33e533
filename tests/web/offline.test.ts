import assert from "node:assert/strict";
import { test } from "node:test";
import { Served } from "./served.js";

test("the page works without a network, asks nobody else, and runs no script in its text", async () => {
    const served = await Served.start();
    try {
        const context = await served.browser.newContext();
        const strangers: string[] = [];
        context.on("request", (request) => {
            if (!request.url().startsWith(served.url)) strangers.push(request.url());
        });
        const page = await context.newPage();
        const problems: string[] = [];
        page.on("pageerror", (problem) => problems.push(String(problem)));
        page.on("console", (message) => {
            if (message.type() === "error") problems.push(message.text());
        });
        await page.goto(served.url);
        await page.evaluate(() => navigator.serviceWorker.ready);
        served.stopServer();
        await page.reload();
        await page.getByRole("button", { name: "Play" }).first().click();
        await page.getByRole("button", { name: "Stop", exact: true }).waitFor();
        assert.deepEqual([...strangers, ...problems], []);
        await page.addScriptTag({ content: "document.title = 'run'" }).catch(() => undefined);
        assert.notEqual(await page.title(), "run");
    } finally {
        await served.stop();
    }
});
