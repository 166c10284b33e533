#pragma once

#include <cstdint>
#include <cstring>

namespace Quorvan::dsp {

/// Largest size of any sample that has come, kept in four lanes until it is asked for. What is no
/// number is passed over.
class PeakHold {
public:
    void Take(const float* samples, uint32_t count) {
        if (count < kStep) {
            for (uint32_t i = 0; i < count; ++i)
                TakeOne(samples[i]);
            return;
        }
        Lanes first = held[0], second = held[1];
        const auto step = [&](const float* at) {
            first = Larger(SizeOf(at), first);
            second = Larger(SizeOf(at + kLanes), second);
            first = Larger(SizeOf(at + 2 * kLanes), first);
            second = Larger(SizeOf(at + 3 * kLanes), second);
        };
        const uint32_t whole = count - count % kStep;
        for (const float* at = samples; at != samples + whole; at += kStep)
            step(at);
        // The last ones with some that have been there before, who change nothing.
        if (whole != count)
            step(samples + count - kStep);
        held[0] = first;
        held[1] = second;
    }
    float Value() const {
        const Lanes both = Larger(held[0], held[1]);
        float peak = 0.0f;
        for (uint32_t k = 0; k < kLanes; ++k)
            peak = both[k] > peak ? both[k] : peak;
        return peak;
    }
    /// Answers Value and begins anew.
    float Release() {
        const float peak = Value();
        *this = {};
        return peak;
    }

private:
    static constexpr uint32_t kLanes = 4;
    static constexpr uint32_t kStep = 4 * kLanes;
    using Lanes = float __attribute__((vector_size(4 * kLanes)));
    using Bits = int32_t __attribute__((vector_size(4 * kLanes)));

    static Lanes SizeOf(const float* from) {
        constexpr int32_t kAllButSign = 0x7fffffff;
        Bits bits;
        std::memcpy(&bits, from, sizeof bits);
        bits &= Bits{kAllButSign, kAllButSign, kAllButSign, kAllButSign};
        Lanes sizes;
        std::memcpy(&sizes, &bits, sizeof sizes);
        return sizes;
    }
    static Lanes Larger(Lanes x, Lanes held) { return x > held ? x : held; }
    void TakeOne(float sample) {
        const float size = sample < 0.0f ? -sample : sample;
        held[0][0] = size > held[0][0] ? size : held[0][0];
    }

    Lanes held[2]{};
};

}  // namespace Quorvan::dsp
