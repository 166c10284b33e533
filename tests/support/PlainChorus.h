#pragma once

#include "effects/Chorus.h"
#include "modulation/LFO.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherLPF.h"
#include "primitives/SmootherSRL.h"
#include "support/PlainParts.h"
#include "support/SideBySide.h"

namespace Quorvan::test {

/// The chorus in its plainest form: lines that remember everything ever written, one sample of one
/// voice after the other, every gain and all-pass coefficient worked out on the spot in double
/// precision. Oscillators and smoothers are the system's own.
class PlainChorus {
public:
    using C = dsp::Chorus;

    PlainChorus(C& chorus, float sampleRate, uint32_t blockFrames)
        : knobs(chorus), rate(sampleRate) {
        dryWet.rampSteps = blockFrames;
        lowPass.range = Span(C::LPFfc);
        highPass.range = Span(C::HPFfc);
        SetUp({&dryWet, &delay, &depth, &feedback}, rate, 1);
        SetUp({&lowPass, &highPass}, rate, blockFrames);
        const dsp::Parameter& freq = chorus.ParameterAt(C::Freq);
        for (size_t v = 0; v < 3; ++v) {
            lfo[v].SetParameterNormalized(dsp::LFO::GateIn, 1.0f);
            lfo[v].SetParameterNormalized(dsp::LFO::Stereo, 0.0f);
            lfo[v].Setup(rate, blockFrames);
            lfo[v].Configure(dsp::LFO::RateUnSynced, dsp::PotardKind::kExponential, freq.minValue,
                             freq.maxValue, 1.0f);
            late[v] = static_cast<float>(v) * std::ceil(rate * 0.005f);
        }
        Reset(true);
    }

    void Reset(bool hard) {
        for (size_t v = 0; v < 3; ++v) {
            lfo[v].Reset(hard);
            for (size_t c = 0; c < 2; ++c)
                lines[c][v] = {};
        }
        const float middle = std::max(Samples(C::DelayMs), 2.0f);
        dryWet.Reset(knobs.Get(C::DryWet));
        delay.Reset(middle);
        depth.Reset(std::clamp(Samples(C::Depth), 0.0f, middle - 2.0f));
        lowPassHz = knobs.Get(C::LPFfc);
        highPassHz = knobs.Get(C::HPFfc);
        lowPass.Reset(lowPassHz);
        highPass.Reset(highPassHz);
        feedback.Reset(Sign() * knobs.Get(C::Feedback));
        for (uint32_t id = 0; hard && id < C::kParameterCount; ++id)
            written.insert(id);
    }

    Stereo Run(const Stereo& input, bool hasRight) {
        Update();
        written.clear();
        dryWet.SetTarget(knobs.Get(C::DryWet, 2));
        feedback.SetTarget(Sign() * knobs.Get(C::Feedback, 4));
        const auto count = static_cast<uint32_t>(input[0].size());
        std::array<Stereo, 3> swing;
        for (size_t v = 0; v < voices; ++v)
            swing[v] = Oscillate(lfo[v], count);
        const bool stereo = knobs.IsOn(C::StereoMode);
        Stereo output{Channel(count), Channel(count)};
        for (uint32_t n = 0; n < count; ++n) {
            const float left = input[0][n], right = hasRight ? input[1][n] : left;
            const std::array<float, 2> x{stereo ? left : 0.5f * (left + right), right};
            const Frame frame = NextFrame();
            for (size_t c = 0; c < (stereo ? 2 : 1); ++c) {
                double sum = 0.0;
                for (size_t v = 0; v < voices; ++v)
                    sum += Voice(lines[c][v], frame, x[c],
                                 swing[v][c][n] * frame.depth + frame.delay + late[v]);
                output[c][n] = static_cast<float>(sum);
            }
            if (!stereo)
                output[1][n] = output[0][n];
        }
        return output;
    }

    PlainKnobs<C> knobs;
    float tempo = 120.0f;
    std::set<uint32_t> written;  ///< ids that have changed since the last block

private:
    /// What one sample has in common for all voices.
    struct Frame {
        float mix, feedback, delay, depth;
    };
    struct Line {
        std::vector<double> past;
        double allpass = 0.0, low = 0.0, high = 0.0;
        double Back(size_t samples) const {
            return samples <= past.size() ? past[past.size() - samples] : 0.0;
        }
    };

    double Span(uint32_t id) {
        const dsp::Parameter& p = knobs.module.ParameterAt(id);
        return static_cast<double>(p.maxValue - p.minValue);
    }
    float Samples(uint32_t id) { return rate * 0.001f * knobs.Get(id); }
    float Sign() { return knobs.Position(C::FBPolarity) >= 0.5f ? -1.0f : 1.0f; }

