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
    /// change is called before each block with its number. Every seventh block is a short one, and
    /// of fifty some lack the right input.
    template <class Change>
    float WorstError(uint32_t blocks, Change change) {
        float worst = 0.0f, peak = 1.0f;
        for (uint32_t number = 0; number < blocks; ++number) {
            change(number);
            const uint32_t block = BlockOf(rate);
            const uint32_t length = number % 7 == 3 ? block - 12 : block;
            const bool hasRight = !mayLackRight || number % 50 > 5;
            const Stereo input = SignalOfBlock(number, length, rate);
            const Stereo output = hasRight ? rig.Run(input, kStale) : rig.RunMono(input[0], kStale);
            const Stereo wanted = model.Run(input, hasRight);
            peak = std::max({peak * 0.97f, PeakOf(wanted), 1.0f});
            for (size_t c = 0; c < 2; ++c) {
                for (uint32_t i = 0; i < length; ++i) {
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
