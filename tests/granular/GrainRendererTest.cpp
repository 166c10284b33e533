#include "granular/GrainRenderer.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <string>

#include "granular/GrainShape.h"
#include "support/PlainGrains.h"

namespace Quorvan::dsp {
namespace {

constexpr float kRate = 8000.0f;  // keeps the tape short; the crossfade zone is 24 samples
constexpr float kTolerance = 1.0e-6f;

/// One tape with two pools on it, of which the renderer plays one and the plain form the other.
class Scene {
public:
    struct Setting {
        uint32_t loop = 1000;  ///< samples
        uint32_t block = 48;
        bool crossfade = false;
        bool frozen = false;
        bool interpolate = true;
        bool lapsChange = false;  ///< the loop changes its length now and then
    };

    Scene(uint32_t seed, const Setting& wanted) : setting(wanted), random(seed) {
        tape.Setup(kRate);
        tape.SetLength((static_cast<float>(wanted.loop) + 0.5f) / kRate, 1.0f);
        for (uint32_t i = 0; i < 2 * wanted.loop + Index(wanted.loop); ++i)
            Record();
        tape.frozen = wanted.frozen;
        renderer.Setup(kRate, wanted.block);
        plain = std::make_unique<test::PlainGrains>(kRate, wanted.block);
        fastPool.Resize(64);
        plainPool.Resize(64);
    }

    float Draw(float from, float to) {
        return std::uniform_real_distribution<float>(from, to)(random);
    }
    uint32_t Index(uint32_t count) { return static_cast<uint32_t>(random() % count); }
    bool Chance(float chance) { return Draw(0.0f, 1.0f) < chance; }

    void Add(const Grain& grain) {
        fastPool.Add(grain);
        plainPool.Add(grain);
    }
    void Release(uint16_t slot) { fastPool[slot].releasing = plainPool[slot].releasing = true; }

    /// A grain with everything drawn, so that it meets the head and the seams often.
    Grain RandomGrain();

    /// Records and plays one block with both. Answers the largest difference of the outputs.
    float Play(bool record = true) {
        for (uint32_t i = 0; i < setting.block && record && !tape.frozen; ++i)
            Record();
        const auto both = [this](std::array<std::vector<float>, 2>& out) {
            out[0].assign(setting.block, 0.25f);  // grains are added to what is there
            out[1].assign(setting.block, -0.25f);
        };
        both(fastOut);
        both(plainOut);
        fastEnded.clear();
        plainEnded.clear();
        renderer.Render(fastPool, tape, {setting.block, setting.crossfade, setting.interpolate},
                        fastOut[0].data(), fastOut[1].data(), fastEnded);
        plain->Render(plainPool, tape, {setting.block, setting.crossfade, setting.interpolate},
                      plainOut[0].data(), plainOut[1].data(), plainEnded);
        float worst = 0.0f;
        for (size_t c = 0; c < 2; ++c)
            for (uint32_t i = 0; i < setting.block; ++i)
                worst = std::max(worst, std::abs(fastOut[c][i] - plainOut[c][i]));
        return worst;
    }
    void EraseEnded() {
        for (size_t i = plainEnded.size(); i-- > 0;) {
            fastPool.Erase(plainEnded[i]);
            plainPool.Erase(plainEnded[i]);
        }
    }
    void Record() {
        tape.Write(Draw(-1.0f, 1.0f), Draw(-1.0f, 1.0f), 0.0f);
        tape.AdvanceFree();
    }

