/** Name that the processor is registered by. */
export const tapName = "tesserae-record";

export const tapChannels = 2;
/** Frames of one piece, some 85 ms. */
export const pieceFrames = 4096;

export type ToTap =
    | { readonly kind: "start" }
    | { readonly kind: "stop" }
    /** The memory of a piece, given back. */
    | { readonly kind: "recycle"; readonly samples: Float32Array<ArrayBuffer> };

export type FromTap =
    /** Left, right, left, ...: `frames` frames of it. */
    | {
          readonly kind: "piece";
          readonly samples: Float32Array<ArrayBuffer>;
          readonly frames: number;
      }
    /** All that was recorded has come. */
    | { readonly kind: "end" };
