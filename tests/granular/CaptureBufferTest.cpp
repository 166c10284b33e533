#include "granular/CaptureBuffer.h"

#include "support/PlainParts.h"

namespace Quorvan::dsp {
namespace {

constexpr float kRate = 2000.0f;
constexpr uint32_t kFrames = 8;

double Frac(double x) { return x - std::floor(x); }

/// The tape as one list of rules, with everything zeroed outright.
struct PlainTape {
    explicit PlainTape(float sampleRate)
        : rate(sampleRate), maxLength(static_cast<uint32_t>(rate * 16.0f)) {
        ZeroAll();
    }
    void ZeroAll() {
        for (auto* buffer : {&left[0], &left[1], &right[0], &right[1], &mono})
            buffer->assign(static_cast<size_t>(rate * 16.1f), 0.0f);
    }
    uint32_t Effective() const { return writePosition == length ? length + 1 : length; }
    uint32_t Samples(float seconds) const {
        return static_cast<uint32_t>(
            std::clamp(std::floor(seconds * rate), 0.0f, static_cast<float>(maxLength)));
    }
    void SetLength(float seconds, float units) {
        length = previousLength = targetLength = Samples(seconds);
        lengthUnits = units;
        resync = true;
        if (frozen)
            return;
        ZeroAll();
        markers.clear();
        writePosition = 0;
        playPosition = 0.0;
    }
    void Reset() {
        writePosition = 0;
        playPosition = lastWrapped = 0.0;
        lastClock = 0.0f;
        freeWrap = false;
        markers.clear();
        ZeroAll();
        previousLength = length;
    }
    void Write(float l, float r, float a) {
        const uint32_t w = writePosition;
        left[pass][w] = (1.0f - a) * l + a * left[1 - pass][w];
        right[pass][w] = (1.0f - a) * r + a * right[1 - pass][w];
        mono[w] = (left[pass][w] + right[pass][w]) * 0.5f;
    }
    void Free() {
        writePosition = (writePosition + 1) % length;
        previousLength = length;
        if (writePosition == 0)
            pass = 1 - pass;
    }
    void Locked(float c, const CaptureBuffer::Transport& transport, bool firstSample) {
        uint32_t w = writePosition;
        if (transport.songPosition >= 0.0f)
            ++w;
        const auto units = static_cast<double>(lengthUnits);
        const double wrapped = Frac(static_cast<double>(c) / units) * units;
        const bool jump = std::abs(c - lastClock) > 1.0f || resync;
        if (jump) {
            resync = false;
            freeWrap = true;
        }
        if (jump || lastWrapped <= wrapped || std::abs(wrapped - lastWrapped) <= 1.0) {
            if (freeWrap && (w %= length) == 0) {
                pass = 1 - pass;
                if (marking)
                    markers.clear();
            }
        } else {
            if (marking && !markers.empty() && w < length)
                std::erase_if(markers, [w](int32_t at) { return at >= static_cast<int32_t>(w); });
            if (!freeWrap)
                length = previousLength = std::max(w, 1u);  // a pre-roll may end a lap at once
            w = 0;
            freeWrap = resync = false;
            pass = 1 - pass;
        }
        if (transport.started && firstSample) {
            const float t =
                transport.wholeNote * static_cast<float>(wrapped / units) * transport.typeFactor;
            w = static_cast<uint32_t>(t * rate);
            length = targetLength;
            if (marking)
                markers.clear();
            freeWrap = false;
        }
        if (w >= length)
            length = w;
        if (w >= maxLength) {
            length = maxLength;
            w %= maxLength;
            pass = 1 - pass;
        }
        writePosition = w;
        lastClock = c;
        lastWrapped = wrapped;
    }
    void PlayHead(const CaptureBuffer::Transport& transport, bool firstSample) {
        double p = playbackMode == 1 ? writePosition - double{offsetSamples} : playPosition;
        if (playbackMode == 0 && transport.songPosition >= 0.0f)
            p += speed;
        const double wrap = writePosition >= length ? writePosition + 1.0 : length;
        if (p <= 0.0)
            p += wrap;
        p = Frac(p / wrap) * wrap;
        if (playbackMode == 0 && retrig && writePosition == 0)
            p = 0.0;
        if (playbackMode == 0 && transport.started && firstSample)
            p = writePosition;
        playPosition = p;
    }
    void StartTransport(float manual) {
        const double size = length;
        playPosition = playbackMode == 0   ? 0.0
                       : playbackMode == 1 ? Frac((size - double{offsetSamples}) / size) * size
                                           : double{manual} * size;
        if (!frozen)
            writePosition = 0;
    }

