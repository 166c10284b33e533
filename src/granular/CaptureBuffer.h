#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "granular/MarkerRing.h"
#include "primitives/ZeroedArray.h"

namespace Quorvan::dsp {

/// The tape of the granular engine: a stereo loop of up to 16 seconds that the input is written
/// into and all grains read from, with a write head and a play head that says where the next grain
/// starts.
///
/// While the transport runs, loop length and write head are locked to the song clock; while it
/// stands, the loop runs by itself. Two passes alternate in each channel: the one being written and
/// the round before it, so that grains can read on both sides of the write head and the old round
/// can be fed into the new one.
///
/// The grain engine reads the fields directly; the operations below are the only writers.
struct CaptureBuffer {
    enum PlaybackMode : int32_t { kScan = 0, kFollow = 1, kManual = 2 };
    enum QuantizationMode : int32_t { kFree = 0, kTransients = 1, kGrid = 2 };

    /// What the heads need to know of one block.
    struct Transport {
        bool playing = false;
        bool started = false;       ///< the transport has started with this block
        float songPosition = 0.0f;  ///< quarter notes; negative in a pre-roll
        float wholeNote = 2.0f;     ///< seconds
        float typeFactor = 1.0f;    ///< triplet or dotted factor of the grain size mode
    };

    /// Takes the memory for the longest loop at a rate in hertz.
    void Setup(float rate);
    /// Empties the tape and puts the heads at 0.
    void Reset();
    /// Empties all five buffers: a clean set takes their place, and what stands in them is wiped
    /// bit by bit over the next blocks.
    void Clear();
    /// Once a block, ahead of all else: goes on wiping. Costs some hundredths of the block.
    void Wipe();

    /// Loop of units whole notes, unitsOfClock song clock units long, from now on. Unless frozen,
    /// the tape is emptied and the heads go to 0; the caller empties the markers then.
    void SetLength(float seconds, float clockUnits);
    /// The length that a new tempo asks for; the loop takes it at its next lap or start.
    void SetTargetLength(float seconds);
    /// Distance of the follow mode's play head behind the write head.
    void SetOffset(float seconds);

    /// Loop length at which read positions wrap.
    uint32_t EffectiveLength() const { return length + (writePosition == length ? 1u : 0u); }

    /// Records one stereo sample at the write head over the persisting share of the old pass.
    /// Answers the mono sample recorded.
    float Write(float inputLeft, float inputRight, float persistence) {
        const uint32_t w = writePosition;
        const uint32_t other = activePass ^ 1u;
        const float l = (1.0f - persistence) * inputLeft + persistence * left[other][w];
        const float r = (1.0f - persistence) * inputRight + persistence * right[other][w];
        left[activePass][w] = l;
        right[activePass][w] = r;
        const float mean = (l + r) * 0.5f;
        mono[w] = mean;
        written.Include(w, w + 1);
        return mean;
    }
    /// One step of the write head by itself, while the transport stands.
    void AdvanceFree() {
        ++writePosition;
        if (writePosition >= length)
            writePosition %= length;
        previousLength = length;
        if (writePosition == 0)
            activePass ^= 1u;
    }
    /// count samples of Write, AdvanceFree and AdvancePlayHead at once, while the transport stands
    /// and no head is watched for passing the loop's start.
    void RunFree(const float* inLeft, const float* inRight, const float* persistence,
                 uint32_t count, const Transport& transport);
    /// count samples of Write, AdvanceLocked and AdvancePlayHead at once, on a clock that climbs
    /// from first to last inside one of its cycles; false, and nothing is done, where more can
    /// happen than that the heads move on. Not for the first sample of a transport start, nor where
    /// a head is watched.
    bool RunLocked(const float* inLeft, const float* inRight, const float* persistence,
                   uint32_t count, float firstClock, float lastClockOfAll,
                   const Transport& transport);
    /// One step of the write head locked to the song clock, in units of sixty-fourth notes.
    void AdvanceLocked(float clock, const Transport& transport, bool firstSample,
                       MarkerRing& markers);
    /// One step of the play head. Answers whether the write head stands at the loop's start.
    bool AdvancePlayHead(const Transport& transport, bool firstSample);

    /// Puts the play head where a transport start wants it; manual is the position 0..1 of the
    /// manual mode.
    void StartTransport(float manual);
    /// The follow mode's play head behind the write head, on a change of the playback mode.
    void PlaceFollower();

    ZeroedArray left[2], right[2];  ///< two passes of each channel
    ZeroedArray mono;               ///< mean of the present pass; the display reads it
    int32_t allocatedLength = 0;    ///< samples in each of the vectors
    uint32_t maxLength = 0;         ///< longest loop, in samples
    uint32_t activePass = 0;        ///< the pass being written
    uint32_t length = 1;            ///< loop length in samples
    uint32_t previousLength = 1;    ///< wrap of the second read position of new grains
    uint32_t targetLength = 1;      ///< what the present tempo asks for
    float lengthMs = 0.0f;          ///< at most 16000
    float lengthUnits = 1.0f;       ///< loop length in units of the song clock
    float lastClock = 0.0f;         ///< song clock at the last sample
    double lastWrapped = 0.0;       ///< the same, wrapped to lengthUnits
    bool freeWrap = false;  ///< not yet aligned with the clock: the head wraps by itself at length
    bool resync = false;    ///< the next sample counts as a clock jump
    uint32_t clears = 0;    ///< so far, for whoever follows what is on the tape
    uint32_t writePosition = 0;
    bool frozen = false;
    double playPosition = 0.0;   ///< samples
    double speed = 0.0;          ///< samples per sample
    float offsetSamples = 0.0f;  ///< follow mode: play head behind the write head
    int32_t playbackMode = kScan;
    int32_t quantizationMode = kFree;
    int32_t offsetType = 0;  ///< 0 absolute, 1 straight, 2 triplet, 3 dotted
    bool retrigPlayHead = false;
    bool retrigSequencer = false;

private:
    static constexpr size_t kBuffers = 5;

    /// Everything outside of it is zero.
    struct Stretch {
        uint32_t first = UINT32_MAX, end = 0;

        uint32_t Length() const { return end > first ? end - first : 0; }
        void Include(uint32_t from, uint32_t to) {
            first = std::min(first, from);
            end = std::max(end, to);
        }
    };

    std::array<ZeroedArray*, kBuffers> Tape() {
        return {&left[0], &left[1], &right[0], &right[1], &mono};
    }
    void WriteStretch(const float* inLeft, const float* inRight, const float* persistence,
                      uint32_t count);
    void RunPlayHead(uint32_t count, const Transport& transport);
    void Scan(uint32_t count, double wrap);
    static bool IsWrapExact(double x, double wrap);
    uint32_t SamplesOf(float seconds) const;
    /// Loops x into 0..wrap.
    static double Wrap(double x, double wrap) {
        const double turns = x / wrap;
        // Within the loop there is nothing to take off, and the library's floor would be a call.
        return (turns >= 0.0 && turns < 1.0 ? turns : turns - std::floor(turns)) * wrap;
    }

    float sampleRate = 44100.0f;
    Stretch written;
    std::array<ZeroedArray, kBuffers> spare;  ///< the set that waits for the next Clear
    Stretch dirty;                            ///< of the spare set
};

}  // namespace Quorvan::dsp
