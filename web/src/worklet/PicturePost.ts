import { layout } from "../engine/DisplayLayout.js";
import type { EnginePlayer } from "../engine/EnginePlayer.js";
import type { FromWorklet } from "../engine/WorkletMessages.js";

/** So many pictures are under way at most; a page that is late with giving back misses some. */
const pictureRoom = 3;

/** Sends pictures to the page, in memory that goes round. */
export class PicturePost {
    isWatched = false;
    private readonly free: ArrayBuffer[] = [];

    constructor(private readonly tell: (message: FromWorklet, transfer: Transferable[]) => void) {
        for (let i = 0; i < pictureRoom; ++i) this.free.push(new ArrayBuffer(4 * layout.length));
    }

    recycle(picture: ArrayBuffer): void {
        if (picture.byteLength === 4 * layout.length && this.free.length < pictureRoom)
            this.free.push(picture);
    }

    /** Where player has a new picture. */
    send(player: EnginePlayer): void {
        if (!this.isWatched || this.free.length === 0) return;
        const numbers = player.takePicture();
        const picture = numbers ? this.free.pop() : undefined;
        if (!numbers || !picture) return;
        new Float32Array(picture).set(numbers);
        this.tell({ kind: "picture", picture }, [picture]);
    }
}
