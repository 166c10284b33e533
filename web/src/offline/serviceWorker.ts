/**
 * Keeps all files of the page, as one version that is whole or not there: a new build gets a store of
 * its own, and the old one goes when nobody uses it any more.
 */

/** Written in by the build: the files, and a sum over all they hold. */
declare const FILES: readonly string[];
declare const VERSION: string;

interface LifeEvent extends Event {
    waitUntil(work: Promise<unknown>): void;
}
interface FetchEvent extends LifeEvent {
    readonly request: Request;
    respondWith(answer: Promise<Response>): void;
}

/** Of this page: another copy of it on the same server keeps its own. */
const prefix = `tesserae ${new URL("./", self.location.href).pathname} `;
const store = prefix + VERSION;

async function keepAll(): Promise<void> {
    const cache = await caches.open(store);
    // Past the browser's own cache, which may still hold files of the version before.
    await cache.addAll(FILES.map((file) => new Request(file, { cache: "reload" })));
}

async function dropOthers(): Promise<void> {
    const names = await caches.keys();
    const others = names.filter((name) => name.startsWith(prefix) && name !== store);
    await Promise.all(others.map((name) => caches.delete(name)));
}

async function answer(request: Request): Promise<Response> {
    const cache = await caches.open(store);
    const kept = await cache.match(request, { ignoreSearch: true });
    return kept ?? fetch(request);
}

self.addEventListener("install", (event) => (event as LifeEvent).waitUntil(keepAll()));
self.addEventListener("activate", (event) => (event as LifeEvent).waitUntil(dropOthers()));
self.addEventListener("fetch", (event) => {
    const { request } = event as FetchEvent;
    if (request.method === "GET" && new URL(request.url).origin === self.location.origin)
        (event as FetchEvent).respondWith(answer(request));
});
