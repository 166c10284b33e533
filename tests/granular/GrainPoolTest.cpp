#include "granular/GrainPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

namespace Quorvan::dsp {
namespace {

/// A pool without any structure: grains by slot, and slots by age.
struct Model {
    std::map<uint16_t, float> live;  ///< slot and the grain's mark
    std::vector<uint16_t> byAge;

    uint16_t LowestFree() const {
        uint16_t slot = 0;
        while (live.contains(slot))
            ++slot;
        return slot;
    }
    uint16_t LastRun(uint16_t capacity) const {
        int32_t slot = capacity - 1;
        while (slot >= 0 && live.contains(static_cast<uint16_t>(slot)))
            --slot;
        if (slot < 0)
            return GrainPool::kNone;
        while (slot > 0 && !live.contains(static_cast<uint16_t>(slot - 1)))
            --slot;
        return static_cast<uint16_t>(slot);
    }
    uint16_t Add(float mark) {
        const uint16_t slot = LowestFree();
        live[slot] = mark;
        byAge.push_back(slot);
        return slot;
    }
    void Erase(uint16_t slot) {
        live.erase(slot);
        std::erase(byAge, slot);
    }
};

void ExpectSame(const GrainPool& pool, const Model& model) {
    ASSERT_EQ(pool.Count(), model.live.size());
    auto wanted = model.live.begin();
    for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot), ++wanted) {
        ASSERT_NE(wanted, model.live.end());
        ASSERT_EQ(slot, wanted->first);
        ASSERT_EQ(pool[slot].startPosition, wanted->second);
    }
    ASSERT_EQ(wanted, model.live.end());
    uint16_t slot = pool.Oldest();
    for (const uint16_t next : model.byAge) {
        ASSERT_EQ(slot, next);
        slot = pool.NextByAge(slot);
    }
    ASSERT_EQ(slot, GrainPool::kNone);
    const uint16_t lowest = model.LowestFree();
    ASSERT_EQ(pool.FirstFree(), lowest < pool.Capacity() ? lowest : GrainPool::kNone);
    ASSERT_EQ(pool.LastFree(), model.LastRun(pool.Capacity()));
}

// The share of additions swings, so that the pool runs full and empty several times.
TEST(GrainPoolTest, FollowsAPlainModelUnderRandomUse) {
    for (const uint16_t capacity :
         {uint16_t{1}, uint16_t{2}, uint16_t{3}, uint16_t{9}, uint16_t{64}, uint16_t{258}}) {
        std::mt19937 random(capacity);
        GrainPool pool;
        pool.Resize(capacity);
        Model model;
        uint32_t timesFull = 0;
        uint32_t timesEmpty = 0;
        for (uint32_t step = 0; step < 6000; ++step) {
            const uint32_t addShare = step / 600 % 2 == 0 ? 75 : 25;
            if (random() % 1000 == 0) {
                pool.Clear();
                model = {};
            } else if (random() % 100 < addShare && model.live.size() < capacity) {
                Grain grain;
                grain.startPosition = static_cast<float>(step);
                ASSERT_EQ(pool.Add(grain), model.Add(grain.startPosition));
            } else if (!model.live.empty()) {
                const auto chosen =
                    std::next(model.live.begin(), static_cast<long>(random() % model.live.size()));
                const uint16_t slot = chosen->first;
                pool.Erase(slot);
                model.Erase(slot);
            }
            timesFull += model.live.size() == capacity ? 1u : 0u;
            timesEmpty += model.live.empty() ? 1u : 0u;
            if (capacity <= 64 || step % 7 == 0) {
                ASSERT_NO_FATAL_FAILURE(ExpectSame(pool, model)) << capacity << " step " << step;
            }
        }
        EXPECT_GT(timesFull, 0u);
        EXPECT_GT(timesEmpty, 0u);
    }
}

}  // namespace
}  // namespace Quorvan::dsp
