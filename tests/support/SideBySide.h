#pragma once

#include "support/ModuleRig.h"
#include "support/SeededClock.h"
#include "support/Test.h"

// What all comparisons of an effect with its plain model have in common.
namespace Quorvan::test {

constexpr std::array<float, 3> kRates{44100.0f, 48000.0f, 96000.0f};

/// Blocks of about a millisecond, as the processor makes them.
inline uint32_t BlockOf(float rate) { return static_cast<uint32_t>(rate * 0.001f) / 4 * 4; }

/// What outputs hold before an effect runs.
constexpr float kStale = 0.75f;

/// By turns of 100 blocks: noise, clicks in silence, a sine beside a constant, and bursts.
inline Stereo SignalOfBlock(uint32_t number, uint32_t length, float rate) {
    switch (number / 100 % 4) {
        case 0:
            return {Noise(number, length, 0.8f), Noise(number + 100000, length, 0.8f)};
        case 1: {
            Stereo clicks{Channel(length), Channel(length)};
            clicks[number % 2][number % length] = number % 10 == 0 ? 1.0f : 0.0f;
            return clicks;
        }
        case 2:
            return {Sine(997.0, double{rate}, length, 0.7f), Channel(length, 0.3f)};
        default:
            return {Bursts(number, length, 0.9f), Bursts(number + 100000, length, 0.9f)};
    }
}

/// An effect at the block size of its rate.
template <class M>
struct EffectRig : ModuleRig<M> {
    explicit EffectRig(float sampleRate = 48000.0f)
        : ModuleRig<M>(sampleRate, BlockOf(sampleRate), ""), rate(sampleRate) {}
    void Set(uint32_t id, float value) { this->module.SetParameterValue(id, value); }
    void SetPosition(uint32_t id, float position) {
        this->module.SetParameterNormalized(id, position);
    }

    float rate;
};

/// Seconds after which a rested echo gives an impulse back, left and right: the middles of the
/// energy.
template <class M>
std::array<double, 2> EchoSeconds(EffectRig<M>& rig) {
    const auto second = static_cast<size_t>(rig.rate);
    for (int times = 0; times < 2; ++times) {  // switches and tempo are told, glides end
        rig.Run({Channel(2 * second), Channel(2 * second)});
        rig.module.Reset(true);
    }
    const Stereo echo = rig.Run(Impulse(5 * second));
    std::array<double, 2> middles{};
    for (size_t c = 0; c < 2; ++c) {
        double energy = 0.0, moment = 0.0;
        for (size_t i = 0; i < echo[c].size(); ++i) {
            const double power = double{echo[c][i]} * double{echo[c][i]};
            energy += power;
            moment += power * static_cast<double>(i);
        }
        middles[c] = moment / energy / static_cast<double>(rig.rate);
    }
    return middles;
}

/// A block of a comparison. Every seventh is a short one, and of fifty some lack the right input.
inline Stereo BlockInput(uint32_t number, float rate) {
    return SignalOfBlock(number, BlockOf(rate) - (number % 7 == 3 ? 12 : 0), rate);
}
inline bool HasRight(uint32_t number) { return number % 50 > 5; }
template <class Rig>
Stereo RunBlock(Rig& rig, const Stereo& input, bool hasRight) {
    return hasRight ? rig.Run(input, kStale) : rig.RunMono(input[0], kStale);
}

/// An effect alone, under settings that jump.
template <class Rig>
struct Solo {
    explicit Solo(float rate) : dice(rate), rig(rate) {}
    void Modulate(uint32_t channel, float amount) { rig.Modulate(channel, amount); }
    void Reset(bool hard) { rig.module.Reset(hard); }

    /// What comes out in two numbers for each turn of 100 blocks: left and right against noise.
    template <class Change>
    std::vector<double> Print(uint32_t blocks, Change change) {
        std::vector<double> print;
        for (uint32_t number = 0; number < blocks; ++number) {
            change(*this, number);
            const Stereo out = RunBlock(rig, BlockInput(number, rig.rate), HasRight(number));
            if (number % 100 == 0)
                print.insert(print.end(), 2, 0.0);
            for (uint32_t c = 0; c < 2; ++c) {
                const Channel noise = Noise(2 * number + c, out[c].size());
                for (size_t i = 0; i < noise.size(); ++i)
                    print[print.size() - 2 + c] += 0.01 * double{noise[i]} * double{out[c][i]};
            }
        }
        return print;
    }

