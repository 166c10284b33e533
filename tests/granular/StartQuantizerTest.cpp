#include "granular/StartQuantizer.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "support/PlainScheduler.h"

namespace Quorvan::dsp {
namespace {

/// A loop so short that every place in it can be tried.
struct SmallLoop {
    SmallLoop(uint32_t length, uint32_t head) {
        capture.length = length;
        capture.writePosition = head;
    }
    CaptureBuffer capture;
    GranularSettings settings;
    BlockCurves curves;
    std::vector<int32_t> onsets;
    test::PlainScheduler model{1, settings, curves, capture, onsets};
};

TEST(StartQuantizerTest, FindsTheSameOnsetFromEveryPlace) {
    std::mt19937 random(1);
    for (uint32_t round = 0; round < 400; ++round) {
        const uint32_t length = 5 + static_cast<uint32_t>(random() % 25);
        SmallLoop loop(length, static_cast<uint32_t>(random() % (length + 1)));
        const auto head = static_cast<int32_t>(loop.capture.writePosition);
        MarkerRing ring;
        for (int32_t at = head; at < static_cast<int32_t>(length); ++at)  // the round before
            if (random() % 4 == 0)
                loop.onsets.push_back(at);
        for (int32_t at = 0; at < head; ++at)
            if (random() % 4 == 0)
                loop.onsets.push_back(at);
        if (loop.onsets.empty())
            continue;
        for (const int32_t onset : loop.onsets)
            ring.Push(onset);
        const uint32_t effective = loop.capture.EffectiveLength();
        for (uint32_t place = 0; place < effective; ++place)
            ASSERT_EQ(StartQuantizer::ToTransient(place + 0.7, loop.capture, ring),
                      loop.model.Transient(static_cast<int32_t>(place), effective))
                << "place " << place << " head " << head << " of " << length;
    }
}

TEST(StartQuantizerTest, FindsTheSameLineFromEveryPlace) {
    for (uint32_t head = 0; head <= 64; ++head) {
        SmallLoop loop(64, head);
        loop.settings.gridSize = 8;
        const double effective = loop.capture.EffectiveLength();
        for (double place = 0.0; place < effective; place += 0.125)
            ASSERT_EQ(StartQuantizer::ToGrid(place, loop.capture, 8),
                      loop.model.Grid(place, head, effective))
                << place << " head " << head;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