    Setting setting;
    CaptureBuffer tape;
    GrainRenderer renderer;
    GrainPool fastPool, plainPool;
    std::array<std::vector<float>, 2> fastOut, plainOut;
    std::vector<uint16_t> fastEnded, plainEnded;
    std::mt19937 random;

private:
    std::unique_ptr<test::PlainGrains> plain;
};

Grain Scene::RandomGrain() {
    Grain grain;
    const std::array<float, 8> special{1.0f, 1.0f, 2.0f, 0.5f, 1.0003f, 0.9998f, 1.01f, 0.99f};
    const float ratio =
        Chance(0.5f) ? special[Index(special.size())] : std::exp2(Draw(-3.0f, 3.0f));
    grain.reversed = Chance(0.3f);
    grain.increment = static_cast<double>(grain.reversed ? -ratio : ratio);
    const auto loop = static_cast<double>(tape.EffectiveLength());
    const auto head = static_cast<double>(tape.writePosition);
    grain.crossing = !grain.reversed && ratio != 1.0f && Chance(0.6f);
    double start = static_cast<double>(Draw(0.0f, 1.0f)) * loop;
    if (Chance(0.3f))  // about to meet the head or the seam
        start = (Chance(0.6f) ? head : 0.0) + static_cast<double>(Draw(-60.0f, 40.0f));
    else if (Chance(0.3f))  // as good as on the head
        start = head + static_cast<double>(Draw(-1.0f, 1.0f)) * (Chance(0.5f) ? 0.015 : 1.2);
    // Whole samples, but where positions are told apart by their last bit only without
    // interpolation.
    if (!setting.interpolate && Chance(0.5f))
        start = std::round(start);
    else if (!grain.crossing && !tape.frozen && !setting.lapsChange && Chance(0.3f))
        start = Chance(0.5f) ? head : head - 10.0 - static_cast<double>(Index(100));
    start = std::fmod(start + 4.0 * loop, loop);
    grain.startPosition = static_cast<float>(start);
    grain.readPosition = start;
    const std::array<float, 6> wraps{1.0f, 1.0f, 1.0f, 0.999f, 0.7f, 1.3f};
    grain.wrapLength =
        static_cast<uint32_t>(static_cast<float>(tape.previousLength) * wraps[Index(wraps.size())]);
    grain.wrappedPosition = std::fmod(start, static_cast<double>(grain.wrapLength));
    grain.startFrame = std::abs(start - head) < 2.0 ? 0 : Index(setting.block);
    grain.length = Chance(0.05f) ? ratio * 0.5f : ratio * Draw(20.0f, 2500.0f);
    if (Chance(0.5f))  // well into its envelope
        grain.elapsed = std::floor(grain.length / ratio * Draw(0.0f, 0.6f)) * ratio;
    grain.panGainLeft = Draw(0.0f, 2.0f);
    grain.panGainRight = 2.0f - grain.panGainLeft;
    (Chance(0.5f) ? grain.outGainLeft : grain.outGainRight) = Draw(0.1f, 1.0f);
    const float v = Chance(0.2f) ? 0.0f : Chance(0.2f) ? 1.0f : Draw(0.0f, 1.0f);
    grain.shape = static_cast<int32_t>(Index(8));
    const GrainShape bent = GrainShape::Of(grain.shape, v);
    grain.shapeA = bent.a;
    grain.shapeB = bent.b;
    return grain;
}

/// Grain by grain in a scene of several, so that one that goes astray is named.
void ExpectSameGrains(const Scene& scene, const std::string& where) {
    ASSERT_EQ(scene.fastEnded, scene.plainEnded) << where;
    const GrainPool& pool = scene.plainPool;
    for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot)) {
        const Grain& fast = scene.fastPool[slot];
        const Grain& plain = pool[slot];
        ASSERT_EQ(fast.envelope, plain.envelope) << where << " shape " << plain.shape;
        ASSERT_EQ(fast.elapsed, plain.elapsed) << where;
        ASSERT_EQ(fast.startFrame, 0u);
        ASSERT_EQ(fast.released, plain.released) << where;
        ASSERT_EQ(fast.swapped, plain.swapped) << where << " speed " << plain.increment;
        ASSERT_EQ(fast.wasCrossfading, plain.wasCrossfading) << where;
        const auto loop = static_cast<double>(scene.tape.EffectiveLength());
        const double apart = std::abs(fast.readPosition - plain.readPosition);
        ASSERT_LT(std::min(apart, loop - apart), 1.0e-6) << where;
        if (!scene.setting.interpolate) {
            ASSERT_EQ(apart, 0.0) << where;
        }
    }
}

Scene::Setting RandomSetting(uint32_t seed) {
    std::mt19937 random(seed);
    const std::array<uint32_t, 4> blocks{44, 48, 8, 192};
    const uint32_t shortest = random() % 10 == 0 ? 20 : 200;
    Scene::Setting setting;
    setting.loop = shortest + static_cast<uint32_t>(random() % 2000);
    setting.block = blocks[random() % 4];
    setting.crossfade = random() % 4 != 0;
    setting.frozen = random() % 3 == 0;
    setting.lapsChange = random() % 2 == 0;
    return setting;
}

void PlayScene(Scene& scene, uint32_t seed, uint32_t blocks) {
    for (uint32_t block = 0; block < blocks; ++block) {
        while (scene.plainPool.Count() < 6)
            scene.Add(scene.RandomGrain());
        if (scene.Chance(0.05f))
            scene.Release(scene.plainPool.Oldest());
        if (scene.Chance(0.03f))
            scene.setting.crossfade = !scene.setting.crossfade;
        // A lap of another length, as the song clock makes them.
        if (scene.setting.lapsChange && scene.Chance(0.1f))
            scene.tape.length = std::max(scene.tape.writePosition, 20u) + scene.Index(3) * 40;
        const float worst = scene.Play();
        const std::string where =
            "seed " + std::to_string(seed) + " block " + std::to_string(block);
        ASSERT_LT(worst, kTolerance) << where;
        ASSERT_NO_FATAL_FAILURE(ExpectSameGrains(scene, where));
        scene.EraseEnded();
    }
}

