/**
 * What tesserae.wasm asks of the system around it: the time, and the calls of a C library that never
 * come to anything here, because the engine opens no file and writes to no terminal.
 */
export function systemCalls(memory: () => WebAssembly.Memory): WebAssembly.Imports {
    const badFile = 8;
    return {
        wasi_snapshot_preview1: {
            /** Nanoseconds. The audio thread has no clock finer than a millisecond. */
            clock_time_get(_clock: number, _precision: bigint, at: number): number {
                const now = BigInt(Math.round(Date.now() * 1e6));
                new DataView(memory().buffer).setBigUint64(at, now, true);
                return 0;
            },
            fd_close: () => badFile,
            fd_seek: () => badFile,
            fd_write: () => badFile,
            proc_exit(code: number): never {
                throw new Error(`The engine has ended with code ${code}.`);
            },
        },
    };
}