    void Update() {
        const auto has = [&](uint32_t id) { return written.count(id) != 0; };
        if (has(C::DelayMs) || has(C::Depth)) {
            const float middle = std::max(Samples(C::DelayMs), 2.0f), wanted = Samples(C::Depth);
            const float held = std::clamp(wanted, 0.0f, middle - 2.0f);
            if (has(C::Depth) || held != wanted)
                depth.SetTarget(held);
            if (has(C::DelayMs))
                delay.SetTarget(middle);
        }
        if (has(C::Voices)) {
            voices = static_cast<size_t>(knobs.Get(C::Voices));
            for (size_t v = 0; v < voices; ++v)
                lfo[v].Reset(false);
        }
        if (has(C::DelayMs) || has(C::Depth) || has(C::Freq) || has(C::Voices))
            SpreadOscillators();
        if (has(C::DryWet))
            dryWet.SetTarget(knobs.Get(C::DryWet));
        for (dsp::LFO& one : lfo) {
            one.SetParameterNormalized(dsp::LFO::Stereo, knobs.Position(C::StereoMode));
            if (has(C::LFOShape))
                one.SetParameterValue(dsp::LFO::Waveform, knobs.Get(C::LFOShape));
            one.SetParameterNormalized(dsp::LFO::MidiSync, knobs.Position(C::MidiSync));
            one.SetParameterNormalized(dsp::LFO::RateSyncedType, knobs.Position(C::RateSyncedType));
            one.SetParameterValue(dsp::LFO::RateSynced, knobs.Get(C::RateSynced));
        }
        shape = knobs.Get(C::LFOShape);
        lowPass.SetTarget(knobs.Get(C::LPFfc));
        highPass.SetTarget(knobs.Get(C::HPFfc));
        lowPassHz = knobs.IsOn(C::LPFOn) ? lowPass.Tick() : lowPassHz;
        highPassHz = knobs.IsOn(C::HPFOn) ? highPass.Tick() : highPassHz;
    }

    void SpreadOscillators() {
        for (size_t v = 0; v < voices; ++v) {
            const float turn = static_cast<float>(v) * (1.0f / static_cast<float>(voices));
            lfo[v].SetParameterValue(dsp::LFO::RateUnSynced, knobs.Get(C::Freq));
            lfo[v].SetParameterValue(dsp::LFO::PhaseInit, turn * 360.0f);
            lfo[v].SetParameterValue(dsp::LFO::StereoSpread, 90.0f);
            lfo[v].SetParameterValue(dsp::LFO::Waveform, shape);
        }
    }

    Stereo Oscillate(dsp::LFO& one, uint32_t count) const {
        std::vector<float> row(dsp::kRowHeadFloats + count, knobs.rows[3].value_or(0.0f));
        row[dsp::kRowHeadFloats - 1] = knobs.rows[3] ? dsp::kRowActive : 0.0f;
        Stereo out{Channel(count), Channel(count)};
        std::array<float*, 1> inputs{row.data() + dsp::kRowHeadFloats};
        std::array<float*, 2> outputs{out[0].data(), out[1].data()};
        dsp::ProcessBlock block{.inputs = inputs.data(), .outputs = outputs.data()};
        block.numInputs = 1;
        block.numOutputs = 2;
        block.numFrames = count;
        block.tempo = tempo;
        one.Process(block);
        return out;
    }

    Frame NextFrame() {
        Frame frame{dryWet.Tick(), feedback.Tick(), delay.Tick(), depth.Tick()};
        if (frame.delay <= frame.depth)
            frame.depth = frame.delay - 1.0f;
        return frame;
    }

    double Voice(Line& line, const Frame& frame, float input, float samplesBack) {
        const auto x = static_cast<double>(input);
        const auto share = static_cast<double>(voices);
        const double angle = static_cast<double>(frame.mix) * std::numbers::pi / 2.0;
        double y = x;
        if (const float whole = std::floor(samplesBack); whole > 0.0f) {
            const auto i = static_cast<size_t>(whole);
            const auto f = static_cast<double>(samplesBack - whole);
            const double g = (1.0 - f) / (1.0 + f);
            y = line.allpass = g * (line.Back(i) - line.allpass) + line.Back(i + 1);
        }
        if (knobs.IsOn(C::LPFOn)) {
            const double k =
                1.0 / std::tan(std::numbers::pi * static_cast<double>(lowPassHz / rate));
            y = OnePole(y, line.low, 1.0, 1.0, k);
        }
        if (knobs.IsOn(C::HPFOn)) {
            const double k = static_cast<double>(rate / highPassHz) / std::numbers::pi;
            y = OnePole(y, line.high, k, -k, k);
        }
        line.past.push_back(x - y * static_cast<double>(frame.feedback));
        return std::cos(angle) * x / share + std::sin(angle) * y / std::sqrt(share);
    }

    /// (b0 + b1/z) / ((1 + k) + (1 - k)/z), by its memory of b1 x - a1 y.
    static double OnePole(double x, double& memory, double b0, double b1, double k) {
        const double y = x * b0 / (1.0 + k) + memory;
        memory = (x * b1 - y * (1.0 - k)) / (1.0 + k);
        return y;
    }

    float rate;
    std::array<dsp::LFO, 3> lfo{dsp::LFO("LFO"), dsp::LFO("LFO"), dsp::LFO("LFO")};
    std::array<float, 3> late{};
    std::array<std::array<Line, 3>, 2> lines;
    dsp::SmootherInterpLPF dryWet{0.01};
    dsp::SmootherLPF delay{0.2}, depth{0.2}, feedback{0.01};
    dsp::SmootherSRL lowPass{0.1}, highPass{0.1};
    float lowPassHz = 0.0f, highPassHz = 0.0f;
    float shape = 0.0f;
    size_t voices = 1;
};

}  // namespace Quorvan::test