TEST(GrainRendererTest, MatchesThePlainForm) {
    for (uint32_t seed = 0; seed < 300; ++seed) {
        Scene scene(seed, RandomSetting(seed));
        ASSERT_NO_FATAL_FAILURE(PlayScene(scene, seed, 40));
    }
}

TEST(GrainRendererTest, MatchesThePlainFormWithoutInterpolation) {
    for (uint32_t seed = 0; seed < 300; ++seed) {
        Scene::Setting setting = RandomSetting(seed);
        setting.interpolate = false;
        Scene scene(seed, setting);
        ASSERT_NO_FATAL_FAILURE(PlayScene(scene, seed, 40));
    }
}

/// Grains that keep coming back to whole samples, however rarely, and are a rounding away from the
/// sample before each time.
TEST(GrainRendererTest, MeetsTheSameSamplesWithoutInterpolationAtAnySpeed) {
    for (uint32_t seed = 0; seed < 100; ++seed) {
        Scene::Setting setting = RandomSetting(seed);
        setting.interpolate = false;
        Scene scene(seed, setting);
        for (uint32_t block = 0; block < 60; ++block) {
            while (scene.plainPool.Count() < 20) {
                Grain grain = scene.RandomGrain();
                const double cells = std::exp2(4.0 + scene.Index(6));
                const auto snap = [cells](double x) { return std::round(x * cells) / cells; };
                grain.increment = snap(grain.increment) + (grain.reversed ? -1.0 : 1.0) / cells;
                grain.readPosition = std::floor(grain.readPosition);
                grain.wrappedPosition = std::floor(grain.wrappedPosition);
                scene.Add(grain);
            }
            const std::string where =
                "seed " + std::to_string(seed) + " block " + std::to_string(block);
            ASSERT_LT(scene.Play(), kTolerance) << where;
            ASSERT_NO_FATAL_FAILURE(ExpectSameGrains(scene, where));
            scene.EraseEnded();
        }
    }
}

/// On the head a grain at unit speed is not interpolated, so that it matters on which side of a
/// sample it stands.
TEST(GrainRendererTest, MeetsTheHeadAlikeOnWholeSamplesAtUnitSpeed) {
    for (uint32_t seed = 0; seed < 100; ++seed) {
        Scene::Setting setting = RandomSetting(seed);
        setting.frozen = seed % 2 == 0;
        Scene scene(seed, setting);
        const uint32_t loop = scene.tape.length;
        for (uint32_t i = 0; i < 4; ++i) {
            // The frozen head is passed anywhere; else the grain has what was written a lap before.
            const uint32_t start =
                scene.tape.writePosition + (setting.frozen ? scene.Index(loop) : 1u);
            Grain grain = scene.RandomGrain();
            grain.increment = 1.0;
            grain.reversed = grain.crossing = false;
            grain.readPosition = grain.wrappedPosition = static_cast<double>(start % loop);
            grain.wrapLength = loop;
            grain.startFrame = 0;
            grain.length = 3.0f * static_cast<float>(loop);
            scene.Add(grain);
        }
        for (uint32_t block = 0; scene.plainPool.Count() > 0; ++block) {
            ASSERT_LT(scene.Play(), kTolerance) << "seed " << seed << " block " << block;
            scene.EraseEnded();
        }
    }
}

TEST(GrainRendererTest, EveryInstructionSetGivesTheSameBits) {
    const auto play = [](const GrainKernels& kernels, bool interpolate) {
        std::vector<float> heard;
        for (uint32_t seed = 0; seed < 30; ++seed) {
            Scene::Setting setting = RandomSetting(seed);
            setting.interpolate = interpolate;
            Scene scene(seed, setting);
            scene.renderer.UseKernels(kernels);
            PlayScene(scene, seed, 20);
            for (const std::vector<float>& channel : scene.fastOut)
                heard.insert(heard.end(), channel.begin(), channel.end());
        }
        return heard;
    };
    for (const bool interpolate : {true, false}) {
        const std::vector<float> best = play(GrainKernels::Best(), interpolate);
        for (const GrainKernels* kernels : GrainKernels::Supported())
            EXPECT_TRUE(play(*kernels, interpolate) == best) << kernels->name;
    }
}

