#include "granular/MarkerRing.h"

#include "support/PlainParts.h"

namespace Quorvan::dsp {
namespace {

// A write head that runs round a loop, drops the markers it meets and leaves new ones behind it;
// now and then the loop is cut short or emptied.
TEST(MarkerRingTest, FollowsAPlainQueueOverManyLaps) {
    uint32_t fullest = 0;
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        Dice dice(seed);
        const auto draw = [&dice](int32_t below) {
            return static_cast<int32_t>(dice.Below(static_cast<uint32_t>(below)));
        };
        const int32_t loop = seed % 2 == 0 ? 500 : 20000, stride = seed % 3 == 0 ? 3 : 60;
        MarkerRing ring;
        std::deque<int32_t> queue;
        const auto dropFront = [&] {
            ring.DropFront();
            if (!queue.empty())
                queue.pop_front();
        };
        int32_t head = 0;
        for (uint32_t step = 0; step < 3000; ++step) {
            const int32_t next = std::min(loop, head + 1 + draw(stride));
            while (!queue.empty() && ((queue.front() > head && queue.front() <= next) ||
                                      (next == loop && queue.front() == 0)))
                dropFront();
            head = next == loop ? 0 : next;
            const int32_t event = draw(100), from = draw(loop);
            if (event < 90) {
                if (queue.size() == 200)
                    queue.pop_front();
                ring.Push(head);
                queue.push_back(head);
            } else if (event < 97) {
                dropFront();
            } else if (event == 97) {
                ring.Clear();
                queue.clear();
            } else {
                ring.DropFrom(from);
                std::erase_if(queue, [from](int32_t marker) { return marker >= from; });
            }
            ASSERT_EQ(ring.Count(), queue.size());
            for (uint32_t i = 0; i < ring.Count(); ++i)
                ASSERT_EQ(ring[i], queue[i]);
            ASSERT_TRUE(queue.empty() ||
                        (ring.Front() == queue.front() && ring.Back() == queue.back()));
            fullest = std::max(fullest, ring.Count());
            for (uint32_t probe = 0; probe < 4 && !queue.empty(); ++probe) {
                const int32_t near = queue[dice.Below(ring.Count())] + draw(3) - 1;
                const int32_t position = probe % 2 == 0 ? draw(loop) : near;
                ASSERT_EQ(ring.Neighbours(position), PlainNeighbours(queue, position))
                    << "seed " << seed << " step " << step << " at " << position;
            }
        }
    }
    EXPECT_EQ(fullest, 200u);
}

}  // namespace
}  // namespace Quorvan::dsp
