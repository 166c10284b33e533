#include "c/tesserae.h"
#include "support/AllocationTrap.h"
#include "support/Test.h"

namespace Quorvan::test {
namespace {

using Handle = std::unique_ptr<tesserae_processor, decltype(&tesserae_destroy)>;

Handle Ready(const char* preset) {
    tesserae_processor* made = nullptr;
    EXPECT_EQ(tesserae_create_seeded(1, &made), TESSERAE_OK);
    EXPECT_EQ(tesserae_load_factory_preset(made, preset), TESSERAE_OK);
    EXPECT_EQ(tesserae_prepare(made, 48000.0, 2, 2, 1), TESSERAE_OK);
    return {made, &tesserae_destroy};
}

TEST(CFaceTest, WhatTheAudioThreadMayCallTakesNoMemory) {
    const Handle handle = Ready("shimmer");
    tesserae_processor* const p = handle.get();
    std::vector<float> left = Noise(1, 700, 0.3f), right = Noise(2, 700, 0.3f);
    float* const channels[] = {left.data(), right.data()};
    tesserae_display display{};
    display.size = sizeof display;
    uint64_t shown = 0;
    float moved = 0.0f, position = 0.0f;
    const AllocationTrap trap;
    for (uint32_t n = 0; n < 300; ++n) {
        EXPECT_EQ(tesserae_set_transport(p, 100.0 + n, n * 0.9, n % 5 != 0), TESSERAE_OK);
        EXPECT_EQ(tesserae_watch(p, 1), TESSERAE_OK);
        for (uint32_t write = 0; write < 20; ++write)
            EXPECT_EQ(tesserae_set_at(p, 997 * write % 1500, 3024, 0.5f), TESSERAE_OK);
        EXPECT_TRUE(n % 60 != 7 || tesserae_panic(p) == TESSERAE_OK);
        EXPECT_EQ(tesserae_set(p, 3013, 0.5f), TESSERAE_READ_ONLY);
        EXPECT_EQ(tesserae_set(p, 3024, std::nanf("")), TESSERAE_BAD_ARGUMENT);
        EXPECT_EQ(tesserae_process(p, channels, channels, channels, nullptr, n * 2), TESSERAE_OK);
        EXPECT_EQ(tesserae_get(p, 3024, &position), TESSERAE_OK);
        EXPECT_EQ(tesserae_read_display(p, 0, &display), TESSERAE_OK);
        shown += display.grain_count;
        moved += display.destinations[0];
    }
    EXPECT_EQ(trap.caught, 0u);
    uint32_t texture = 0, classic = 0;
    EXPECT_EQ(tesserae_find_parameter(p, "grain size", &texture), TESSERAE_OK);
    EXPECT_EQ(tesserae_find_parameter(nullptr, "grain size", &classic), TESSERAE_OK);
    EXPECT_NE(texture, classic) << "the one in force is meant";
    EXPECT_GT(shown, 0u);
    EXPECT_GT(moved, 0.0f);
    EXPECT_EQ(position, 0.5f);
}

TEST(CFaceTest, WhatMakesNoSenseHasACodeAndASentence) {
    const Handle handle = Ready("init");
    tesserae_processor* const p = handle.get();
    tesserae_processor* fresh = nullptr;
    ASSERT_EQ(tesserae_create(&fresh), TESSERAE_OK);
    const Handle owner(fresh, &tesserae_destroy);
    float number = 0.0f;
    float* const channels[] = {&number, nullptr};
    char text[4];
    tesserae_parameter parameter{};
    const std::pair<tesserae_result, tesserae_result> ofProcessor[] = {
        {tesserae_process(p, nullptr, nullptr, channels, nullptr, 1), TESSERAE_BAD_ARGUMENT},
        {tesserae_prepare(p, 48000.0, 3, 2, 0), TESSERAE_BAD_ARGUMENT},
        {tesserae_set(p, 3152, 0.5f), TESSERAE_BAD_ARGUMENT},
        {tesserae_set_text(p, "Dry / Wet", "soaked"), TESSERAE_BAD_TEXT},
        {tesserae_load_factory_preset(p, "shimer"), TESSERAE_UNKNOWN_NAME},
        {tesserae_load_state(p, "{\"format\": 3}"), TESSERAE_BAD_TEXT},
        {tesserae_get_text(p, 3020, text, sizeof text), TESSERAE_NO_ROOM}};
    for (const auto& [found, expected] : ofProcessor)
        EXPECT_EQ(found, expected) << &expected - &ofProcessor[0].second;
    EXPECT_STREQ(text, "50.");
    EXPECT_EQ(std::string(tesserae_error(p)).back(), '.');
    EXPECT_EQ(tesserae_process(fresh, channels, nullptr, channels, nullptr, 1),
              TESSERAE_NOT_PREPARED);
    EXPECT_STREQ(tesserae_error(fresh),
                 "The processor does not know its sample rate yet; call "
                 "tesserae_prepare first.");
    EXPECT_EQ(tesserae_save_state(nullptr, nullptr), TESSERAE_BAD_ARGUMENT);
    EXPECT_STREQ(tesserae_error(nullptr), "The argument \"processor\" may not be null.");
    EXPECT_EQ(tesserae_describe_parameter(0, &parameter), TESSERAE_BAD_ARGUMENT);
    EXPECT_EQ(tesserae_choice(3020, 0), nullptr);
    tesserae_result last = TESSERAE_OK;
    for (int i = 0; i < 9000 && last == TESSERAE_OK; ++i)
        last = tesserae_set(p, 3020, 0.5f);
    EXPECT_EQ(last, TESSERAE_QUEUE_FULL);
}

}  // namespace
}  // namespace Quorvan::test
