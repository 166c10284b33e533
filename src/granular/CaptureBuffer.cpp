#include "granular/CaptureBuffer.h"

#include <algorithm>
#include <bit>

#include "primitives/RepeatedSum.h"

namespace Quorvan::dsp {

namespace {

constexpr float kLongestLoop = 16.0f;       // seconds
constexpr float kAllocatedSeconds = 16.1f;  // room behind the longest loop for read-ahead
constexpr float kLongestLoopMs = 16000.0f;
/// Head positions are held to this where they come from a time, ahead of the longest loop's wrap.
constexpr float kFarthestSample = 2.0e9f;
/// The longest tape is wiped in so many blocks.
constexpr uint32_t kWipingBlocks = 64;

uint64_t ExponentOf(double x) { return std::bit_cast<uint64_t>(x) >> 52; }

}  // namespace

void CaptureBuffer::Setup(float rate) {
    sampleRate = rate;
    allocatedLength = static_cast<int32_t>(rate * kAllocatedSeconds);
    maxLength = static_cast<uint32_t>(rate * kLongestLoop);
    const auto size = static_cast<size_t>(allocatedLength);
    for (ZeroedArray* buffer : Tape())
        buffer->Allocate(size);
    for (ZeroedArray& buffer : spare)
        buffer.Allocate(size);
    written = dirty = {};
    length = std::clamp(length, 1u, maxLength);
}

void CaptureBuffer::Reset() {
    writePosition = 0;
    playPosition = 0.0;
    lastClock = 0.0f;
    lastWrapped = 0.0;
    freeWrap = false;
    Clear();
    previousLength = length;
}

void CaptureBuffer::Clear() {
    if (written.Length() == 0)
        return;
    ++clears;
    // Before the spare set is clean again, there is little on the tape.
    const bool isSpareClean = dirty.Length() == 0;
    for (size_t i = 0; i < kBuffers; ++i) {
        if (isSpareClean)
            Tape()[i]->Swap(spare[i]);
        else
            Tape()[i]->Zero(written.first, written.end);
    }
    if (isSpareClean)
        dirty = written;
    written = {};
}

void CaptureBuffer::Wipe() {
    if (dirty.Length() == 0)
        return;
    const uint32_t most = static_cast<uint32_t>(allocatedLength) / kWipingBlocks + 1;
    const uint32_t end = dirty.first + std::min(most, dirty.Length());
    for (ZeroedArray& buffer : spare)
        buffer.Zero(dirty.first, end);
    dirty.first = end;
}

void CaptureBuffer::RunFree(const float* inLeft, const float* inRight, const float* persistence,
                            uint32_t count, const Transport& transport) {
    uint32_t done = 0;
    while (done < count) {
        // A loop that has just become shorter is left by one sample.
        const uint32_t room = writePosition < length ? length - writePosition : 1;
        const uint32_t n = std::min(count - done, room);
        WriteStretch(inLeft + done, inRight + done, persistence + done, n);
        writePosition += n - 1;
        AdvanceFree();
        done += n;
    }
    // While it scans, the play head goes its own way; else only its last place counts.
    RunPlayHead(playbackMode == kScan ? count : 1, transport);
}

bool CaptureBuffer::RunLocked(const float* inLeft, const float* inRight, const float* persistence,
                              uint32_t count, float firstClock, float lastClockOfAll,
                              const Transport& transport) {
    const auto units = static_cast<double>(lengthUnits);
    const double firstTurn = static_cast<double>(firstClock) / units;
    const double lastTurn = static_cast<double>(lastClockOfAll) / units;
    const double firstWrapped = Wrap(static_cast<double>(firstClock), units);
    // Neither the clock jumps nor does a lap end, nor does the head reach the end of the loop.
    const bool follows = !resync && std::abs(firstClock - lastClock) <= 1.0f &&
                         lastClockOfAll - firstClock <= 1.0f && lastWrapped <= firstWrapped &&
                         firstTurn >= 0.0 && std::floor(firstTurn) == std::floor(lastTurn);
    const uint32_t end = writePosition + count;
    if (!follows || !(transport.songPosition >= 0.0f) || end >= length || end >= maxLength)
        return false;
    WriteStretch(inLeft, inRight, persistence, count);
    writePosition = end;
    lastClock = lastClockOfAll;
    lastWrapped = Wrap(static_cast<double>(lastClockOfAll), units);
    RunPlayHead(playbackMode == kFollow ? 1 : count, transport);
    return true;
}

/// Steps of the play head while the write head stands.
void CaptureBuffer::RunPlayHead(uint32_t count, const Transport& transport) {
    const bool scans = playbackMode == kScan && transport.songPosition >= 0.0f && !retrigPlayHead;
    if (scans && writePosition < length) {
        Scan(count, static_cast<double>(length));
        return;
    }
    for (uint32_t i = 0; i < count; ++i)
        AdvancePlayHead(transport, false);
}

/// Steps of a play head that scans. Where the wrap gives back each place as it was, it is left out.
void CaptureBuffer::Scan(uint32_t count, double wrap) {
    double p = playPosition;
    if (const double first = p + speed; IsWrapExact(first, wrap)) {
        const double last = RepeatedSum(p, speed, count).End();
        if (IsWrapExact(last, wrap) && ExponentOf(last) == ExponentOf(first)) {
            playPosition = last;
            return;
        }
    }
    for (uint32_t i = 0; i < count; ++i) {
        p += speed;
        if (p <= 0.0)
            p += wrap;
        p = Wrap(p, wrap);
    }
    playPosition = p;
}

/// Whether Wrap answers x itself, and does so for all between two such x of one power of two. Where
/// the fraction of x is below that of wrap, the quotient lies between a half and 1, but for a power
/// of two. Its rounding, times wrap, is less than half of the last place of x, so that the product
/// is rounded to x; but an x that is a power of two has half as much room below.
bool CaptureBuffer::IsWrapExact(double x, double wrap) {
    constexpr uint64_t kFraction = (uint64_t{1} << 52) - 1;
    const uint64_t fraction = std::bit_cast<uint64_t>(x) & kFraction;
    return x > 1.0 && x < wrap && fraction != 0 &&
           fraction < (std::bit_cast<uint64_t>(wrap) & kFraction);
}

void CaptureBuffer::WriteStretch(const float* inLeft, const float* inRight,
                                 const float* persistence, uint32_t count) {
    const uint32_t w = writePosition;
    const auto record = [=](const float* in, const float* old, float* out) {
        for (uint32_t i = 0; i < count; ++i)
            out[i] = (1.0f - persistence[i]) * in[i] + persistence[i] * old[i];
    };
    float* const l = left[activePass].data() + w;
    float* const r = right[activePass].data() + w;
    record(inLeft, left[activePass ^ 1u].data() + w, l);
    record(inRight, right[activePass ^ 1u].data() + w, r);
    float* const m = mono.data() + w;
    for (uint32_t i = 0; i < count; ++i)
        m[i] = (l[i] + r[i]) * 0.5f;
    written.Include(w, w + count);
}

uint32_t CaptureBuffer::SamplesOf(float seconds) const {
    const float samples = std::floor(seconds * sampleRate);
    // A loop holds one sample at least, so that the heads always have something to wrap at.
    return static_cast<uint32_t>(std::clamp(samples, 1.0f, static_cast<float>(maxLength)));
}

void CaptureBuffer::SetLength(float seconds, float clockUnits) {
    length = SamplesOf(seconds);
    lengthMs = std::clamp(seconds * 1000.0f, 0.0f, kLongestLoopMs);
    lengthUnits = clockUnits;
    if (!frozen) {
        Clear();
        writePosition = 0;
        playPosition = 0.0;
    }
    previousLength = targetLength = length;
    resync = true;
}

void CaptureBuffer::SetTargetLength(float seconds) {
    targetLength = SamplesOf(seconds);
    lengthMs = std::clamp(seconds * 1000.0f, 0.0f, kLongestLoopMs);
}

void CaptureBuffer::SetOffset(float seconds) {
    offsetSamples = std::clamp(seconds * sampleRate, 0.0f, static_cast<float>(EffectiveLength()));
}

void CaptureBuffer::AdvanceLocked(float clock, const Transport& transport, bool firstSample,
                                  MarkerRing& markers) {
    uint32_t w = writePosition + (transport.songPosition >= 0.0f ? 1u : 0u);
    const double wrapped = Wrap(static_cast<double>(clock), static_cast<double>(lengthUnits));

    bool jump = false;
    if (std::abs(clock - lastClock) > 1.0f || resync) {
        jump = true;
        resync = false;
        freeWrap = true;
    }
    const bool marking = quantizationMode == kTransients;
    if (jump || lastWrapped <= wrapped || std::abs(wrapped - lastWrapped) <= 1.0) {
        if (freeWrap) {
            w %= length;
            if (w == 0) {
                activePass ^= 1u;
                if (marking)
                    markers.Clear();
            }
        }
    } else {
        if (marking && markers.Count() > 0 && w < length)
            markers.DropFrom(static_cast<int32_t>(w));
        // The lap just finished is the exact loop at the present tempo.
        if (!freeWrap)
            length = previousLength = std::max(w, 1u);
        w = 0;
        freeWrap = false;
        resync = false;
        activePass ^= 1u;
    }
    if (transport.started && firstSample) {
        const float seconds = transport.wholeNote *
                              static_cast<float>(wrapped / static_cast<double>(lengthUnits)) *
                              transport.typeFactor;
        const float samples = seconds * sampleRate;
        w = static_cast<uint32_t>(std::min(samples, kFarthestSample));
        length = targetLength;
        if (marking)
            markers.Clear();
        freeWrap = false;
    }
    if (w >= length)
        length = w;
    if (w >= maxLength) {
        length = maxLength;
        w %= maxLength;
        activePass ^= 1u;
    }
    writePosition = w;
    lastClock = clock;
    lastWrapped = wrapped;
}

bool CaptureBuffer::AdvancePlayHead(const Transport& transport, bool firstSample) {
    double p = playPosition;
    if (playbackMode == kFollow)
        p = static_cast<double>(writePosition) - static_cast<double>(offsetSamples);
    else if (playbackMode == kScan && transport.songPosition >= 0.0f)
        p += speed;
    const double wrap = static_cast<double>(writePosition >= length ? writePosition + 1 : length);
    if (p <= 0.0)
        p += wrap;
    // Also where it lies in the loop: at whole speeds the rounding decides on which side of the
    // write head or of a grid line the play head counts as standing.
    p = Wrap(p, wrap);
    const bool atStart = writePosition == 0;
    if (playbackMode == kScan) {
        if (retrigPlayHead && atStart)
            p = 0.0;
        if (transport.started && firstSample)
            p = static_cast<double>(writePosition);
    }
    playPosition = p;
    return atStart;
}

void CaptureBuffer::StartTransport(float manual) {
    const double loop = static_cast<double>(length);
    if (playbackMode == kFollow)
        playPosition = Wrap(loop - static_cast<double>(offsetSamples), loop);
    else if (playbackMode == kManual)
        playPosition = static_cast<double>(manual) * loop;
    else
        playPosition = 0.0;
    if (!frozen)
        writePosition = 0;
}

void CaptureBuffer::PlaceFollower() {
    const double loop = static_cast<double>(EffectiveLength());
    double p = static_cast<double>(writePosition) - static_cast<double>(offsetSamples);
    if (p <= 0.0)
        p += loop;
    playPosition = Wrap(p, loop);
}

}  // namespace Quorvan::dsp
