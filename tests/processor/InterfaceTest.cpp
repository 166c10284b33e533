// The library's boundary, as a wrapper meets it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <set>

#include "support/ProcessorRig.h"
#include "support/TestSignals.h"

namespace Quorvan::Processor {
namespace {

using test::Channel;
using test::ProcessorRig;
using test::Stereo;

std::vector<std::string> ExportedSymbols(const char* library) {
    const std::string command = std::string("nm -D --defined-only ") + library;
    std::vector<std::string> symbols;
    FILE* const pipe = popen(command.c_str(), "r");
    char line[512];
    while (pipe != nullptr && std::fgets(line, sizeof(line), pipe) != nullptr) {
        const std::string text(line, std::strcspn(line, "\n"));
        symbols.push_back(text.substr(text.rfind(' ') + 1));
    }
    if (pipe != nullptr)
        pclose(pipe);
    return symbols;
}

TEST(InterfaceTest, LibraryExportsTheFactoryAlone) {
    EXPECT_EQ(ExportedSymbols(TESSERAE_LIBRARY), std::vector<std::string>{"GetProcessorFactory"});

    void* const library = dlopen(TESSERAE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto make =
        reinterpret_cast<IProcessorFactory* (*)()>(dlsym(library, "GetProcessorFactory"));
    ASSERT_NE(make, nullptr);
    const std::unique_ptr<IProcessorFactory> factory(make());
    EXPECT_EQ(factory->GetInterfaceVersion(), 5u);
    EXPECT_STREQ(factory->version, "1.0.0.2925");
    EXPECT_STREQ(factory->vendor, "Quorvan");
    EXPECT_STREQ(factory->productName, "Ondo TESSERAE");
    const std::unique_ptr<IProcessor> processor(factory->CreateProcessor());
    ASSERT_NE(processor, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(processor.get()) % 16, 0u);
}

TEST(InterfaceTest, InfoRecordIsCompletedBySetLogger) {
    const std::unique_ptr<IProcessorFactory> factory(GetProcessorFactory());
    const std::unique_ptr<IProcessor_V5> processor(
        static_cast<IProcessor_V5*>(factory->CreateProcessor()));
    EXPECT_EQ(processor->GetInfo()->parameterCount, 0u);
    EXPECT_TRUE(processor->SetLogger(nullptr));
    const ProcessorInfo& info = *processor->GetInfo();
    EXPECT_EQ(info.parameterCount, 3152u);
    EXPECT_EQ(info.inputChannels, 2u);
    EXPECT_EQ(info.outputChannels, 2u);
    EXPECT_EQ(info.auxOutputChannels, 4u);
    EXPECT_EQ(info.blockSize, 44u);
    EXPECT_EQ(info.version, 5u);
    EXPECT_EQ(info.auxInputChannels, 2u);
    EXPECT_EQ(info.wrapperFlag, 0u);
}

TEST(InterfaceTest, BlockSizeIsAboutAMillisecondInFours) {
    ProcessorRig rig;
    const std::vector<std::pair<float, uint32_t>> sizes{
        {44100.0f, 44}, {48000.0f, 48}, {96000.0f, 96}, {192000.0f, 192},
        {1000.0f, 4},   {0.0f, 44},     {-1.0f, 44},    {384000.0f, 384}};
    for (const auto& [rate, size] : sizes)
        EXPECT_EQ(rig.processor->GetBlockSize(rate), size) << rate;
}

TEST(InterfaceTest, LatencyFollowsTheRateAndTheTotalAddsTheRecordsBlock) {
    ProcessorRig rig(96000.0f);
    EXPECT_EQ(rig.processor->GetLatency(), 288u);
    EXPECT_EQ(rig.processor->GetTotalLatency(), 288u + 44u);
    const float other = 44100.0f;
    EXPECT_TRUE(rig.processor->Initialize(&other));
    EXPECT_EQ(rig.processor->GetLatency(), 132u);
}

TEST(InterfaceTest, SilentUntilInitialized) {
    const std::unique_ptr<IProcessorFactory> factory(GetProcessorFactory());
    const std::unique_ptr<IProcessor_V5> processor(
        static_cast<IProcessor_V5*>(factory->CreateProcessor()));
    Channel in(44, 1.0f), left(44, 7.0f), right(44, 7.0f), aux(44, 7.0f);
    float* inputs[] = {in.data(), in.data()};
    float* outputs[] = {left.data(), right.data()};
    float* auxOutputs[] = {aux.data(), aux.data(), aux.data(), aux.data()};
    ProcessData data{};
    data.inputs = inputs;
    data.outputs = outputs;
    data.inputCount = data.outputCount = 2;
    data.auxOutputs = auxOutputs;
    data.auxOutputCount = 4;
    data.frameCount = 44;
    EXPECT_TRUE(processor->Process(&data));
    for (const Channel& channel : {left, right, aux})
        EXPECT_EQ(channel, Channel(44, 0.0f));
}

TEST(InterfaceTest, EveryIndexHasANameOfItsOwnAndTheNamesStandWhereTheyStood) {
    ProcessorRig rig;
    std::set<std::string> names;
    ParameterDescription description;
    for (uint32_t i = 0; i < kParameterCount; ++i) {
        ASSERT_TRUE(rig.processor->GetParameterDescription(i, &description)) << i;
        names.insert(description.name);
    }
    EXPECT_EQ(names.size(), kParameterCount);
    const std::vector<std::pair<uint32_t, const char*>> places{
        {0, "MoteWeaver_GranularPhaseHelper_Mode"},
        {13, "MoteWeaver_GranularPhaseHelperTexture_Mode"},
        {26, "MoteWeaver_SPPPhaseHelper_Mode"},
        {71, "MoteWeaver_StepSequencerGranular_StepOnOff1"},
        {91, "MoteWeaver_BitCrusher_StereoBC"},
        {92, "MoteWeaver_Pitch"},
        {136, "MoteWeaver_VisualizedBuffer"},
        {157, "MoteWeaver_GateSelection"},
        {158, "EnvFollower_Attack"},
        {163, "Function1_Mode"},
        {850, "Function2_GateOut"},
        {1195, "FX1_BypassUselessParam"},
        {1199, "FX1_MultiModeFilter_Q"},
        {1204, "FX1_MultiDist_Drive"},
        {1228, "FX1_Delay_Feedback"},
        {1284, "FX1_OctaverDelay_Detune"},
        {1288, "FX1_TapeEcho_Intensity"},
        {1319, "FX1_Flanger_Chorus_Feedback"},
        {1336, "FX1_Reverb_Decay"},
        {1343, "FX1_Reverb_E_Size"},
        {1361, "FX1_DryWetInternal"},
        {1534, "FX2_Flanger_Chorus_RateType"},
        {1535, "Modulations_Dst1_Src1_Amount"},
        {2864, "Modulations_Dst95_Src7_Activated"},
        {2888, "LFO_Stereo_X_CurrentValueLFeedback"},
        {2930, "Limiter_LookaheadTimeMs"},
        {3012, "StepSeq_StepDev32"},
        {3014, "MasterVuR_Level"},
        {3015, "Bypass"},
        {3027, "FX1_Dry / Wet"},
        {3149, "Dest95_Assigned"},
        {3151, "ToolTipText"}};
    for (const auto& [index, name] : places) {
        ASSERT_TRUE(rig.processor->GetParameterDescription(index, &description));
        EXPECT_STREQ(description.name, name) << index;
    }
}

TEST(InterfaceTest, BinaryParametersSayTheirSizes) {
    ProcessorRig rig;
    ParameterDescription description{};
    const std::vector<std::pair<uint32_t, uint32_t>> blobs{{136, 72}, {3047, 816}, {3048, 240}};
    for (const auto& [index, size] : blobs) {
        EXPECT_TRUE(rig.processor->IsBlobParameter(index));
        EXPECT_TRUE(rig.processor->GetParameterDescription(index, &description));
        EXPECT_EQ(description.blobKind, 0u);
        EXPECT_EQ(description.blobSize, size);
        std::vector<uint8_t> data(size);
        uint32_t room = size - 1;
        EXPECT_FALSE(rig.processor->GetParameterBlob(index, data.data(), &room));
        EXPECT_EQ(room, size);
        EXPECT_TRUE(rig.processor->GetParameterBlob(index, data.data(), &room));
    }
    uint32_t room = 1000;
    EXPECT_FALSE(rig.processor->IsBlobParameter(92));
    EXPECT_FALSE(rig.processor->GetParameterBlob(92, nullptr, &room));
    EXPECT_EQ(room, 0u);
    EXPECT_TRUE(rig.processor->IsBlobParameter(3151));
    EXPECT_TRUE(rig.processor->GetParameterBlob(3151, nullptr, &room));
}

TEST(InterfaceTest, IndicesOutOfRangeAreRefused) {
    ProcessorRig rig;
    ParameterDescription description;
    uint32_t id = 77;
    EXPECT_FALSE(rig.processor->GetParameterDescription(3152, &description));
    EXPECT_FALSE(rig.processor->GetParameterDescriptionWithId(3152, &id, &description));
    EXPECT_EQ(id, 77u);
    EXPECT_FALSE(rig.processor->SetParameter(3151, 0.5f));
    EXPECT_FALSE(rig.processor->SetParameter(3152, 0.5f));
    EXPECT_FALSE(rig.processor->IsBlobParameter(3152));
    float value = -1.0f;
    EXPECT_FALSE(rig.processor->GetParameter(3151, &value));
    EXPECT_TRUE(rig.processor->GetParameter(3150, &value));
    value = 0.25f;
    EXPECT_TRUE(rig.processor->GetParameter(3151, &value));
    EXPECT_EQ(value, 0.25f);
}

TEST(InterfaceTest, PositionsAreHeldToTheirRangeAndMustBeNumbers) {
    ProcessorRig rig;
    const uint32_t index = ProcessorRig::IndexOf("MoteWeaver_GrainSizeSynced");
    EXPECT_TRUE(rig.processor->SetParameter(index, 7.0f));
    EXPECT_EQ(rig.GetAt(index), 1.0f);
    EXPECT_TRUE(rig.processor->SetParameter(index, -7.0f));
    EXPECT_EQ(rig.GetAt(index), 0.0f);
    EXPECT_FALSE(rig.processor->SetParameter(index, std::nanf("")));
    EXPECT_EQ(rig.GetAt(index), 0.0f);
}

TEST(InterfaceTest, ToolTipGoesAheadOfOtherBlobsOnce) {
    ProcessorRig rig;
    EXPECT_TRUE(rig.processor->SetParameter(3150, 3152.0f));
    EXPECT_TRUE(rig.TakeBlobChanges().empty());
    for (const float odd : {-1.0f, -1e30f}) {  // below the limit, and of no parameter
        EXPECT_TRUE(rig.processor->SetParameter(3150, odd));
        EXPECT_EQ(rig.TakeBlobChanges().size(), 1u);
    }
    EXPECT_TRUE(rig.processor->SetParameter(3150, 3151.5f));
    const auto changes = rig.TakeBlobChanges();
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0].index, 3151u);
    EXPECT_EQ(changes[0].size, 256u);
    EXPECT_STREQ(static_cast<const char*>(changes[0].data), "");
    EXPECT_TRUE(rig.TakeBlobChanges().empty());
}

TEST(InterfaceTest, MidiIsTakenAndDroppedWithoutAWord) {
    ProcessorRig rig;
    const uint8_t message[] = {0x90, 60, 100};
    for (int i = 0; i < 300; ++i)
        EXPECT_TRUE(rig.processor->PushMidiMessage(message));
    rig.RunSilence(1);
    EXPECT_TRUE(rig.processor->ClearEventQueues());
}

TEST(InterfaceTest, BlocksThatDoNotFitAreAnsweredWithSilence) {
    ProcessorRig rig;
    Channel buffer(1024, 0.5f);
    float* inputs[] = {buffer.data(), buffer.data()};
    Channel left(1024, 3.0f), right(1024, 3.0f);
    float* outputs[] = {left.data(), right.data()};
    ProcessData data{};
    data.inputs = inputs;
    data.outputs = outputs;
    data.inputCount = data.outputCount = 2;
    data.tempo = 120.0f;

    data.frameCount = rig.blockSize + 4;
    EXPECT_FALSE(rig.processor->Process(&data));
    EXPECT_EQ(left[rig.blockSize + 3], 0.0f);
    EXPECT_EQ(left[rig.blockSize + 4], 3.0f);
    data.frameCount = rig.blockSize - 1;
    EXPECT_FALSE(rig.processor->Process(&data));
    data.frameCount = 0;
    EXPECT_TRUE(rig.processor->Process(&data));

    data.frameCount = rig.blockSize;
    EXPECT_FALSE(rig.processor->Process(nullptr));
    data.inputs = nullptr;
    EXPECT_FALSE(rig.processor->Process(&data));
    float* missing[] = {buffer.data(), nullptr};
    data.inputs = missing;
    EXPECT_FALSE(rig.processor->Process(&data));
    data.inputs = inputs;
    data.outputs = missing;
    EXPECT_FALSE(rig.processor->Process(&data));
    data.outputs = outputs;
    EXPECT_TRUE(rig.processor->Process(&data));  // without auxiliary outputs
    data.outputs = nullptr;
    data.outputCount = 0;
    EXPECT_TRUE(rig.processor->Process(&data));  // without any
    data.outputs = outputs;
    data.outputCount = 2;
    data.tempo = std::nanf("");
    data.songPosition = std::nanf("");
    EXPECT_TRUE(rig.processor->Process(&data));
}

TEST(InterfaceTest, AnotherRateCanComeAtAnyTime) {
    ProcessorRig rig;
    rig.MakeAudible();
    for (const float rate : {48000.0f, 8000.0f, 384000.0f, 44100.0f, 11025.0f, 192000.0f}) {
        rig.rate = rate;
        ASSERT_TRUE(rig.processor->Initialize(&rate));
        rig.blockSize = rig.processor->GetBlockSize(rate);
        for (Channel& channel : rig.scratch)
            channel.assign(rig.blockSize, 0.0f);
        const auto length = static_cast<size_t>(rate) / 2;
        const Stereo out = rig.Run({test::Sine(220.0, static_cast<double>(rate), length, 0.5f),
                                    test::Sine(330.0, static_cast<double>(rate), length, 0.5f)});
        float peak = 0.0f;
        for (const float sample : out[0])
            peak = std::max(peak, std::abs(sample));
        EXPECT_GT(peak, 0.05f) << rate;
        EXPECT_LE(peak, 1.0f) << rate;
    }
}

}  // namespace
}  // namespace Quorvan::Processor
