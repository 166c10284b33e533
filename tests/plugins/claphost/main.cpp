#include <sstream>

#include "plugins/claphost/Check.h"
#include "plugins/claphost/ClapLibrary.h"

/// Tries what hosts do with a CLAP plug-in, and what they should not.
int main(int count, char** arguments) {
    auto& options = Quorvan::ClapHost::Check::options;
    testing::InitGoogleTest(&count, arguments);
    if (count < 2)
        return std::puts("Usage: claphost PLUGIN.clap [PRESETS [LIVES [SECONDS [SEED]]]]"), 2;
    options.plugin = arguments[1];
    try {
        Quorvan::ClapHost::ClapLibrary(options.plugin);
    } catch (const std::exception& error) {
        return std::puts(error.what()), 2;
    }
    std::istringstream presets(count > 2 ? arguments[2] : "");
    for (std::string key; std::getline(presets, key, ',');)
        options.presets.push_back(key);
    for (int i = 3; i < count && i < 6; ++i)
        options.numbers[i - 3] = static_cast<uint32_t>(std::stoul(arguments[i]));
    return RUN_ALL_TESTS();
}
