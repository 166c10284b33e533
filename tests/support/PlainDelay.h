#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "effects/Delay.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherLPF.h"
#include "primitives/SmootherSRL.h"
#include "support/ModuleRig.h"

namespace Quorvan::test {

/// The echo in its plainest form: lines that remember everything ever written, one sample after the
/// other. The filters run in single precision, whose rounding decides at low corners. Smoothers are
/// the system's own; the knobs are read off the parameter records of the module that it is held
/// against.
class PlainDelay {
public:
    using D = dsp::Delay;
    using Rows = std::array<std::optional<float>, 10>;  ///< by input channel

    PlainDelay(dsp::Delay& delay, float sampleRate, uint32_t blockFrames)
        : knobs(delay), rate(sampleRate), blockSize(blockFrames) {
        const auto setUp = [&](dsp::Smoother& smoother, uint32_t stepLength) {
            smoother.stepLength = stepLength;
            smoother.sampleRate = static_cast<double>(rate);
            smoother.UpdateCoefficients();
        };
        wet.rampSteps = apart.rampSteps = blockSize;
        highCorner.range = 9980.0;
        lowCorner.range = 19750.0;
        for (dsp::Smoother* s : std::array<dsp::Smoother*, 4>{&wet, &apart, &time, &offset})
            setUp(*s, 1);
        setUp(highCorner, blockSize);
        setUp(lowCorner, blockSize);
        Reset();
    }

    void Reset() {
        past = {};
        filters = {};
        synced = knobs.Value(D::MidiSync) > 0.5f;
        time.Reset(Time(knobs.Value(D::DelayTimeMs), knobs.Value(D::DelayTimeSynced)));
        offset.Reset(knobs.Value(D::StereoWidth));
        wet.Reset(2.0f * knobs.Value(D::Wet));
        highCorner.Reset(knobs.Value(D::HPFreq));
        lowCorner.Reset(knobs.Value(D::LPFreq));
    }

    /// One block.
    Stereo Run(const Stereo& input, bool hasRight, const Rows& rows, float beatsPerMinute) {
        tempo = beatsPerMinute;
        synced = knobs.Value(D::MidiSync) > 0.5f;
        type = static_cast<int>(knobs.Value(D::RateSyncedType));
        const bool pingPong = knobs.Value(D::StereoMode) > 0.5f;
        const float vibrato = rows[9] ? Ms() * knobs.Value(D::VibratoMaxAmount) * *rows[9] : 0.0f;
        const float wanted =
            Time(Moved(D::DelayTimeMs, rows[3]), Moved(D::DelayTimeSynced, rows[3])) +
            Moved(D::DelayFineMs, rows[8]) * Ms() + vibrato;
        time.SetTarget(std::clamp(wanted, std::floor(2.0f * Ms()), std::floor(4000.0f * Ms())));
        const std::vector<float> delays = Fill(time);
        if (!pingPong)
            offset.SetTarget(Moved(D::StereoWidth, rows[7]));
        const std::vector<float> longer = pingPong ? std::vector<float>(blockSize) : Fill(offset);
        if (pingPong)
            apart.SetTarget(Moved(D::StereoWidthPP, rows[7]));
        const std::vector<float> widths = pingPong ? Fill(apart) : std::vector<float>(blockSize);
        const bool between =
            rows[3] || rows[9] || (!pingPong && rows[7]) || !time.IsAtRest() || !offset.IsAtRest();
        restingBlocks += between ? 0 : 1;
        wet.SetTarget(2.0f * Moved(D::Wet, rows[2]));
        const std::vector<float> mix = Fill(wet);
        const float feedback = Moved(D::Feedback, rows[4]);
        highCorner.SetTarget(Moved(D::HPFreq, rows[5]));
        lowCorner.SetTarget(Moved(D::LPFreq, rows[6]));
        const Section high = HighPass(highCorner.Tick()), low = LowPass(lowCorner.Tick());

        Stereo output = input;
        for (size_t i = 0; i < input[0].size(); ++i) {
            const float left = input[0][i], right = hasRight ? input[1][i] : 0.0f;
            const float echoLeft = Read(past[0], delays[i], between);
            const float echoRight = Read(past[1], (longer[i] + 1.0f) * delays[i], between);
            const float first = filters[0][1].Run(low, filters[0][0].Run(high, echoLeft));
            const float second = filters[1][1].Run(low, filters[1][0].Run(high, echoRight));
            std::array<float, 2> heard{first, second};
            if (pingPong) {
                past[0].push_back(0.5f * (left + right) + echoRight * feedback);
                past[1].push_back(first);
                const float mean = 0.5f * (first + echoRight);
                heard = {mean + widths[i] * (first - mean), mean + widths[i] * (echoRight - mean)};
            } else {
                past[0].push_back(left + feedback * first);
                past[1].push_back(right + feedback * second);
            }
            const float wetShare = std::min(mix[i], 1.0f), dryShare = std::min(2.0f - mix[i], 1.0f);
            output[0][i] = heard[0] * wetShare + left * dryShare;
            output[1][i] = heard[1] * wetShare + right * dryShare;
        }
        return output;
    }

