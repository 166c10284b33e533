// pictures.js FOLDER: photographs the page in web/dist/ while it plays, at three widths.
import { chromium } from "playwright-core";
import { serve } from "./server.js";

const folder = process.argv[2];
const pictures = [
    { name: "page-360", width: 360, height: 800, colorScheme: "dark", preset: "Dense Cloud" },
    { name: "page-1280", width: 1280, height: 860, colorScheme: "dark", preset: "Pentatonic Choir" },
    { name: "page-2560", width: 2560, height: 1320, colorScheme: "light", preset: "Clockwork Arpeggio" },
];
/** The tape is full by then, and grains are under way. */
const playedMs = 6000;

const server = await serve(new URL("../dist/", import.meta.url).pathname, 0);
const browser = await chromium.launch({
    executablePath: "/usr/bin/chromium",
    args: ["--no-sandbox", "--autoplay-policy=no-user-gesture-required"],
});
for (const { name, width, height, colorScheme, preset } of pictures) {
    const context = await browser.newContext({ viewport: { width, height }, colorScheme });
    const page = await context.newPage();
    await page.goto(`http://127.0.0.1:${server.address().port}/`);
    await page.getByRole("option").filter({ hasText: preset }).click();
    await page.getByRole("toolbar").getByRole("button", { name: "Play", exact: true }).click();
    await page.evaluate(() => scrollTo(0, 0));
    await page.waitForTimeout(playedMs);
    await page.screenshot({ path: `${folder}/${name}.png` });
    await context.close();
}
await browser.close();
server.close();
