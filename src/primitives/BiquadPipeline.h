#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Quorvan::prims {

/// Eight second-order sections in series, over one or two channels, worked as a pipeline: each
/// section has a vector lane of its own and works one sample behind the section ahead of it, so
/// that all eight take their steps at once. Every section still sees the same operations in the
/// same order, which makes results and states bit for bit those of one section after the other.
///
/// A value for the length of a block: Load, then Run, then Store.
template <size_t kChannels>
class BiquadPipeline {
public:
    static constexpr uint32_t kSections = 8;
    /// Steps by which the output lags; Run takes as many more to let the last samples through.
    static constexpr uint32_t kLag = kSections - 1;

    using State = std::vector<std::pair<float, float>>;

    /// Numerator 1, b1, 1 and denominator 1, a1, a2 of each section.
    BiquadPipeline(const std::vector<float>& numeratorB1,
                   const std::vector<std::pair<float, float>>& denominator) {
        for (uint32_t k = 0; k < kSections; ++k) {
            b1[k / kLanes][k % kLanes] = numeratorB1[k];
            a1[k / kLanes][k % kLanes] = denominator[k].first;
            a2[k / kLanes][k % kLanes] = denominator[k].second;
        }
    }

    void Load(size_t channel, const State& state) {
        Channel& to = channels[channel];
        for (uint32_t k = 0; k < kSections; ++k) {
            to.z1[k / kLanes][k % kLanes] = state[k].first;
            to.z2[k / kLanes][k % kLanes] = state[k].second;
        }
    }

    void Store(size_t channel, State& state) const {
        const Channel& from = channels[channel];
        for (uint32_t k = 0; k < kSections; ++k)
            state[k] = {from.z1[k / kLanes][k % kLanes], from.z2[k / kLanes][k % kLanes]};
    }

    /// count samples, an even number. even(c, i) and odd(c, i) give sample i of channel c;
    /// takeEven(c, i, y) and takeOdd(c, i, y) get the results. Sample i is taken after sample
    /// i + kLag has been given.
    template <class Even, class Odd, class TakeEven, class TakeOdd>
    void Run(uint32_t count, Even even, Odd odd, TakeEven takeEven, TakeOdd takeOdd) {
        const auto stepAtEdge = [&](uint32_t t) {
            const auto give = [&](size_t c) {
                return t >= count ? 0.0f : t % 2 == 0 ? even(c, t) : odd(c, t);
            };
            StepSome(t, count, give);
            for (size_t c = 0; t >= kLag && c < kChannels; ++c)
                t % 2 != 0 ? takeEven(c, t - kLag, Last(c)) : takeOdd(c, t - kLag, Last(c));
        };
        // One step more than it takes to fill the lanes, so that the loop starts on an even sample.
        uint32_t t = 0;
        for (; t < std::min(kLag + 1, count + kLag); ++t)
            stepAtEdge(t);
        Pipeline local = *this;
        for (; t < count; t += 2) {
            local.StepAll([&](size_t c) { return even(c, t); });
            for (size_t c = 0; c < kChannels; ++c)
                takeOdd(c, t - kLag, local.Last(c));
            local.StepAll([&](size_t c) { return odd(c, t + 1); });
            for (size_t c = 0; c < kChannels; ++c)
                takeEven(c, t + 1 - kLag, local.Last(c));
        }
        *this = local;
        for (; t < count + kLag; ++t)
            stepAtEdge(t);
    }

private:
    using Pipeline = BiquadPipeline;
    static constexpr uint32_t kLanes = 4, kVectors = kSections / kLanes;
    using Lanes = float __attribute__((vector_size(16)));
    using Mask = int32_t __attribute__((vector_size(16)));

    struct Channel {
        Lanes z1[kVectors] = {}, z2[kVectors] = {};
        Lanes out[kVectors] = {};  ///< of each section, in the last step
    };

    float Last(size_t c) const { return channels[c].out[kVectors - 1][kLanes - 1]; }

    /// What the sections take in: the new sample, and each the output of the one ahead.
    static void Inputs(const Channel& channel, float x, Lanes (&in)[kVectors]) {
        in[0] = __builtin_shufflevector(Lanes{x}, channel.out[0], 0, 4, 5, 6);
        in[1] = __builtin_shufflevector(channel.out[0], channel.out[1], 3, 4, 5, 6);
    }

    template <class Give>
    void StepAll(Give give) {
        for (size_t c = 0; c < kChannels; ++c) {
            Channel& channel = channels[c];
            Lanes in[kVectors];
            Inputs(channel, give(c), in);
            for (uint32_t v = 0; v < kVectors; ++v) {
                const Lanes out = in[v] + channel.z1[v];
                channel.z1[v] = b1[v] * in[v] - a1[v] * out + channel.z2[v];
                channel.z2[v] = in[v] - a2[v] * out;
                channel.out[v] = out;
            }
        }
    }

    /// The step at the edges of a block, in which only the sections move that have a sample of the
    /// block before them.
    template <class Give>
    void StepSome(uint32_t t, uint32_t count, Give give) {
        Pipeline moved = *this;
        moved.StepAll(give);
        for (uint32_t v = 0; v < kVectors; ++v) {
            const auto first = static_cast<int32_t>(t - v * kLanes);
            const Mask sample = Mask{first, first - 1, first - 2, first - 3};
            const Mask moves = (sample >= 0) & (sample < static_cast<int32_t>(count));
            for (size_t c = 0; c < kChannels; ++c) {
                Channel& to = channels[c];
                const Channel& from = moved.channels[c];
                to.z1[v] = moves ? from.z1[v] : to.z1[v];
                to.z2[v] = moves ? from.z2[v] : to.z2[v];
                to.out[v] = from.out[v];
            }
        }
    }

    Lanes b1[kVectors] = {}, a1[kVectors] = {}, a2[kVectors] = {};
    Channel channels[kChannels];
};

}  // namespace Quorvan::prims
