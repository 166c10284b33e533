#include "granular/MarkerRing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

namespace Quorvan::dsp {
namespace {

/// The same ring in plain words: a queue of positions.
struct Model {
    std::deque<int32_t> queue;

    void Push(int32_t position) {
        if (queue.size() == MarkerRing::kCapacity)
            queue.pop_front();
        queue.push_back(position);
    }
    void DropFrom(int32_t position) {
        std::erase_if(queue, [position](int32_t entry) { return entry >= position; });
    }
    std::pair<int32_t, int32_t> Neighbours(int32_t position) const {
        size_t after = queue.size();
        for (size_t i = 0; i < queue.size(); ++i)
            if (queue[i] >= position && (after == queue.size() || queue[i] < queue[after]))
                after = i;
        if (after == queue.size())
            after = static_cast<size_t>(std::ranges::min_element(queue) - queue.begin());
        if (queue[after] == position)
            return {position, position};
        return {after == 0 ? queue.back() : queue[after - 1], queue[after]};
    }
};

void ExpectSame(const MarkerRing& ring, const Model& model) {
    ASSERT_EQ(ring.Count(), model.queue.size());
    for (uint32_t i = 0; i < ring.Count(); ++i)
        ASSERT_EQ(ring[i], model.queue[i]);
    if (!model.queue.empty()) {
        ASSERT_EQ(ring.Front(), model.queue.front());
        ASSERT_EQ(ring.Back(), model.queue.back());
    }
}

std::vector<int32_t> Contents(const MarkerRing& ring) {
    std::vector<int32_t> all;
    for (uint32_t i = 0; i < ring.Count(); ++i)
        all.push_back(ring[i]);
    return all;
}

MarkerRing RingOf(std::initializer_list<int32_t> positions) {
    MarkerRing ring;
    for (const int32_t position : positions)
        ring.Push(position);
    return ring;
}

// A write head that runs round a loop, drops the markers it meets and leaves new ones behind it;
// now and then the loop is cut short or emptied.
TEST(MarkerRingTest, FollowsAPlainQueueOverManyLaps) {
    uint32_t fullest = 0;
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        const auto draw = [&random](int32_t below) {
            return static_cast<int32_t>(random() % static_cast<uint32_t>(below));
        };
        const int32_t loop = seed % 2 == 0 ? 500 : 20000;
        const int32_t stride = seed % 3 == 0 ? 3 : 60;
        MarkerRing ring;
        Model model;
        int32_t head = 0;
        for (uint32_t step = 0; step < 3000; ++step) {
            const int32_t next = std::min(loop, head + 1 + draw(stride));
            const auto isMet = [&](int32_t marker) {
                return (marker > head && marker <= next) || (next == loop && marker == 0);
            };
            while (ring.Count() > 0 && isMet(ring.Front())) {
                ring.DropFront();
                model.queue.pop_front();
            }
            head = next == loop ? 0 : next;
            const int32_t event = draw(100);
            if (event < 90) {
                ring.Push(head);
                model.Push(head);
            } else if (event < 97) {
                ring.DropFront();
                if (!model.queue.empty())
                    model.queue.pop_front();
            } else if (event == 97) {
                ring.Clear();
                model.queue.clear();
            } else {
                const int32_t from = draw(loop);
                ring.DropFrom(from);
                model.DropFrom(from);
            }
            ExpectSame(ring, model);
            fullest = std::max(fullest, ring.Count());
            for (uint32_t probe = 0; probe < 4 && !model.queue.empty(); ++probe) {
                const auto pick = static_cast<size_t>(draw(static_cast<int32_t>(ring.Count())));
                const int32_t position =
                    probe % 2 == 0 ? draw(loop) : model.queue[pick] + draw(3) - 1;
                ASSERT_EQ(ring.Neighbours(position), model.Neighbours(position))
                    << "seed " << seed << " step " << step << " at " << position;
            }
        }
    }
    EXPECT_EQ(fullest, MarkerRing::kCapacity);
}

TEST(MarkerRingTest, OldestGoesWhenMoreThanTwoHundredAreSet) {
    MarkerRing ring;
    for (int32_t i = 0; i < 205; ++i)
        ring.Push(10 * i);
    EXPECT_EQ(ring.Count(), 200u);
    EXPECT_EQ(ring.Front(), 50);
    EXPECT_EQ(ring.Back(), 2040);
    EXPECT_EQ(ring.Neighbours(0), std::pair(2040, 50));
}

TEST(MarkerRingTest, NeighboursCloseTheRingAcrossTheWrap) {
    const MarkerRing ring = RingOf({500, 800, 100, 200});  // the head has wrapped behind 800
    EXPECT_EQ(ring.Neighbours(600), std::pair(500, 800));
    EXPECT_EQ(ring.Neighbours(800), std::pair(800, 800));
    EXPECT_EQ(ring.Neighbours(150), std::pair(100, 200));
    EXPECT_EQ(ring.Neighbours(900), std::pair(800, 100));  // none above: the smallest is next
    EXPECT_EQ(ring.Neighbours(50), std::pair(800, 100));
    EXPECT_EQ(ring.Neighbours(300), std::pair(200, 500));  // the oldest follows the newest
}

TEST(MarkerRingTest, ASingleMarkerIsItsOwnNeighbour) {
    const MarkerRing ring = RingOf({42});
    EXPECT_EQ(ring.Neighbours(0), std::pair(42, 42));
    EXPECT_EQ(ring.Neighbours(42), std::pair(42, 42));
    EXPECT_EQ(ring.Neighbours(1000), std::pair(42, 42));
}

TEST(MarkerRingTest, DropFromKeepsTheOrderOfTheRest) {
    MarkerRing ring = RingOf({500, 800, 900, 100, 200, 300});
    ring.DropFrom(800);
    EXPECT_EQ(Contents(ring), (std::vector{500, 100, 200, 300}));
    EXPECT_EQ(ring.Neighbours(700), std::pair(500, 100));
    ring.DropFrom(250);
    EXPECT_EQ(Contents(ring), (std::vector{100, 200}));
    ring.DropFrom(100);
    EXPECT_EQ(ring.Count(), 0u);
}

TEST(MarkerRingTest, AnEmptyRingTakesDropsAndStartsAnew) {
    MarkerRing ring = RingOf({700, 20});
    ring.DropFront();
    ring.DropFront();
    ring.DropFront();
    ring.DropFrom(0);
    EXPECT_EQ(ring.Count(), 0u);
    ring.Push(900);
    EXPECT_EQ(ring.Neighbours(10), std::pair(900, 900));
}

}  // namespace
}  // namespace Quorvan::dsp
