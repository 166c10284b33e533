#pragma once

#include "effects/SpaceEchoLite.h"
#include "modulation/EnvFollower.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherSRL.h"
#include "support/PlainParts.h"
#include "support/SideBySide.h"

namespace Quorvan::test {

/// Plain model of the tape echo, sample by sample: every filter is designed anew for each sample,
/// the tapes have no end.
class PlainTapeEcho {
    using E = dsp::SpaceEchoLite;

public:
    PlainTapeEcho(E& source, float sampleRate, uint32_t blockFrames)
        : knobs(source),
          rate(sampleRate),
          turn(1.0f / sampleRate),
          frames(blockFrames),
          random([] {
              const SeededClock same(1);
              return prims::SeedFromClock();
          }()),
          follower("Follower") {
        for (dsp::SmootherInterpLPF* s : {&intensity, &width, &apart, &input, &wet})
            s->rampSteps = frames;
        SetUp({&intensity, &width, &apart, &input, &wet}, rate, 1);
        high.range = 9980.0;
        low.range = 19750.0;
        SetUp({&high, &low}, rate, frames);
        follower.SetParameterValue(dsp::EnvFollower::Attack, 0.001f);
        follower.SetParameterValue(dsp::EnvFollower::Release, 0.5f);
        follower.Setup(rate, frames);
        drift.LowPass(16.461945f * turn, std::sin(16.461945f * turn) * 0.70710355f);
        Reset(true);
    }

    void Reset(bool) {
        intensity.Reset(knobs.Get(E::Intensity));
        wet.Reset(knobs.Get(E::DryWet));
        input.Reset(Linear(knobs.Get(E::InputVolume)));
        lastFlutter = Flutter();
        const float share = knobs.IsOn(E::DelayType) ? 0.0f : 0.2f * knobs.Get(E::StereoWidth);
        const auto delays = Targets(knobs.Get(E::DelayTime), knobs.Get(E::DelayTimeSynced),
                                    knobs.Get(E::DelayTimeFine), 1.0f + share);
        for (size_t c = 0; c < 2; ++c) {
            const Glide motor[] = {channels[c].up, channels[c].down};
            channels[c] = Head();
            channels[c].up = motor[0];
            channels[c].down = motor[1];
            channels[c].now = delays[c];
            for (Glide* glide : {&channels[c].up, &channels[c].down})
                glide->target = glide->current = double{delays[c]};
        }
        drift.Clear();
        follower.Reset(true);
        for (float& phase : phases)
            phase = static_cast<float>(PlainDraw(random)) * 1.4629181e-09f;
        for (size_t i = 0; i < 20; ++i) {
            const size_t k = i < 11 ? i + 1 : i - 10;
            const float octaves = std::log10(static_cast<float>(k));
            if (i < 11)
                levels[i] = k == 1 ? 50.0f : Linear(19.0f - 53.0f * octaves);
            else
                levels[i] = k == 1 ? 8.3725f : k % 2 == 0 ? Linear(17.0f - 19.0f * octaves) : 0.0f;
        }
        due = true;
    }

    Stereo Run(const Stereo& in, bool hasRight) {
        Update();
        const size_t count = in[0].size();
        const float step = (Flutter() - lastFlutter) / static_cast<float>(count);
        Stereo out = in;
        for (size_t n = 0; n < count; ++n)
            Sample(n, lastFlutter + step * static_cast<float>(n + 1),
                   {in[0][n], in[hasRight ? 1 : 0][n]}, out);
        lastFlutter += step * static_cast<float>(count);
        float *from = levelView.data(), *to = envelopeView.data();
        dsp::ProcessBlock block{.inputs = &from, .outputs = &to};
        block.numInputs = block.numOutputs = 1;
        block.numFrames = static_cast<uint32_t>(count);
        follower.Process(block);
        meter = envelopeView[0] > 0.4f ? 1.0f : 0.0f;
        return out;
    }

