/**
 * Has the browser keep the page for use without a network, from its next loading on. Answers whether
 * it will; pages that were opened from a disk, and some private windows, cannot.
 */
export async function keepOffline(url: string): Promise<boolean> {
    try {
        await navigator.serviceWorker.register(url);
        return true;
    } catch {
        return false;
    }
}