    uint32_t restingBlocks = 0;  ///< that read at whole samples

private:
    struct Section {
        float b0, b1, b2, a1, a2;
    };
    struct Memory {
        float x1 = 0.0f, x2 = 0.0f, y1 = 0.0f, y2 = 0.0f;
        float Run(const Section& s, float x) {
            const float y = s.b0 * x + s.b1 * x1 + s.b2 * x2 - s.a1 * y1 - s.a2 * y2;
            x2 = std::exchange(x1, x);
            y2 = std::exchange(y1, y);
            return y;
        }
    };

    float Ms() const { return rate * 0.001f; }
    float Moved(uint32_t id, const std::optional<float>& row) {
        if (!row)
            return knobs.Value(id);
        return knobs.ParameterAt(id).ValueOf(std::clamp(knobs.Position(id) + *row, 0.0f, 1.0f));
    }
    /// In samples, by the parameter that is in force.
    float Time(float ms, float note) const {
        if (!synced)
            return ms * Ms();
        const float factor = type == 0 ? 1.0f : type == 1 ? 0.6666667f : 1.5f;
        for (int i = static_cast<int>(note);; --i) {
            const float seconds =
                std::max(240.0f / tempo * std::ldexp(1.0f, i - 5), 0.0001f) * factor;
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
    /// RBJ's sections with a Q of the square root of a half.
    Section HighPass(float hertz) const {
        const float w = 6.2831855f * hertz * (1.0f / rate), c = std::cos(w);
        const float alpha = std::sin(w) * 0.70710355f, n = 1.0f / (1.0f + alpha);
        const float b1 = -(1.0f + c) * n;
        return {-0.5f * b1, b1, -0.5f * b1, -2.0f * c * n, (1.0f - alpha) * n};
    }
    Section LowPass(float hertz) const {
        const float w = 6.2831855f * hertz * (1.0f / rate), c = std::cos(w);
        const float alpha = std::sin(w) * 0.70710355f, n = 1.0f / (1.0f + alpha);
        const float b1 = (1.0f - c) * n;
        return {0.5f * b1, b1, 0.5f * b1, -2.0f * c * n, (1.0f - alpha) * n};
    }
    /// Whole samples, or the curve of the fifth degree through the two samples around, which takes
    /// slope and curvature at both from their neighbours.
    static float Read(const std::vector<float>& line, float delay, bool between) {
        const auto at = [&line](size_t back) {
            return back <= line.size() ? static_cast<double>(line[line.size() - back]) : 0.0;
        };
        const auto whole = static_cast<size_t>(delay);
        if (!between)
            return static_cast<float>(at(whole));
        const double x = static_cast<double>(delay - static_cast<float>(whole));
        const double p = at(whole - 1), a = at(whole), b = at(whole + 1), q = at(whole + 2);
        const double slopeA = (b - p) / 2.0, slopeB = (q - a) / 2.0;
        const double curveA = p - 2.0 * a + b, curveB = a - 2.0 * b + q;
        const double c3 =
            10.0 * (b - a) - 6.0 * slopeA - 4.0 * slopeB - 1.5 * curveA + 0.5 * curveB;
        const double c4 = 15.0 * (a - b) + 8.0 * slopeA + 7.0 * slopeB + 1.5 * curveA - curveB;
        const double c5 = 6.0 * (b - a) - 3.0 * (slopeA + slopeB) + 0.5 * (curveB - curveA);
        return static_cast<float>(a +
                                  x * (slopeA + x * (0.5 * curveA + x * (c3 + x * (c4 + x * c5)))));
    }

    dsp::Delay& knobs;
    float rate;
    uint32_t blockSize;
    float tempo = 100.0f;
    bool synced = true;
    int type = 0;
    std::array<std::vector<float>, 2> past;
    std::array<std::array<Memory, 2>, 2> filters;
    dsp::SmootherInterpLPF wet{0.002}, apart{0.002};
    dsp::SmootherLPF time{0.2}, offset{0.2};
    dsp::SmootherSRL highCorner{0.004}, lowCorner{0.004};
};

}  // namespace Quorvan::test