    PlainKnobs<E> knobs;
    float meter = 0.0f;

private:
    /// One-pole that ends with a jump as long as its first step, at most.
    struct Glide {
        double target = 0.0, current = 0.0, threshold = 1e-6;
        double Step(double wanted, double coefficient) {
            if (wanted != target) {
                target = wanted;
                const bool far = std::abs(current - wanted) >= threshold;
                const double first = far ? (wanted - current) * coefficient : wanted - current;
                threshold = std::max(std::abs(first), 1e-6);
            }
            const bool far = std::abs(current - target) >= threshold;
            return current = far ? current + (target - current) * coefficient : target;
        }
    };
    struct Head {
        PlainLine tape, wobble, gap;
        PlainBiquad highPass, lowPass, record, playback, head[5], loss, bump;
        float gapSum = 0.0f, dcIn = 0.0f, dcOut = 0.0f, now = 0.0f;
        Glide up, down;
        // Of this sample.
        float taken = 0.0f, recorded = 0.0f, played = 0.0f, e = 0.0f;
    };

    static float Linear(float db) { return std::pow(10.0f, db * 0.05f); }
    std::array<float, 2> Targets(float time, float note, float fine, float factor) {
        const auto type = static_cast<int>(knobs.Get(E::DelayTimeType));
        float base = (time + fine) * (rate * 0.001f);
        if (type != 0) {
            const float t = std::clamp(PlainNote(static_cast<int>(note), tempo), 0.01f, 4.0f) *
                            PlainKind(type - 1);
            base = (t + fine * 0.001f) * rate;
        }
        return {std::clamp(base, 0.01f * rate, 4.0f * rate),
                std::clamp(base * factor, 0.01f * rate, 4.0f * rate)};
    }

    /// Both banks moved on by a full block.
    float Flutter() {
        float sums[2] = {};
        for (size_t i = 0; i < 20; ++i) {
            const auto k = static_cast<float>(i < 11 ? i + 1 : i - 10);
            const float frequency = i < 11 ? flutterHz : flutterHz * 0.14285715f;
            const float p =
                k * frequency * turn * static_cast<float>(frames) + phases[i] * 0.15915494f;
            phases[i] = (p - std::trunc(p)) * 6.2831855f;
            sums[i < 11 ? 0 : 1] += PlainSine(phases[i]) * levels[i];
        }
        return sums[0] + sums[1];
    }

    static void Shelf(PlainBiquad& f, float w, float a, float b) {
        const float c = std::cos(w), k = std::sin(w) * b, a0 = (a + 1) - (a - 1) * c + k;
        f.b0 = a * ((a + 1) + (a - 1) * c + k) / a0;
        f.b1 = -2 * a * ((a - 1) + (a + 1) * c) / a0;
        f.b2 = a * ((a + 1) + (a - 1) * c - k) / a0;
        f.a1 = 2 * ((a - 1) - (a + 1) * c) / a0;
        f.a2 = ((a + 1) - (a - 1) * c - k) / a0;
    }

    /// Designs the losses for a delay in milliseconds.
    void Losses(Head& c, float delayMs) const {
        static const float rowsOf[14][5] = {{60, 16000.0f, 0.8f, 16100.0f, 0.49f},
                                            {61, 16000.0f, 0.8f, 15790.7f, 0.48935f},
                                            {71, 16000.0f, 0.8f, 12800.0f, 0.48f},
                                            {83, 16000.0f, 0.8f, 10068.3f, 0.48f},
                                            {84, 16000.0f, 0.8f, 9919.2f, 0.47838f},
                                            {96, 16000.0f, 0.8f, 8534.6f, 0.45069f},
                                            {97, 16000.0f, 0.8f, 8423.4f, 0.45f},
                                            {110, 16000.0f, 0.8f, 7000.0f, 0.45f},
                                            {124, 15619.0f, 0.78095f, 6238.1f, 0.45f},
                                            {125, 15591.2f, 0.77956f, 6189.0f, 0.44978f},
                                            {138, 15208.8f, 0.76044f, 5711.0f, 0.44022f},
                                            {139, 15188.0f, 0.7594f, 5676.1f, 0.4394f},
                                            {150, 15000.0f, 0.75f, 5300.0f, 0.43f},
                                            {162, 14500.0f, 0.75f, 5000.0f, 0.4f}};
        const float ms = std::clamp(delayMs, 60.0f, 162.0f);
        size_t r = 0;
        while (r < 12 && ms > rowsOf[r + 1][0])
            ++r;
        const float* const from = rowsOf[r];
        const float* const to = rowsOf[r + 1];
        const float share = (ms - from[0]) / (to[0] - from[0]);
        const auto column = [=](int k) { return (1.0f - share) * from[k] + share * to[k]; };
        const auto design = [this](PlainBiquad& filter, float frequency, float q) {
            const float w = 6.2831855f * frequency * turn;
            filter.LowPass(w, std::sin(w) * 0.5f / q);
        };
        for (PlainBiquad& stage : c.head)
            design(stage, column(1), column(2));
        design(c.loss, column(3), column(4));
    }

