#include "granular/CaptureBuffer.h"

#include <algorithm>

namespace Quorvan::dsp {

namespace {

constexpr float kLongestLoop = 16.0f;       // seconds
constexpr float kAllocatedSeconds = 16.1f;  // room behind the longest loop for read-ahead
constexpr float kLongestLoopMs = 16000.0f;
/// Head positions are held to this where they come from a time, ahead of the longest loop's wrap.
constexpr float kFarthestSample = 2.0e9f;
/// Recorded stretches up to this long are zeroed on the spot.
constexpr uint32_t kZeroedAtOnce = 4096;
/// Samples of the set-aside tape that are zeroed while one is recorded.
constexpr uint32_t kZeroedPerSample = 256;

}  // namespace

void CaptureBuffer::Setup(float rate) {
    sampleRate = rate;
    allocatedLength = static_cast<int32_t>(rate * kAllocatedSeconds);
    maxLength = static_cast<uint32_t>(rate * kLongestLoop);
    const auto size = static_cast<size_t>(allocatedLength);
    for (std::vector<float>* buffer : Tape())
        buffer->assign(size, 0.0f);
    for (std::vector<float>& buffer : setAside)
        buffer.assign(size, 0.0f);
    written = asideWritten = {};
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
    const std::array<std::vector<float>*, kBuffers> tape = Tape();
    if (asideWritten.Length() == 0 && written.Length() > kZeroedAtOnce) {
        for (size_t i = 0; i < kBuffers; ++i)
            tape[i]->swap(setAside[i]);
        asideWritten = written;
    } else {
        for (std::vector<float>* buffer : tape)
            std::fill_n(buffer->begin() + written.first, written.Length(), 0.0f);
    }
    written = {};
}

void CaptureBuffer::ZeroSetAside() {
    const uint32_t count = std::min(asideWritten.Length(), kZeroedPerSample);
    asideWritten.end -= count;
    for (std::vector<float>& buffer : setAside)
        std::fill_n(buffer.begin() + asideWritten.end, count, 0.0f);
    if (asideWritten.Length() == 0)
        asideWritten = {};
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
