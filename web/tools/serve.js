// serve.js [PORT]: hands web/dist/ out on this machine alone, as any static file server would.
import { createServer } from "node:http";
import { readFile } from "node:fs/promises";
import { extname, join, normalize } from "node:path";

const root = new URL("../dist/", import.meta.url).pathname;
const types = {
    ".html": "text/html; charset=utf-8",
    ".js": "text/javascript; charset=utf-8",
    ".css": "text/css; charset=utf-8",
    ".wasm": "application/wasm",
    ".svg": "image/svg+xml",
    ".webmanifest": "application/manifest+json",
};

export function serve(port) {
    const server = createServer(async (request, response) => {
        const { pathname } = new URL(request.url, "http://localhost");
        const path = normalize(decodeURIComponent(pathname)).replace(/\/$/, "/index.html");
        try {
            const content = await readFile(join(root, path));
            const type = types[extname(path)] ?? "application/octet-stream";
            response.writeHead(200, { "Content-Type": type, "Cache-Control": "no-cache" });
            response.end(content);
        } catch {
            response.writeHead(404).end();
        }
    });
    return new Promise((resolve, reject) => {
        server.on("error", reject);
        server.listen(port, "127.0.0.1", () => resolve(server));
    });
}

if (process.argv[1] === new URL(import.meta.url).pathname) {
    const port = Number(process.argv[2] ?? 8080);
    serve(port).then(
        () => console.log(`Tesserae is at http://127.0.0.1:${port}/ until Ctrl-C.`),
        (problem) => {
            console.error(`It cannot be served on port ${port}: ${problem.message}`);
            process.exit(1);
        },
    );
}