    void Update() {
        pingPong = knobs.IsOn(E::DelayType);
        intensity.SetTarget(0.915f * knobs.Get(E::Intensity, 5));
        wet.SetTarget(2.0f * knobs.Get(E::DryWet, 2));
        input.SetTarget(Linear(knobs.Get(E::InputVolume, 6)));
        for (const auto& [smoother, id, row] :
             {std::tuple{&high, E::HPFreq, 8u}, {&low, E::LPFreq, 9u}})
            due ? smoother->Reset(knobs.Get(id, row)) : smoother->SetTarget(knobs.Get(id, row));
        due = false;
        const float highHz = high.Tick(), lowHz = low.Tick();
        apart.SetTarget(pingPong ? knobs.Get(E::StereoWidthPP, 7) : 0.0f);
        width.SetTarget(pingPong ? 0.0f : knobs.Get(E::StereoWidth, 7));
        tempo = 120.0f;
        const float factor = 1.0f + 0.2f * width.Tick();
        targets = Targets(knobs.Get(E::DelayTime, 3), knobs.Get(E::DelayTimeSynced, 3),
                          knobs.Get(E::DelayTimeFine, 4), factor);
        apart.FillBlock(apartView.data(), frames);
        input.FillBlock(inputView.data(), frames);
        wet.FillBlock(wetView.data(), frames);
        blockMs = std::clamp(Longer() * 1000.0f * turn, 60.0f, 1000.0f);
        flutterHz =
            std::min(blockMs <= 174.0f ? std::max(11.22f - blockMs * 0.05973f, 0.0001f)
                                       : std::max(1.0108747f - blockMs * 0.001010775f, 0.001f),
                     100.0f);
        for (Head& c : channels) {
            c.highPass.FlatHighPass(highHz, rate);
            c.lowPass.FlatLowPass(lowHz, rate);
            c.bump.HighPass(628.31854f * turn, std::sin(628.31854f * turn));
            Shelf(c.record, 17592.92f * turn, 1.4125376f, 1.828465f);
            Shelf(c.playback, 17592.92f * turn, 0.70794576f, 1.2944541f);
        }
    }

    float Longer() const { return std::max(channels[0].now, channels[1].now); }

    void Sample(size_t n, float flutter, const std::array<float, 2>& in, Stereo& out) {
        const float conf = knobs.Get(E::ConfInGainCompensated) + 20.0f;
        const float noise = 4.0f * (static_cast<float>(PlainDraw(random)) * 2.3283064e-10f) - 2.0f;
        const float drifted = drift.Run(noise);
        std::array<float, 2> w{};
        for (size_t c = 0; c < 2; ++c) {
            Head& k = channels[c];
            k.taken = k.lowPass.Run(k.highPass.Run(in[c] * (inputView[n] * Linear(conf))));
            k.recorded = k.record.Run(k.taken);
            w[c] = Play(c, flutter, drifted);
        }
        const float fb = intensity.Tick();
        Head &l = channels[0], &r = channels[1];
        if (pingPong) {
            const float back = r.played * fb;
            r.tape.Write(l.e);
            l.tape.Write(0.5f * (r.recorded + l.recorded) + back);
            levelView[n] = std::max(0.5f * (r.taken + l.taken) + back, l.e);
            const float mid = 0.5f * (w[0] + w[1]), p = apartView[n];
            w = {(1 - p) * mid + p * w[0], (1 - p) * mid + p * w[1]};
        } else {
            l.tape.Write(l.e * fb + l.recorded);
            r.tape.Write(r.e * fb + r.recorded);
            levelView[n] = std::max(r.e * fb + r.taken, l.e * fb + l.taken);
        }
        for (size_t c = 0; c < 2; ++c)
            out[c][n] = std::min(wetView[n], 1.0f) * Linear(-conf) * w[c] +
                        std::clamp(2.0f - wetView[n], 0.0f, 1.0f) * in[c];
    }

