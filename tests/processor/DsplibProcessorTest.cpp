// The adapter on top of a root that is a plain module.
#include "processor/DsplibProcessor.h"

#include "framework/UnitModule.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

const dsp::ParameterTable& Table() {
    using P = dsp::ParameterSpec;
    static const dsp::ParameterTable table{P::Raw("Gain"), P::Raw(std::string(251, 'n')),
                                           P::Raw(std::string(252, 'n')), P::Raw("Last")};
    return table;
}

class PlainRoot final : public dsp::UnitModule {
public:
    PlainRoot() : UnitModule("Top", 2, 2, Table()) {}
    void OnSetup(float, uint32_t) override {}
    void OnReset(bool) override {}
    bool UpdateParameters(dsp::ProcessBlock&) override { return true; }
    bool OnProcess(dsp::ProcessBlock& block) override {
        for (uint32_t c = 0; c < block.numOutputs; ++c)
            for (uint32_t i = 0; i < block.numFrames; ++i)
                block.outputs[c][i] = Value(0) * block.inputs[c][i];
        for (uint32_t i = 0; i < block.eventsIn->count; ++i) {
            MidiEvent& out = block.eventsOut->events[block.eventsOut->count++];
            out = block.eventsIn->events[i];
            // The second of them is no MIDI message.
            out.type = i == 1 ? 7 : MidiEvent::kMidiMessage;
        }
        return true;
    }
};

using Root = DsplibProcessor<PlainRoot>;

struct Lines final : Logger {
    void Log(const char* message, int level) override {
        lines.push_back(std::to_string(level) + " " + message);
    }
    std::vector<std::string> lines;
};

TEST(DsplibProcessorTest, ANameThatIsTooLongIsLoggedAndNotGiven) {
    const auto processor = std::make_unique<Root>();
    Lines log;
    ParameterDescription description{};
    EXPECT_FALSE(processor->GetParameterDescription(2, &description));  // nobody to tell
    processor->SetLogger(&log);
    EXPECT_TRUE(processor->GetParameterDescription(1, &description));
    EXPECT_EQ(std::string(description.name), "Top_" + std::string(251, 'n'));
    EXPECT_TRUE(log.lines.empty());
    EXPECT_FALSE(processor->GetParameterDescription(2, &description));
    ASSERT_EQ(log.lines.size(), 1u);
    EXPECT_EQ(log.lines[0],
              "2 Param name too long: (257 chars instead of 256) : Top_" + std::string(251, 'n'));
}

TEST(DsplibProcessorTest, EventsTravelThroughTheTreeAndOut) {
    const auto processor = std::make_unique<Root>();
    const float rate = 48000.0f;
    processor->Initialize(&rate);
    processor->SetParameter(0, 0.5f);
    std::vector<float> in(48, 0.25f), out(48);
    float* inputs[] = {in.data()};
    float* outputs[] = {out.data()};
    ProcessData data{};
    data.inputs = inputs;
    data.outputs = outputs;
    data.inputCount = data.outputCount = 1;
    data.frameCount = 48;
    for (uint8_t note = 0; note < 3; ++note) {
        const uint8_t message[] = {0x90, note, 100};
        processor->PushMidiMessage(message);
    }
    EXPECT_TRUE(processor->Process(&data));
    EXPECT_EQ(out[47], 0.125f);
    ASSERT_EQ(data.outEventCount, 2u);
    EXPECT_EQ(data.outEvents[1].message[1], 2);
    EXPECT_EQ(data.outEvents[1].length, 3u);
    processor->ClearEventQueues();
    EXPECT_TRUE(processor->Process(&data));
    EXPECT_EQ(data.outEventCount, 0u);

    for (int i = 0; i < 300; ++i)
        processor->PushMidiMessage(data.outEvents[1].message);
    EXPECT_TRUE(processor->Process(&data));
    EXPECT_EQ(data.outEventCount, 253u);  // 254 were taken, one of them answered with another kind
}

}  // namespace
}  // namespace Quorvan::Processor
