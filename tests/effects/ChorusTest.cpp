#include "effects/Chorus.h"

#include <gtest/gtest.h>

#include "support/ModuleRig.h"
#include "support/PlainChorus.h"
#include "support/SeededClock.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using test::kRates;
using C = Chorus;
using Rig = test::EffectRig<C>;

TEST(ChorusTest, MatchesAPlainModelWhileEverythingMoves) {
    for (const float rate : kRates) {
        const test::SeededClock clock(1);
        Rig rig(rate);
        test::PlainChorus model(rig.module, rate, test::BlockOf(rate));
        test::SideBySide pair(rig, model, rate);
        const float worst = pair.WorstError(1500, [&](uint32_t number) {
            for (uint32_t id = 0; id < C::kParameterCount; ++id) {
                const bool isSwitch = id >= C::FBPolarity && id != C::LPFfc && id != C::HPFfc;
                if (pair.dice.Chance(isSwitch ? 0.01f : 0.05f)) {
                    rig.SetPosition(id, pair.dice.Unit());
                    model.written.insert(id);
                }
            }
            for (uint32_t channel = 2; channel < 5; ++channel)
                if (pair.dice.Chance(0.05f))
                    pair.Modulate(channel, pair.dice.Between(-0.5f, 0.5f));
            if (number % 400 == 399)
                pair.Reset(number % 800 == 799);
            rig.tempo = model.tempo = number < 700 ? 120.0f : 1000.0f;
        });
        EXPECT_LT(worst, 2.0e-5f) << rate;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
