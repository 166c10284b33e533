#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <random>
#include <string>
#include <thread>

#include "plugins/claphost/Trap.h"

/// What the hosts of LV2 and VST3 share.
namespace Quorvan::test {

inline void* library = nullptr;
template <class Function>
Function Symbol(const char* name) {
    return reinterpret_cast<Function>(dlsym(library, name));
}
/// The command line names the plug-in's binary.
inline bool Begin(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    library = dlopen(argc > 1 ? argv[1] : "Tesserae.so", RTLD_NOW | RTLD_LOCAL);
    return library != nullptr;
}

/// A state with other entries, such as a seed, so that chance repeats, and further settings.
inline std::string With(std::string state, const std::string& entries,
                        const std::string& settings = "") {
    if (!settings.empty())
        state.insert(state.find('}', state.find("\"parameters\"")), "," + settings);
    return state.insert(state.rfind('}'), "," + entries);
}

/// Noise goes through it, with the trap set, while states come and go; they come back to the byte.
/// run gets the plug-in, a number of frames and that of the turn.
template <class Plugin, class Run>
void RunsBesideStates(Run run) {
    Plugin plugin, second;
    const std::string plain = plugin.Save();
    const std::string seeded = With(plain, R"("seed": 7, "preset": "Other")", R"("Feedback": 0.5)");
    std::atomic<bool> ends{false};
    std::thread other([&] {
        for (; !ends; plugin.Restore(plain)) {
            plugin.Restore(seeded);
            plugin.Save();
        }
    });
    std::mt19937 random(3);
    float loudest = 0.0f;
    for (int turn = 0; turn < 3000; ++turn) {
        const uint32_t frames = static_cast<uint32_t>(random()) % (Plugin::kMost + 1);
        for (uint32_t n = 0; n < 4 * frames; ++n)
            plugin.floats[n % 4][n / 4] = static_cast<float>(random() % 2001) / 2000.0f - 0.5f;
        run(plugin, frames, turn);
        for (uint32_t n = 0; n < frames; ++n) {
            const float sample = std::abs(plugin.floats[4][n]);
            loudest = std::isfinite(sample) ? std::max(loudest, sample) : 1e9f;
        }
    }
    ends = true;
    other.join();
    EXPECT_TRUE(loudest > 0.05f && loudest < 10.0f) << loudest;
    EXPECT_EQ(ClapHost::Trap::Caught(), 0u);
    plugin.Restore(seeded);
    const std::string saved = plugin.Save();
    second.Restore(saved);
    EXPECT_TRUE(saved != plain && second.Save() == saved);
}

}  // namespace Quorvan::test
