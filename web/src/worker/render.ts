import type { RenderAnswer, RenderOrder } from "../engine/RenderMessages.js";
import { renderFile } from "./renderFile.js";

function tell(answer: RenderAnswer, transfer: Transferable[] = []): void {
    self.postMessage(answer, { transfer });
}

self.onmessage = ({ data }: MessageEvent<RenderOrder>) => {
    try {
        const channels = renderFile(data, (share) => tell({ kind: "progress", share }));
        tell(
            { kind: "done", channels },
            channels.map((channel) => channel.buffer),
        );
    } catch (problem) {
        tell({ kind: "failed", problem: `The render has failed: ${String(problem)}` });
    }
};