    /// From the motor to behind the DC block.
    float Play(size_t index, float flutter, float drifted) {
        Head& c = channels[index];
        const auto pole = [this](double seconds) {
            return 1.0 - std::exp(-5.0 / (seconds * double{rate}));
        };
        const bool rises = targets[index] > c.now;
        if (targets[index] != c.now) {
            Glide& moving = rises ? c.up : c.down;
            Glide& resting = rises ? c.down : c.up;
            c.now =
                static_cast<float>(moving.Step(double{targets[index]}, pole(rises ? 2.0 : 1.0)));
            resting.target = resting.current = double{c.now};
        }
        Losses(c, c.now * 1000.0f * turn);
        const float d = std::clamp(c.now, 0.060000002f * rate, 0.162f * rate) * turn;
        const bool combed = index == 0 || !pingPong;
        const float gap = combed ? d * (rate * 0.09130434f) : 0.0f;
        const float gapMix = (288.96002f - d * 1257.6f) * turn;
        const float m = std::clamp(Longer() * 1000.0f * turn, 60.0f, 1000.0f);
        const float depth = blockMs <= 134.0f   ? m * 0.000616f - 0.020960001f
                            : blockMs <= 174.0f ? m * 0.0014640001f - 0.1344f
                            : blockMs <= 200.0f ? m * 0.00092f - 0.040640004f
                                                : m * 0.00022f + 0.1f;
        const float mod = (depth * flutter + drifted * 56.101246f) * (rate * 2.0833333e-05f);
        const float total = c.wobble.At(static_cast<int32_t>(c.now - gap)) * 0.9f + mod;
        c.wobble.Write(mod);
        c.played = c.tape.Polynomial(total + c.now - gap);
        float h = c.playback.Run(std::tanh(1.08f * c.played));
        for (PlainBiquad& stage : c.head)
            h = stage.Run(h);
        h = c.bump.Run(c.loss.Run(h));
        c.e = h;
        if (combed) {
            c.gapSum += h - c.gap.Polynomial(2.0f * gap);
            c.e = c.gap.Polynomial(gap) * (1.00052f - gapMix) + gapMix * c.gapSum;
        }
        c.gap.Write(h);
        const float a = rate * 0.03099442f, share = 1.0f / (a + 1.0f);
        c.dcOut = (c.e - c.dcIn) * (rate * 0.030054422f * share) - c.dcOut * ((1.0f - a) * share);
        c.dcIn = c.e;
        return c.dcOut;
    }

    float rate, turn;
    uint32_t frames;
    uint32_t random;
    std::array<Head, 2> channels;
    std::array<float, 2> targets{};
    std::array<float, 20> phases{}, levels{};
    PlainBiquad drift;
    dsp::EnvFollower follower;
    bool due = true, pingPong = false;
    float tempo = 100.0f, flutterHz = 0.0f, lastFlutter = 0.0f, blockMs = 60.0f;
    dsp::SmootherInterpLPF intensity{0.1}, width{0.01}, apart{0.1}, input{0.1}, wet{0.2};
    dsp::SmootherSRL high{0.004}, low{0.004};
    std::vector<float> apartView = std::vector<float>(frames), inputView = apartView,
                       wetView = apartView, levelView = apartView, envelopeView = apartView;
};

}  // namespace Quorvan::test
