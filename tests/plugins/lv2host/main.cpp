// Runs the LV2 with the trap set, states coming and going beside it: lv2host Tesserae.so

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <random>
#include <thread>

#include "plugins/lv2host/Lv2Instance.h"

namespace Quorvan::test {

static const char* binary = nullptr;

TEST(Lv2Test, RunNeitherAllocatesNorLocksAndStatesComeBackToTheByte) {
    Lv2Instance lv2(binary), second(binary);
    const std::string plain = lv2.Save();
    std::string seeded = plain;
    seeded.insert(seeded.find("\"parameters\""), "\"seed\": 7,\n \"preset\": \"Other\",\n ");
    std::atomic<bool> ends{false};
    std::thread other([&] {
        for (; !ends; lv2.Restore(plain)) {
            lv2.Restore(seeded);
            lv2.Save();
        }
    });
    std::mt19937 random(3);
    float dryWet = 50.0f, loudest = 0.0f;
    constexpr uint32_t kDryWetPort = 10;
    lv2.Connect(kDryWetPort, dryWet);
    for (int i = 0; i < 3000; ++i) {
        const uint32_t frames = static_cast<uint32_t>(random()) % (Lv2Instance::kMost + 1);
        for (uint32_t n = 0; n < 2 * frames; ++n)
            lv2.audio[n % 2][n / 2] = static_cast<float>(random() % 2001) / 2000.0f - 0.5f;
        dryWet = static_cast<float>(random() % 101);
        lv2.Run(frames);
        for (uint32_t n = 0; n < frames; ++n)
            loudest = std::isfinite(lv2.audio[4][n]) ? std::max(loudest, lv2.audio[4][n]) : 1e9f;
    }
    ends = true;
    other.join();
    EXPECT_TRUE(loudest > 0.05f && loudest < 10.0f) << loudest;
    EXPECT_EQ(ClapHost::Trap::Caught(), 0u);
    lv2.Restore(seeded);
    const std::string saved = lv2.Save();
    second.Restore(saved);
    EXPECT_TRUE(saved != plain && second.Save() == saved);
}

}  // namespace Quorvan::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    Quorvan::test::binary = argc > 1 ? argv[1] : "Tesserae.so";
    return RUN_ALL_TESTS();
}
