#include "granular/GrainRenderer.h"

#include "granular/GrainShape.h"
#include "support/ModuleRig.h"
#include "support/PlainGrains.h"
#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

constexpr float kRate = 8000.0f;  // keeps the tape short; the crossfade zone is 24 samples
constexpr float kTolerance = 1.0e-6f;

/// One tape with two pools on it, of which the renderer plays one and the plain form the other.
class Scene : public Dice {
public:
    struct Setting {
        uint32_t loop = 1000;  ///< samples
        uint32_t block = 48;
        bool crossfade = false, frozen = false, interpolate = true;
        bool lapsChange = false;  ///< the loop changes its length now and then
    };

    Scene(uint32_t seed, const Setting& wanted)
        : Dice(seed), setting(wanted), plain(kRate, wanted.block) {
        tape.Setup(kRate);
        tape.SetLength((static_cast<float>(wanted.loop) + 0.5f) / kRate, 1.0f);
        for (uint32_t i = 0; i < 2 * wanted.loop + Below(wanted.loop); ++i)
            Record();
        tape.frozen = wanted.frozen;
        renderer.Setup(kRate, wanted.block);
        fastPool.Resize(64);
        plainPool.Resize(64);
    }

    void Add(const Grain& grain) {
        fastPool.Add(grain);
        plainPool.Add(grain);
    }
    void Release(uint16_t slot) { fastPool[slot].releasing = plainPool[slot].releasing = true; }

    /// A grain with everything drawn, so that it meets the head and the seams often.
    Grain RandomGrain();

    /// Records and plays one block with both. Answers the largest difference of the outputs.
    float Play() {
        for (uint32_t i = 0; i < setting.block && !tape.frozen; ++i)
            Record();
        for (auto* out : {&fastOut, &plainOut})  // grains are added to what is there
            *out = {Channel(setting.block, 0.25f), Channel(setting.block, -0.25f)};
        fastEnded.clear();
        plainEnded.clear();
        const auto& [loop, frames, crossfade, frozen, interpolate, laps] = setting;
        renderer.Render(fastPool, tape, {frames, crossfade, interpolate}, fastOut[0].data(),
                        fastOut[1].data(), fastEnded);
        plain.Render(plainPool, tape, {frames, crossfade, interpolate}, plainOut[0].data(),
                     plainOut[1].data(), plainEnded);
        float worst = 0.0f;
        for (size_t c = 0; c < 2; ++c)
            for (uint32_t i = 0; i < frames; ++i)
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
        tape.Write(Between(-1.0f, 1.0f), Between(-1.0f, 1.0f), 0.0f);
        tape.AdvanceFree();
    }

    Setting setting;
    CaptureBuffer tape;
    GrainRenderer renderer;
    GrainPool fastPool, plainPool;
    Stereo fastOut, plainOut;
    std::vector<uint16_t> fastEnded, plainEnded;
    PlainGrains plain;
};

Grain Scene::RandomGrain() {
    Grain grain;
    const std::array special{1.0f, 1.0f, 2.0f, 0.5f, 1.0003f, 0.9998f, 1.01f, 0.99f};
    const float ratio = Chance(0.5f) ? special[Below(8)] : std::exp2(Between(-3.0f, 3.0f));
    grain.reversed = Chance(0.3f);
    grain.increment = static_cast<double>(grain.reversed ? -ratio : ratio);
    const auto loop = static_cast<double>(tape.EffectiveLength());
    const auto head = static_cast<double>(tape.writePosition);
    grain.crossing = !grain.reversed && ratio != 1.0f && Chance(0.6f);
    double start = double{Between(0.0f, 1.0f)} * loop;
    if (Chance(0.3f))  // about to meet the head or the seam
        start = (Chance(0.6f) ? head : 0.0) + double{Between(-60.0f, 40.0f)};
    else if (Chance(0.3f))  // as good as on the head
        start = head + double{Between(-1.0f, 1.0f)} * (Chance(0.5f) ? 0.015 : 1.2);
    // Whole samples, but where positions are told apart by their last bit only without
    // interpolation.
    if (!setting.interpolate && Chance(0.5f))
        start = std::round(start);
    else if (!grain.crossing && !tape.frozen && !setting.lapsChange && Chance(0.3f))
        start = Chance(0.5f) ? head : head - 10.0 - static_cast<double>(Below(100));
    start = std::fmod(start + 4.0 * loop, loop);
    grain.startPosition = static_cast<float>(start);
    grain.readPosition = start;
    const float wrap = std::array{1.0f, 1.0f, 1.0f, 0.999f, 0.7f, 1.3f}[Below(6)];
    grain.wrapLength = static_cast<uint32_t>(static_cast<float>(tape.previousLength) * wrap);
    grain.wrappedPosition = std::fmod(start, static_cast<double>(grain.wrapLength));
    grain.startFrame = std::abs(start - head) < 2.0 ? 0 : Below(setting.block);
    grain.length = Chance(0.05f) ? ratio * 0.5f : ratio * Between(20.0f, 2500.0f);
    if (Chance(0.5f))  // well into its envelope
        grain.elapsed = std::floor(grain.length / ratio * Between(0.0f, 0.6f)) * ratio;
    grain.panGainLeft = Between(0.0f, 2.0f);
    grain.panGainRight = 2.0f - grain.panGainLeft;
    (Chance(0.5f) ? grain.outGainLeft : grain.outGainRight) = Between(0.1f, 1.0f);
    const float v = Chance(0.2f) ? 0.0f : Chance(0.2f) ? 1.0f : Between(0.0f, 1.0f);
    grain.shape = static_cast<int32_t>(Below(8));
    const GrainShape bent = GrainShape::Of(grain.shape, v);
    grain.shapeA = bent.a;
    grain.shapeB = bent.b;
    return grain;
}

