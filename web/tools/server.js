// Hands a folder out on this machine alone, as any static file server would.
import { createServer } from "node:http";
import { readFile } from "node:fs/promises";
import { extname, join, normalize } from "node:path";

const types = {
    ".html": "text/html; charset=utf-8",
    ".js": "text/javascript; charset=utf-8",
    ".css": "text/css; charset=utf-8",
    ".wasm": "application/wasm",
    ".svg": "image/svg+xml",
    ".webmanifest": "application/manifest+json",
};

export function serve(root, port) {
    const server = createServer(async (request, response) => {
        try {
            const { pathname } = new URL(request.url, "http://localhost");
            const path = normalize(decodeURIComponent(pathname)).replace(/\/$/, "/index.html");
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
