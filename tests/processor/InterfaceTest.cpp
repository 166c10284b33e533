// The library's boundary, as a wrapper meets it.
#include <dlfcn.h>

#include "support/ProcessorRig.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

TEST(InterfaceTest, LibraryExportsTheFactoryAlone) {
    EXPECT_EQ(std::system("test \"$(nm -D --defined-only " TESSERAE_LIBRARY
                          " | cut -d' ' -f3)\" = GetProcessorFactory"),
              0);
    void* const library = dlopen(TESSERAE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto make =
        reinterpret_cast<decltype(&GetProcessorFactory)>(dlsym(library, "GetProcessorFactory"));
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
    const std::unique_ptr<IProcessor> processor(factory->CreateProcessor());
    EXPECT_EQ(processor->GetInfo()->parameterCount, 0u);
    EXPECT_TRUE(processor->SetLogger(nullptr));
    const ProcessorInfo& info = *processor->GetInfo();
    const std::array<uint32_t, 8> found{
        info.parameterCount,   info.inputChannels, info.outputChannels, info.auxOutputChannels,
        info.auxInputChannels, info.blockSize,     info.version,        info.wrapperFlag};
    EXPECT_EQ(found, (std::array<uint32_t, 8>{3152, 2, 2, 4, 2, 44, 5, 0}));
}

TEST(InterfaceTest, BlockSizeAndLatencyFollowTheRate) {
    ProcessorRig rig;
    const std::vector<std::pair<float, uint32_t>> sizes{
        {44100.0f, 44}, {48000.0f, 48}, {96000.0f, 96}, {192000.0f, 192},
        {1000.0f, 4},   {0.0f, 44},     {-1.0f, 44},    {384000.0f, 384}};
    for (const auto& [rate, size] : sizes) {
        EXPECT_EQ(rig.processor->GetBlockSize(rate), size) << rate;
        if (rate < 8000.0f)
            continue;
        EXPECT_TRUE(rig.processor->Initialize(&rate));
        EXPECT_EQ(rig.processor->GetLatency(), 3 * size);
        EXPECT_EQ(rig.processor->GetTotalLatency(), 3 * size + 44);  // the record's block
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

TEST(InterfaceTest, IndicesOutOfRangeAreRefusedAndPositionsHeldToTheirs) {
    ProcessorRig rig;
    ParameterDescription description;
    uint32_t id = 77;
    const auto& processor = rig.processor;
    EXPECT_FALSE(processor->GetParameterDescription(3152, &description));
    EXPECT_FALSE(processor->GetParameterDescriptionWithId(3152, &id, &description));
    EXPECT_EQ(id, 77u);
    EXPECT_FALSE(processor->SetParameter(3151, 0.5f) || processor->SetParameter(3152, 0.5f));
    EXPECT_FALSE(processor->IsBlobParameter(3152));
    float value = -1.0f;
    EXPECT_FALSE(processor->GetParameter(3151, &value));
    EXPECT_TRUE(processor->GetParameter(3150, &value));
    value = 0.25f;
    EXPECT_TRUE(processor->GetParameter(3151, &value));
    EXPECT_EQ(value, 0.25f);

    const uint32_t index = ProcessorRig::IndexOf("MoteWeaver_GrainSizeSynced");
    for (const float odd : {7.0f, -7.0f, std::nanf("")}) {
        EXPECT_EQ(processor->SetParameter(index, odd), !std::isnan(odd));
        EXPECT_EQ(rig.GetAt(index), odd > 1.0f ? 1.0f : 0.0f);
    }
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

TEST(InterfaceTest, BlocksThatDoNotFitAreAnsweredWithSilence) {
    ProcessorRig rig;
    Channel buffer(1024, 0.5f), left(1024, 3.0f), right(1024, 3.0f);
    float* inputs[] = {buffer.data(), buffer.data()};
    float* outputs[] = {left.data(), right.data()};
    float* missing[] = {buffer.data(), nullptr};
    ProcessData fit{};
    fit.inputs = inputs;
    fit.outputs = outputs;
    fit.inputCount = fit.outputCount = 2;
    fit.tempo = 120.0f;
    fit.frameCount = rig.blockSize;
    const auto answer = [&](const std::function<void(ProcessData&)>& change) {
        ProcessData data = fit;
        change(data);
        return rig.processor->Process(&data);
    };
    EXPECT_FALSE(answer([](ProcessData& data) { data.frameCount += 4; }));
    EXPECT_EQ(left[rig.blockSize + 3], 0.0f);
    EXPECT_EQ(left[rig.blockSize + 4], 3.0f);
    EXPECT_FALSE(answer([](ProcessData& data) { data.frameCount -= 1; }));
    EXPECT_TRUE(answer([](ProcessData& data) { data.frameCount = 0; }));
    EXPECT_FALSE(rig.processor->Process(nullptr));
    EXPECT_FALSE(answer([](ProcessData& data) { data.inputs = nullptr; }));
    EXPECT_FALSE(answer([&](ProcessData& data) { data.inputs = missing; }));
    EXPECT_FALSE(answer([&](ProcessData& data) { data.outputs = missing; }));
    EXPECT_TRUE(answer([](ProcessData&) {}));  // without auxiliary outputs
    EXPECT_TRUE(answer([](ProcessData& data) {
        data.outputs = nullptr;
        data.outputCount = 0;
    }));
    EXPECT_TRUE(answer([](ProcessData& data) { data.tempo = data.songPosition = std::nanf(""); }));
}

TEST(InterfaceTest, ABlockOfNoFramesTakesUpWritesAndSoundsNothing) {
    ProcessorRig plain, flushed;
    ProcessData none{};
    float* channels[] = {flushed.scratch[0].data(), flushed.scratch[1].data()};
    none.inputs = none.outputs = channels;
    none.inputCount = none.outputCount = 2;
    none.tempo = 120.0f;
    for (ProcessorRig* rig : {&plain, &flushed}) {
        rig->MakeAudible().SetAll("StepSeq_Scale=0.5");
        rig->EndPresetLoad();
        rig->RunSilence(1);
    }
    const Stereo in = NoisePair(plain.blockSize * 400);
    uint32_t state = 1;
    const auto flush = [&] {
        EXPECT_TRUE(flushed.processor->Process(&none));
        flushed.frames = 4 + (state = state * 1664525u + 1013904223u) / 390451573u * 4;
    };
    // Nor are the lengths of the other blocks heard, but for the rounding of a sum.
    const Stereo whole = plain.Run(in), cut = flushed.Run(in, flush);
    for (size_t c = 0; c < 2; ++c)
        for (size_t i = 0; i < in[c].size(); ++i)
            ASSERT_NEAR(whole[c][i], cut[c][i], 1e-6f) << i;
    // A panic that is over before the next block of sound; also from a wrapper without channels.
    none.inputs = none.outputs = nullptr;
    for (const float position : {1.0f, 0.0f}) {
        flushed.Set("Panic", position);
        flush();
        none.inputCount = none.outputCount = 0;
    }
    EXPECT_EQ(PeakLevel(flushed.RunSilence(400)[0]), 0.0f);
    EXPECT_GT(PeakLevel(plain.RunSilence(400)[0]), 0.01f);
}

TEST(InterfaceTest, SamplesThatAreNoNumbersCountAsZero) {
    const Channel clean = Noise(1, 48 * 400, 0.3f);
    std::array<Channel, 2> sides{clean, clean};
    for (size_t i = 5; i < clean.size(); i += 977) {
        sides[0][i] = 0.0f;
        sides[1][i] = i % 2 == 0 ? std::nanf("") : i % 3 == 0 ? INFINITY : -INFINITY;
    }
    std::array<Stereo, 2> out;
    std::array<Channel, 2> envelopes;
    for (size_t k = 0; k < 2; ++k) {
        ProcessorRig rig;
        rig.MakeAudible().Set("Envelope Follower Source", 1.0f);
        out[k] = {clean, clean};
        for (size_t at = 0; at < clean.size(); at += rig.blockSize)
            rig.RunBlock({&sides[k][at], const_cast<float*>(&clean[at])},
                         {&out[k][0][at], &out[k][1][at]}, {},
                         {&sides[k][at], &sides[k][at], &sides[k][at]});
        envelopes[k] = rig.scratch[1];  // that of the side-chain, an auxiliary output
    }
    EXPECT_EQ(out[0], out[1]);
    EXPECT_EQ(envelopes[0], envelopes[1]);
}

TEST(InterfaceTest, AbsurdRatesAreRefusedAndAnotherMayFollowAtAnyTime) {
    ProcessorRig rig;
    for (const float absurd : {768001.0f, 1e8f, 1e30f, INFINITY, 1e-30f, 999.0f}) {
        EXPECT_FALSE(rig.processor->Initialize(&absurd)) << absurd;
        EXPECT_LE(rig.processor->GetBlockSize(absurd), 768u);
        rig.MakeAudible();
        EXPECT_EQ(PeakLevel(rig.Run(NoisePair(48 * 400))[0]), 0.0f);
    }
    for (const float rate : {NAN, 48000.0f, 8000.0f, 384000.0f, 44100.0f, 11025.0f, 192000.0f}) {
        rig.Initialize(rate);  // what is no number counts as 44100
        const float peak = PeakLevel(rig.Run(NoisePair(size_t{rig.blockSize} * 400))[0]);
        EXPECT_GT(peak, 0.05f) << rate;
        EXPECT_LE(peak, 1.0f) << rate;
    }
}

}  // namespace
}  // namespace Quorvan::Processor