    float rate;
    std::vector<float> left[2], right[2], mono;
    uint32_t maxLength;
    uint32_t pass = 0, length = 1, previousLength = 1, targetLength = 1, writePosition = 0;
    float lengthUnits = 1.0f, lastClock = 0.0f, offsetSamples = 0.0f;
    double lastWrapped = 0.0, playPosition = 0.0, speed = 0.0;
    bool freeWrap = false, resync = false, frozen = false, retrig = false, marking = false;
    int32_t playbackMode = 0;
    std::vector<int32_t> markers;
};

/// A host that plays, stops, jumps, changes tempo and turns every knob of the tape.
class Take : private Dice {
public:
    explicit Take(uint32_t seed) : Dice(seed), plain(kRate) {
        tape.Setup(kRate);
        SetLength();
        tape.Reset();
        plain.Reset();
    }

    void Block() {
        tape.Wipe();
        if (Chance(0.03f))
            Knob();
        if (Chance(0.02f))
            song = Between(-1.0f, 40.0f);
        started = Chance(0.02f) && !playing;
        if (started || Chance(0.01f))
            playing = started;
        if (started)
            StartTransport();
        const CaptureBuffer::Transport transport{playing, started, static_cast<float>(song),
                                                 240.0f / tempo, typeFactor};
        for (uint32_t n = 0; n < kFrames; ++n)
            Sample(n, transport);
        if (!playing && !plain.marking && !tape.frozen && !tape.retrigPlayHead && Chance(0.02f))
            Stretch(transport);
    }
    void ExpectSame(bool content) {
        // The play head to the last bit: it decides on which side of the write head a grain starts.
        EXPECT_EQ(
            std::tuple(tape.writePosition, tape.length, tape.previousLength, tape.targetLength,
                       tape.activePass, tape.playPosition, tape.freeWrap, tape.EffectiveLength()),
            std::tuple(plain.writePosition, plain.length, plain.previousLength, plain.targetLength,
                       plain.pass, plain.playPosition, plain.freeWrap, plain.Effective()));
        std::vector<int32_t> markers;
        for (uint32_t i = 0; i < ring.Count(); ++i)
            markers.push_back(ring[i]);
        EXPECT_EQ(markers, plain.markers);
        if (!markers.empty()) {
            const int32_t near = markers[Below(ring.Count())] + static_cast<int32_t>(Below(3)) - 1;
            EXPECT_EQ(ring.Neighbours(near), PlainNeighbours(markers, near));
        }
        if (!content)
            return;
        EXPECT_TRUE(std::ranges::equal(tape.mono, plain.mono));
        for (uint32_t p = 0; p < 2; ++p) {
            EXPECT_TRUE(std::ranges::equal(tape.left[p], plain.left[p]));
            EXPECT_TRUE(std::ranges::equal(tape.right[p], plain.right[p]));
        }
    }

