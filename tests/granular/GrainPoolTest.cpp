#include "granular/GrainPool.h"

#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

using Live = std::map<uint16_t, float>;  ///< slot and the grain's mark

uint16_t LowestFree(const Live& live) {
    uint16_t slot = 0;
    while (live.contains(slot))
        ++slot;
    return slot;
}
/// The first slot of the last run of free ones.
uint16_t LastRun(const Live& live, uint16_t capacity) {
    uint16_t first = GrainPool::kNone;
    for (uint16_t slot = 0; slot < capacity; ++slot)
        if (!live.contains(slot) && (slot == 0 || live.contains(slot - 1)))
            first = slot;
    return first;
}

void ExpectSame(const GrainPool& pool, const Live& live, const std::vector<uint16_t>& byAge) {
    Live found;
    for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot))
        found.emplace_hint(found.end(), slot, pool[slot].startPosition);
    std::vector<uint16_t> foundByAge;
    for (uint16_t slot = pool.Oldest(); slot != GrainPool::kNone; slot = pool.NextByAge(slot))
        foundByAge.push_back(slot);
    ASSERT_EQ(found, live);
    ASSERT_EQ(foundByAge, byAge);
    ASSERT_EQ(pool.Count(), live.size());
    const uint16_t lowest = LowestFree(live);
    ASSERT_EQ(pool.FirstFree(), lowest < pool.Capacity() ? lowest : GrainPool::kNone);
    ASSERT_EQ(pool.LastFree(), LastRun(live, pool.Capacity()));
}

// The share of additions swings, so that the pool runs full and empty several times.
TEST(GrainPoolTest, FollowsAPlainModelUnderRandomUse) {
    for (const uint16_t capacity : std::vector<uint16_t>{1, 2, 3, 9, 64, 258}) {
        Dice dice(capacity);
        GrainPool pool;
        pool.Resize(capacity);
        Live live;
        std::vector<uint16_t> byAge;
        uint32_t timesFull = 0, timesEmpty = 0;
        for (uint32_t step = 0; step < 6000; ++step) {
            const uint32_t addShare = step / 600 % 2 == 0 ? 75 : 25;
            if (dice.Below(1000) == 0) {
                pool.Clear();
                live.clear();
                byAge.clear();
            } else if (dice.Below(100) < addShare && live.size() < capacity) {
                Grain grain;
                grain.startPosition = static_cast<float>(step);
                byAge.push_back(LowestFree(live));
                live[byAge.back()] = grain.startPosition;
                ASSERT_EQ(pool.Add(grain), byAge.back());
            } else if (!live.empty()) {
                const uint16_t slot = byAge[dice.Below(pool.Count())];
                pool.Erase(slot);
                live.erase(slot);
                std::erase(byAge, slot);
            }
            timesFull += live.size() == capacity ? 1u : 0u;
            timesEmpty += live.empty() ? 1u : 0u;
            if (capacity <= 64 || step % 7 == 0) {
                ASSERT_NO_FATAL_FAILURE(ExpectSame(pool, live, byAge)) << capacity << " " << step;
            }
        }
        EXPECT_GT(timesFull, 0u);
        EXPECT_GT(timesEmpty, 0u);
    }
}

}  // namespace
}  // namespace Quorvan::dsp
