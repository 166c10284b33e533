import type { Server } from "node:http";
import type { AddressInfo } from "node:net";
import { readFile } from "node:fs/promises";
import { type Browser, type BrowserContext, chromium } from "playwright-core";

// @ts-expect-error: plain JavaScript
import { serve } from "../../web/tools/server.js";

/** The built page on a server of its own, in a browser without a window. */
export class Served {
    private constructor(
        private readonly server: Server,
        readonly browser: Browser,
        readonly url: string,
    ) {}

    static async start(): Promise<Served> {
        // Bundled, this lies in web/build/tests.
        const dist = new URL("../../dist/", import.meta.url).pathname;
        const server = (await serve(dist, 0)) as Server;
        const executablePath = "/usr/bin/chromium";
        const args = ["--no-sandbox", "--autoplay-policy=no-user-gesture-required"];
        const browser = await chromium.launch({ executablePath, args });
        const { port } = server.address() as AddressInfo;
        return new Served(server, browser, `http://127.0.0.1:${port}/`);
    }

    /** Pages that also find the files of a folder, under test/. */
    async withFiles(folder: string): Promise<BrowserContext> {
        const context = await this.browser.newContext();
        await context.route(`${this.url}test/**`, async (route) => {
            const name = new URL(route.request().url()).pathname.replace("/test/", "");
            const contentType = name.endsWith(".js") ? "text/javascript" : "application/octet-stream";
            await route.fulfill({ body: await readFile(`${folder}/${name}`), contentType });
        });
        return context;
    }

    stopServer(): void {
        this.server.closeAllConnections();
        this.server.close();
    }
    async stop(): Promise<void> {
        await this.browser.close();
        this.stopServer();
    }
}