/// Plays a block and compares grain by grain, so that one that goes astray is named.
void PlayAndCompare(Scene& scene, const std::string& where) {
    ASSERT_LT(scene.Play(), kTolerance) << where;
    ASSERT_EQ(scene.fastEnded, scene.plainEnded) << where;
    const auto exact = [](const Grain& grain) {
        return std::tuple(grain.envelope, grain.elapsed, grain.startFrame, grain.released,
                          grain.swapped, grain.wasCrossfading);
    };
    const GrainPool& pool = scene.plainPool;
    for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot)) {
        const Grain& fast = scene.fastPool[slot];
        const Grain& plain = pool[slot];
        ASSERT_EQ(exact(fast), exact(plain)) << where << " shape " << plain.shape;
        const auto loop = static_cast<double>(scene.tape.EffectiveLength());
        const double apart = std::abs(fast.readPosition - plain.readPosition);
        ASSERT_LE(std::min(apart, loop - apart), scene.setting.interpolate ? 1.0e-6 : 0.0) << where;
    }
    scene.EraseEnded();
}

Scene::Setting RandomSetting(uint32_t seed, bool interpolate = true) {
    Dice dice(seed);
    const uint32_t shortest = dice.Below(10) == 0 ? 20 : 200;
    return {.loop = shortest + dice.Below(2000),
            .block = std::array{44u, 48u, 8u, 192u}[dice.Below(4)],
            .crossfade = dice.Below(4) != 0,
            .frozen = dice.Below(3) == 0,
            .interpolate = interpolate,
            .lapsChange = dice.Below(2) == 0};
}

std::string Where(uint32_t seed, uint32_t block) {
    return "seed " + std::to_string(seed) + " block " + std::to_string(block);
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
            scene.tape.length = std::max(scene.tape.writePosition, 20u) + scene.Below(3) * 40;
        ASSERT_NO_FATAL_FAILURE(PlayAndCompare(scene, Where(seed, block)));
    }
}

TEST(GrainRendererTest, MatchesThePlainForm) {
    for (const bool interpolate : {true, false})
        for (uint32_t seed = 0; seed < 300; ++seed) {
            Scene scene(seed, RandomSetting(seed, interpolate));
            ASSERT_NO_FATAL_FAILURE(PlayScene(scene, seed, 40));
        }
}

/// Grains that keep coming back to whole samples, however rarely, and are a rounding away from the
/// sample before each time.
TEST(GrainRendererTest, MeetsTheSameSamplesWithoutInterpolationAtAnySpeed) {
    for (uint32_t seed = 0; seed < 100; ++seed) {
        Scene scene(seed, RandomSetting(seed, false));
        for (uint32_t block = 0; block < 60; ++block) {
            while (scene.plainPool.Count() < 20) {
                Grain grain = scene.RandomGrain();
                const double cells = std::exp2(4.0 + scene.Below(6));
                const auto snap = [cells](double x) { return std::round(x * cells) / cells; };
                grain.increment = snap(grain.increment) + (grain.reversed ? -1.0 : 1.0) / cells;
                grain.readPosition = std::floor(grain.readPosition);
                grain.wrappedPosition = std::floor(grain.wrappedPosition);
                scene.Add(grain);
            }
            ASSERT_NO_FATAL_FAILURE(PlayAndCompare(scene, Where(seed, block)));
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
                scene.tape.writePosition + (setting.frozen ? scene.Below(loop) : 1u);
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
            ASSERT_LT(scene.Play(), kTolerance) << Where(seed, block);
            scene.EraseEnded();
        }
    }
}

TEST(GrainRendererTest, EveryInstructionSetGivesTheSameBits) {
    const auto play = [](const GrainKernels& kernels, bool interpolate) {
        std::vector<float> heard;
        for (uint32_t seed = 0; seed < 30; ++seed) {
            Scene scene(seed, RandomSetting(seed, interpolate));
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

}  // namespace
}  // namespace Quorvan::dsp
