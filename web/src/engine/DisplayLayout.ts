/**
 * How the engine lays a picture out in one array of 32-bit floats: offsets in it, and how many
 * numbers lie there. The C++ side writes it (web/engine/DisplayPacket.cpp), and says its whole
 * length, which has to be `length`.
 */
export const layout = {
    /** Single numbers. */
    number: 0,
    seconds: 1,
    tempo: 2,
    beat: 3,
    playing: 4,
    tapeSeconds: 5,
    writePlace: 6,
    playPlace: 7,
    pairsStarted: 8,
    moments: 9,
    limiter: 10,
    grainCount: 11,
    markerCount: 12,
    /** Left and right of each. */
    input: 16,
    wet: 18,
    feedback: 20,
    output: 22,
    tapeLowest: 24,
    tapeHighest: 1048,
    /** Seven rows of 64. */
    sources: 2072,
    follower: 2520,
    spaceX: 2584,
    spaceY: 2648,
    destinations: 2712,
    markers: 2807,
    grains: 3007,
    length: 5587,
} as const;

export const tapeColumns = 1024;
export const momentsKept = 64;
export const sourceCount = 7;
export const destinationCount = 95;
export const markerRoom = 200;
export const grainRoom = 258;
/** Numbers of one grain. */
export const grainFields = 10;