    CaptureBuffer tape;
    MarkerRing ring;
    PlainTape plain;
    uint32_t laps = 0, clears = 0;
    size_t fullest = 0;  ///< most markers

private:
    void Sample(uint32_t n, const CaptureBuffer::Transport& transport) {
        const auto clock = static_cast<float>(song * 16.0);
        if (!tape.frozen) {
            const float l = Between(-1.0f, 1.0f), r = Between(-1.0f, 1.0f);
            tape.Write(l, r, persistence);
            plain.Write(l, r, persistence);
            const uint32_t before = tape.activePass;
            if (playing) {
                tape.AdvanceLocked(clock, transport, n == 0, ring);
                plain.Locked(clock, transport, n == 0);
            } else {
                tape.AdvanceFree();
                plain.Free();
            }
            laps += tape.activePass != before ? 1u : 0u;
            if (plain.marking)
                Mark(static_cast<int32_t>(tape.writePosition));
        }
        EXPECT_EQ(tape.AdvancePlayHead(transport, n == 0), tape.writePosition == 0);
        plain.PlayHead(transport, n == 0);
        if (playing)
            song += static_cast<double>(tempo) / 60.0 / static_cast<double>(kRate);
    }
    /// The head drops the marker that it meets, and leaves one now and then.
    void Mark(int32_t head) {
        auto& markers = plain.markers;
        if (!markers.empty() && markers.front() == head) {
            ring.DropFront();
            markers.erase(markers.begin());
        }
        if (!Chance(0.1f) || (!markers.empty() && markers.back() == head))
            return;
        fullest = std::max(fullest, markers.size());
        if (markers.size() == 200)
            markers.erase(markers.begin());
        ring.Push(head);
        markers.push_back(head);
    }
    /// Many samples at once, as the tape takes them where nothing else moves.
    void Stretch(const CaptureBuffer::Transport& transport) {
        const uint32_t count = 1 + Below(2000);
        const std::vector<float> l = Noise(count, count), r = Noise(count + 1, count);
        std::vector<float> share(count);
        for (float& kept : share)
            kept = Between(0.0f, 0.8f);
        tape.RunFree(l.data(), r.data(), share.data(), count, transport);
        for (uint32_t i = 0; i < count; ++i) {
            plain.Write(l[i], r[i], share[i]);
            plain.Free();
            plain.PlayHead(transport, false);
        }
    }
    void StartTransport() {
        const float manual = Unit();
        tape.StartTransport(manual);
        plain.StartTransport(manual);
    }
    void SetLength() {
        const float notes = std::exp2(std::floor(Between(-3.0f, 3.0f)));
        const float seconds = notes * (240.0f / tempo) * typeFactor;
        if (!tape.frozen)
            ring.Clear();
        tape.SetLength(seconds, notes * 64.0f);
        plain.SetLength(seconds, notes * 64.0f);
        EXPECT_FLOAT_EQ(tape.lengthMs, std::min(seconds * 1000.0f, 16000.0f));
    }
    void SetTempo() {
        tempo = std::exp2(Between(3.9f, 8.2f));
        typeFactor = Chance(0.5f) ? 1.5f : 1.0f;
        const float seconds = plain.lengthUnits / 64.0f * (240.0f / tempo) * typeFactor;
        tape.SetTargetLength(seconds);
        plain.targetLength = plain.Samples(seconds);
        EXPECT_FLOAT_EQ(tape.lengthMs, std::min(seconds * 1000.0f, 16000.0f));
    }
    void Knob() {
        const std::function<void()> knobs[] = {
            [this] { SetLength(); },
            [this] { SetTempo(); },
            [this] { tape.frozen = plain.frozen = Chance(0.3f); },
            [this] {
                tape.Clear();
                plain.ZeroAll();
                ring.Clear();
                plain.markers.clear();
                ++clears;
            },
            [this] { persistence = Between(0.0f, 0.8f); },
            [this] {
                tape.playbackMode = plain.playbackMode = static_cast<int32_t>(Below(3));
                if (tape.playbackMode == CaptureBuffer::kFollow)
                    Follow();
            },
            [this] {
                tape.speed = plain.speed = double{Between(-2.0f, 2.0f)};
                tape.retrigPlayHead = plain.retrig = Chance(0.5f);
            },
            [this] {
                plain.marking = Chance(0.5f);
                tape.quantizationMode =
                    plain.marking ? CaptureBuffer::kTransients : CaptureBuffer::kFree;
                ring.Clear();
                plain.markers.clear();
            },
            [this] {
                const float seconds = Between(0.0f, 2.0f);
                tape.SetOffset(seconds);
                plain.offsetSamples =
                    std::min(seconds * kRate, static_cast<float>(plain.Effective()));
            }};
        knobs[Below(9)]();
    }
    void Follow() {
        tape.PlaceFollower();
        const double d = plain.writePosition - double{plain.offsetSamples};
        const double size = plain.Effective();
        plain.playPosition = Frac((d <= 0.0 ? d + size : d) / size) * size;
    }

    double song = 0.0;  // quarter notes
    float tempo = 120.0f;
    float typeFactor = 1.0f;
    float persistence = 0.0f;
    bool playing = false, started = false;
};

TEST(CaptureBufferTest, FollowsThePlainRulesThroughWholeTakes) {
    uint32_t laps = 0, clears = 0;
    size_t fullest = 0;
    for (uint32_t seed = 0; seed < 40; ++seed) {
        Take take(seed);
        for (uint32_t block = 0; block < 3000; ++block) {
            take.Block();
            SCOPED_TRACE("seed " + std::to_string(seed) + " block " + std::to_string(block));
            take.ExpectSame(block % 500 == 499);
            if (HasFailure())
                return;
        }
        laps += take.laps;
        clears += take.clears;
        fullest = std::max(fullest, take.fullest);
    }
    EXPECT_GT(laps, 200u);
    EXPECT_GT(clears, 100u);
    EXPECT_EQ(fullest, 200u);
}

}  // namespace
}  // namespace Quorvan::dsp