/// A grain on the left that sounds at full level from its first sample on.
Grain FlatGrain(double start, double increment, float length) {
    Grain grain;
    grain.readPosition = grain.wrappedPosition = start;
    grain.increment = increment;
    grain.reversed = increment < 0.0;
    grain.length = length;
    grain.wrapLength = 4000;
    grain.outGainLeft = grain.panGainLeft = 1.0f;
    grain.shape = 1;
    grain.shapeB = 1.0e-9f;
    grain.elapsed = 1.0e-3;
    return grain;
}

TEST(GrainRendererTest, AGrainAtUnitSpeedIsADelayedCopyAcrossTheSeam) {
    Scene scene(1, {.loop = 4000});
    while (scene.tape.writePosition != 1000)
        scene.Record();
    scene.Add(FlatGrain(700.0, 1.0, 20000.0f));
    const float* behind = scene.tape.left[scene.tape.activePass].data() + 700;
    std::vector<float> recorded(behind, behind + 300);
    std::vector<float> heard;
    for (uint32_t block = 0; block < 200; ++block) {  // more than two laps
        const uint32_t w = scene.tape.writePosition;
        const uint32_t pass = scene.tape.activePass;
        scene.Play();
        for (uint32_t i = 0; i < 48; ++i) {
            const uint32_t at = w + i;
            recorded.push_back(scene.tape.left[at < 4000 ? pass : pass ^ 1u][at % 4000]);
            heard.push_back(scene.fastOut[0][i] - 0.25f);
        }
    }
    for (size_t i = 0; i < heard.size(); ++i)
        ASSERT_NEAR(heard[i], recorded[i], 1.0e-6f) << i;
}

TEST(GrainRendererTest, SpeedMovesThePitchOfAFrozenSine) {
    for (const double speed : {0.5, 1.4983070768766815, 2.0, -2.0, 4.0}) {
        Scene scene(2, {.loop = 4000, .frozen = true});
        constexpr double kCycle = 80.0;  // samples; a divisor of the loop
        for (uint32_t pass = 0; pass < 2; ++pass)
            for (uint32_t i = 0; i < 4000; ++i)
                scene.tape.left[pass][i] =
                    static_cast<float>(std::sin(2.0 * 3.14159265358979 * i / kCycle));
        scene.Add(FlatGrain(0.25, speed, 1.0e6f));
        for (uint32_t block = 0; block < 150; ++block) {
            scene.Play();
            for (uint32_t i = 0; i < 48; ++i) {
                const double phase = (0.25 + (block * 48.0 + i) * speed) / kCycle;
                // Linear interpolation leaves an eighth of the square of the phase step.
                ASSERT_NEAR(scene.fastOut[0][i] - 0.25f, std::sin(2.0 * 3.14159265358979 * phase),
                            8.0e-4)
                    << speed << " block " << block << " sample " << i;
            }
        }
    }
}

TEST(GrainRendererTest, AGrainShorterThanItsStepSoundsForOneSample) {
    Scene scene(3, {.loop = 4000});
    Grain grain = FlatGrain(100.0, 3.0, 2.0f);
    grain.startFrame = 20;
    scene.Add(grain);
    scene.Play();
    EXPECT_EQ(scene.fastEnded.size(), 1u);
    for (uint32_t i = 0; i < 48; ++i)
        EXPECT_EQ(scene.fastOut[0][i] != 0.25f, i == 20) << i;
}

TEST(GrainRendererTest, AReleaseTakesFourMillisecondsFromEitherSideOfZero) {
    for (const float level : {1.0f, -0.25f}) {
        Scene scene(4, {.loop = 4000});
        std::fill(scene.tape.left[0].begin(), scene.tape.left[0].end(), 1.0f);
        std::fill(scene.tape.left[1].begin(), scene.tape.left[1].end(), 1.0f);
        Grain grain = FlatGrain(100.0, 1.3, 3000.0f);
        grain.envelope = level;
        grain.releasing = true;
        scene.Add(grain);
        const auto steps = static_cast<uint32_t>(std::abs(level) * kRate * 0.004f);
        std::vector<float> fade;
        while (scene.fastEnded.empty() && fade.size() < 1000) {
            scene.Play(false);
            for (const float sample : scene.fastOut[0])
                fade.push_back(sample - 0.25f);
        }
        for (uint32_t i = 0; i < fade.size(); ++i) {
            const float left =
                std::max(1.0f - static_cast<float>(i + 1) / static_cast<float>(steps), 0.0f);
            EXPECT_NEAR(fade[i], level * left, 1.0e-5f) << level << " at " << i;
        }
        EXPECT_LT(fade.size(), steps + 49);
    }
}

}  // namespace
}  // namespace Quorvan::dsp
