#include "effects/PitchShiftDelay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using test::CentreOf;
using test::Channel;
using test::FrequencyOf;
using test::Impulse;
using test::PeakOf;
using test::Stereo;
using P = PitchShiftDelay;

// Sample by sample it is compared as a stage of the octaver.

struct Rig : test::EffectRig<P> {
    /// Filters wide open, no spread, no shift, and at rest there.
    void Open(float delayMs, float pitch = 0.0f) {
        Set(P::DelayTimeMs, delayMs);
        Set(P::PitchShift, pitch);
        Set(P::Window, 1.0f);
        Set(P::LPFreq, 20000.0f);
        Set(P::DelayOffset, 0.0f);
        Set(P::Detune, 0.0f);
        Rest();
    }
    /// One block tells the module that it isn't synced; then it jumps to all of its settings, but
    /// for the offset, which has its time.
    void Rest() {
        Run({Channel(48), Channel(48)});
        module.Reset(true);
        Run({Channel(96000), Channel(96000)});
    }
};

TEST(PitchShiftDelayTest, AtNoShiftItIsADelayOfItsTimeAndOneSample) {
    for (const float delayMs : {30.0f, 100.0f, 333.3f}) {
        for (const float offsetMs : {0.0f, 10.0f}) {
            Rig rig;
            rig.Set(P::Spray, 500.0f);  // nothing, without a shift
            rig.Open(delayMs);
            rig.Set(P::DelayOffset, offsetMs);
            rig.Rest();
            const Stereo out = rig.Run(Impulse(24000));
            for (size_t c = 0; c < 2; ++c) {
                const double wanted = double{delayMs + (c == 0 ? -0.5f : 0.5f) * offsetMs} * 48.0;
                // The low-pass adds a sample, the main line drops less than one.
                EXPECT_NEAR(CentreOf(out[c], 0, out[c].size()), wanted + 2.0, 0.6) << delayMs;
            }
        }
    }
    Rig rig;
    rig.Open(20.0f);
    const Channel sine = test::Sine(1000.0, 48000.0, 9600);
    const Stereo out = rig.Run({sine, sine});
    EXPECT_NEAR(PeakOf(out, 4800), 1.0f, 0.01f);
}

TEST(PitchShiftDelayTest, EchoHasTheShiftedPitch) {
    const Channel sine = test::Sine(440.0, 48000.0, 96000);
    for (const float pitch : {-24.0f, -12.0f, -5.0f, -1.0f, 1.0f, 7.0f, 12.0f, 24.0f}) {
        Rig rig;
        rig.Open(50.0f, pitch);
        const Stereo out = rig.Run({sine, sine});
        const double wanted = 440.0 * std::exp2(double{pitch} / 12.0);
        EXPECT_NEAR(FrequencyOf(out[0], 24000, 96000, 48000.0) / wanted, 1.0, 0.02) << pitch;
        EXPECT_EQ(out[0], out[1]);  // without detuning the image stands still
    }
    Rig rig;
    rig.Open(50.0f);
    rig.Set(P::Detune, 100.0f);
    rig.Rest();
    const Stereo out = rig.Run({sine, sine});
    const double ratio =
        FrequencyOf(out[1], 24000, 96000, 48000.0) / FrequencyOf(out[0], 24000, 96000, 48000.0);
    EXPECT_NEAR(12.0 * std::log2(ratio), 1.0, 0.1);
}

TEST(PitchShiftDelayTest, SyncedTimeFollowsTempoNoteAndType) {
    struct Case {
        float note, type, seconds;
    };
    // At 120 beats a minute. The straight note is held to 4 s, then all to what the line takes.
    for (const Case& k :
         {Case{3.0f, 0.0f, 0.5f}, Case{3.0f, 1.0f, 0.33333f}, Case{3.0f, 2.0f, 0.75f},
          Case{8.0f, 0.0f, 4.0f}, Case{8.0f, 1.0f, 2.66667f}, Case{7.0f, 2.0f, 4.02f}}) {
        Rig rig;
        rig.Set(P::DelayTimeSynced, k.note);
        rig.Set(P::RateSyncedType, k.type);
        rig.Set(P::MidiSync, 0.5f);
        rig.Open(1.0f);
        const Stereo out = rig.Run(Impulse(48000 * 5));
        const double centre = CentreOf(out[0], 0, out[0].size());
        EXPECT_NEAR(centre, double{k.seconds} * 48000.0 + 1.0, 2.0) << k.note << ' ' << k.type;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