    Dice dice;
    Rig rig;
};

/// Holds the print of an effect at each rate against that of a plain model.
template <class Rig, class Change>
void ExpectPrint(const std::map<float, std::vector<double>>& wanted, Change change) {
    for (const auto& [rate, print] : wanted) {
        const SeededClock clock(1);
        const auto found = Solo<Rig>(rate).Print(50 * static_cast<uint32_t>(print.size()), change);
        for (size_t k = 0; k < print.size(); ++k)
            EXPECT_NEAR(found[k], print[k], 3.0e-5) << "number " << k << " at " << rate;
    }
}

/// The settings of a plain model: read off the parameter records of the module that it is held
/// against, and moved by modulation rows.
template <class M>
struct PlainKnobs {
    explicit PlainKnobs(M& owner) : module(owner) {}

    float Get(uint32_t id) { return module.FindRecord(id)->GetValue(); }
    float Position(uint32_t id) { return module.FindRecord(id)->GetNormalized(); }
    bool IsOn(uint32_t id) { return Position(id) > 0.5f; }
    /// Moved by the row of an input channel.
    float Get(uint32_t id, uint32_t channel) {
        return rows[channel] ? module.FindRecord(id)->ValueOf(MovedPosition(id, channel)) : Get(id);
    }
    float MovedPosition(uint32_t id, uint32_t channel) {
        return std::clamp(Position(id) + rows[channel].value_or(0.0f), 0.0f, 1.0f);
    }

    M& module;
    std::array<std::optional<float>, 12> rows;  ///< by input channel
};

/// Runs a module and its plain model over the same blocks. The model has knobs,
/// Run(input, hasRight), and Reset(hard) if it is to be reset.
template <class Rig, class Model>
class SideBySide {
public:
    SideBySide(Rig& ownRig, Model& ownModel, float sampleRate)
        : dice(sampleRate), rig(ownRig), model(ownModel), rate(sampleRate) {}

    void Modulate(uint32_t channel, float amount) {
        rig.Modulate(channel, amount);
        model.knobs.rows[channel] = amount;
    }
    void Reset(bool hard) {
        rig.module.Reset(hard);
        model.Reset(hard);
    }

    /// The largest difference, measured by the loudest sample around or by 1 where that is more.
    /// change is called before each block with its number.
    template <class Change>
    float WorstError(uint32_t blocks, Change change) {
        float worst = 0.0f, peak = 1.0f;
        for (uint32_t number = 0; number < blocks; ++number) {
            change(number);
            const bool hasRight = !mayLackRight || HasRight(number);
            const Stereo input = BlockInput(number, rate);
            const Stereo output = RunBlock(rig, input, hasRight);
            const Stereo wanted = model.Run(input, hasRight);
            peak = std::max({peak * 0.97f, PeakOf(wanted), 1.0f});
            for (size_t c = 0; c < 2; ++c) {
                for (size_t i = 0; i < input[c].size(); ++i) {
                    const float error = std::abs(output[c][i] - wanted[c][i]) / (peak * unit);
                    if (!std::isfinite(error))
                        return std::numeric_limits<float>::infinity();
                    worst = std::max(worst, error);
                }
            }
        }
        return worst;
    }

    Dice dice;
    bool mayLackRight = true;
    float unit = 1.0f;  ///< what an error of 1 stands for
    Rig& rig;
    Model& model;

private:
    float rate;
};

/// Holds a module against its model at all rates, over so many blocks: change(pair, number) is
/// called before each.
template <class Rig, class Model, class Change>
void ExpectAlike(uint32_t blocks, float tolerance, Change change) {
    for (const float rate : kRates) {
        const SeededClock clock(1);
        Rig rig(rate);
        Model model(rig.module, rate, BlockOf(rate));
        SideBySide pair(rig, model, rate);
        const float worst = pair.WorstError(blocks, [&](uint32_t n) { change(pair, n); });
        EXPECT_LT(worst, tolerance) << rate;
    }
}

}  // namespace Quorvan::test
