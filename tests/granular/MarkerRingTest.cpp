#include "granular/MarkerRing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>

namespace Quorvan::dsp {
namespace {

/// The same ring in plain words: a queue of positions.
struct Model {
    std::deque<int32_t> queue;

    void Push(int32_t position) {
        if (queue.size() == 200)
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
    EXPECT_EQ(fullest, 200u);
}

}  // namespace
}  // namespace Quorvan::dsp
