#pragma once

#include "effects/Delay.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherLPF.h"
#include "primitives/SmootherSRL.h"
#include "support/PlainParts.h"
#include "support/SideBySide.h"

namespace Quorvan::test {

/// The echo in its plainest form: lines that remember everything ever written, one sample after the
/// other. The filters run in single precision, whose rounding decides at low corners. Smoothers are
/// the system's own.
class PlainDelay {
public:
    using D = dsp::Delay;

    PlainDelay(D& delay, float sampleRate, uint32_t blockFrames)
        : knobs(delay), rate(sampleRate), blockSize(blockFrames) {
        wet.rampSteps = apart.rampSteps = blockSize;
        highCorner.range = 9980.0;
        lowCorner.range = 19750.0;
        SetUp({&wet, &apart, &time, &offset}, rate, 1);
        SetUp({&highCorner, &lowCorner}, rate, blockSize);
        Reset(true);
    }

    void Reset(bool) {
        past = {};
        for (PlainBiquad* filter : {&high[0], &high[1], &low[0], &low[1]})
            filter->Clear();
        synced = knobs.IsOn(D::MidiSync);
        time.Reset(Time(knobs.Get(D::DelayTimeMs), knobs.Get(D::DelayTimeSynced)));
        offset.Reset(knobs.Get(D::StereoWidth));
        wet.Reset(2.0f * knobs.Get(D::Wet));
        highCorner.Reset(knobs.Get(D::HPFreq));
        lowCorner.Reset(knobs.Get(D::LPFreq));
    }

    Stereo Run(const Stereo& input, bool hasRight) {
        synced = knobs.IsOn(D::MidiSync);
        type = static_cast<int>(knobs.Get(D::RateSyncedType));
        const bool pingPong = knobs.IsOn(D::StereoMode);
        const float vibrato = Ms() * knobs.Get(D::VibratoMaxAmount) * knobs.rows[9].value_or(0.0f);
        const float wanted = Time(knobs.Get(D::DelayTimeMs, 3), knobs.Get(D::DelayTimeSynced, 3)) +
                             knobs.Get(D::DelayFineMs, 8) * Ms() + vibrato;
        time.SetTarget(std::clamp(wanted, std::floor(2.0f * Ms()), std::floor(4000.0f * Ms())));
        const std::vector<float> delays = Fill(time);
        dsp::Smoother& width = pingPong ? static_cast<dsp::Smoother&>(apart) : offset;
        width.SetTarget(knobs.Get(pingPong ? D::StereoWidthPP : D::StereoWidth, 7));
        const std::vector<float> widths = Fill(width);
        const bool between = knobs.rows[3] || knobs.rows[9] || (!pingPong && knobs.rows[7]) ||
                             !time.IsAtRest() || !offset.IsAtRest();
        restingBlocks += between ? 0 : 1;
        wet.SetTarget(2.0f * knobs.Get(D::Wet, 2));
        const std::vector<float> mix = Fill(wet);
        const float feedback = knobs.Get(D::Feedback, 4);
        highCorner.SetTarget(knobs.Get(D::HPFreq, 5));
        lowCorner.SetTarget(knobs.Get(D::LPFreq, 6));
        const float highNow = highCorner.Tick(), lowNow = lowCorner.Tick();
        for (size_t c = 0; c < 2; ++c) {
            high[c].FlatHighPass(highNow, rate);
            low[c].FlatLowPass(lowNow, rate);
        }

        Stereo output = input;
        for (size_t i = 0; i < input[0].size(); ++i) {
            const float left = input[0][i], right = hasRight ? input[1][i] : 0.0f;
            const float longer = pingPong ? 0.0f : widths[i];
            const float echoLeft = Read(past[0], delays[i], between);
            const float echoRight = Read(past[1], (longer + 1.0f) * delays[i], between);
            const float first = low[0].Run(high[0].Run(echoLeft));
            const float second = low[1].Run(high[1].Run(echoRight));
            std::array<float, 2> heard{first, second};
            if (pingPong) {
                past[0].Write(0.5f * (left + right) + echoRight * feedback);
                past[1].Write(first);
                const float mean = 0.5f * (first + echoRight);
                heard = {mean + widths[i] * (first - mean), mean + widths[i] * (echoRight - mean)};
            } else {
                past[0].Write(left + feedback * first);
                past[1].Write(right + feedback * second);
            }
            const float wetShare = std::min(mix[i], 1.0f), dryShare = std::min(2.0f - mix[i], 1.0f);
            output[0][i] = heard[0] * wetShare + left * dryShare;
            output[1][i] = heard[1] * wetShare + right * dryShare;
        }
        return output;
    }

    PlainKnobs<D> knobs;
    float tempo = 100.0f;
    uint32_t restingBlocks = 0;  ///< that read at whole samples

private:
    float Ms() const { return rate * 0.001f; }
    float Time(float ms, float note) const {
        if (!synced)
            return ms * Ms();
        for (int i = static_cast<int>(note);; --i) {
            const float straight = std::max(240.0f / tempo * std::ldexp(1.0f, i - 5), 0.0001f);
            const float seconds = straight * std::array{1.0f, 0.6666667f, 1.5f}.at(size_t(type));
            if (i == 0 || seconds <= 4.0f)
                return seconds * rate;
        }
    }
    std::vector<float> Fill(dsp::Smoother& smoother) const {
        std::vector<float> values(blockSize);
        for (float& value : values)
            value = smoother.Tick();
        return values;
    }
    static float Read(const PlainLine& line, float delay, bool between) {
        return between ? line.Polynomial(delay) : line.At(static_cast<int32_t>(delay));
    }

    float rate;
    uint32_t blockSize;
    bool synced = true;
    int type = 0;
    std::array<PlainLine, 2> past;
    std::array<PlainBiquad, 2> high, low;
    dsp::SmootherInterpLPF wet{0.002}, apart{0.002};
    dsp::SmootherLPF time{0.2}, offset{0.2};
    dsp::SmootherSRL highCorner{0.004}, lowCorner{0.004};
};

}  // namespace Quorvan::test
