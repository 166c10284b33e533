#pragma once

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <array>
#include <fstream>

#include "plugins/claphost/ClapInstance.h"
#include "plugins/claphost/Trap.h"

namespace Quorvan::ClapHost {

/// What the command line asked for.
struct Options {
    std::string plugin{};
    std::vector<std::string> presets{};  ///< keys of the plug-in's own
    std::array<uint32_t, 3> numbers{20, 1, 1};
    const uint32_t& lives = numbers[0];
    const uint32_t& soakSeconds = numbers[1];
    const uint32_t& seed = numbers[2];  ///< start of all that is random
};

/// What has been freed is given back first, so that it does not hide what is taken next.
inline double ResidentMegabytes() {
    malloc_trim(0);
    double all = 0.0, resident = 0.0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1048576.0;
}

/// Whatever is random.
struct Chance {
    std::mt19937 random;

    double Share() { return static_cast<double>(random()) / 4294967295.0; }
    uint32_t Below(uint32_t end) { return static_cast<uint32_t>(random() % end); }
    double Within(const clap_param_info_t& info) {
        return info.min_value + Share() * (info.max_value - info.min_value);
    }
    template <class All>
    auto& Of(const All& all) {
        return all[random() % std::size(all)];
    }
    /// One of a plug-in's; an unknown one where it has none.
    const clap_param_info_t& ParameterOf(const ClapInstance& instance) {
        static constexpr clap_param_info_t kUnknown{0x7777, 0, nullptr, "", "", 0.0, 1.0, 0.0};
        return instance.Parameters().empty() ? kUnknown : Of(instance.Parameters());
    }
};

/// What all checks share; a check also fails where its audio thread allocates or locks.
class Check : public testing::Test {
public:
    static inline Options options;

protected:
    void TearDown() override {
        EXPECT_EQ(Trap::Caught(), caught) << "The audio thread allocates or locks.";
    }
    /// All parameters at random values, or at a share of their ranges, all at frame 0.
    EventList SetAll(const ClapInstance& instance, double share = -1.0) {
        EventList events;
        for (const clap_param_info_t& info : instance.Parameters()) {
            const double own = share < 0.0 ? any.Share() : share;
            const double value = info.min_value + own * (info.max_value - info.min_value);
            const bool stepped = (info.flags & CLAP_PARAM_IS_STEPPED) != 0;
            events.Add(ValueAt(0, info.id, stepped ? std::round(value) : value));
        }
        return events;
    }

    /// Whether the plug-in under test has an extension.
    static bool Has(const char* extension) {
        return ClapInstance(Library()).Find<void>(extension) != nullptr;
    }
    static const ClapLibrary& Library() {
        static const ClapLibrary library(options.plugin);
        return library;
    }
    Chance any{std::mt19937(options.seed)};
    const uint64_t caught = Trap::Caught();
};

/// Checks of plug-ins that have these extensions; all others hold for any.
template <const auto&... kExtensions>
struct With : Check {
    void SetUp() override {
        if (!(Has(kExtensions) && ...))
            GTEST_SKIP() << "It lacks an extension.";
    }
};

}  // namespace Quorvan::ClapHost
