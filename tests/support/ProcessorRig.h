#pragma once

#include "processor/IProcessor.h"
#include "support/ModuleRig.h"
#include "support/SeededClock.h"

namespace Quorvan::test {

/// The display record as a user interface reads it, byte by byte.
struct Display {
    const float* buffer;
    uint64_t length, writePosition, playPosition;
    const std::vector<uint32_t>* grains;
    const std::vector<uint32_t>* markers;
    std::atomic<int32_t>* lock;
    uint64_t started, ended;
};

inline Stereo NoisePair(size_t length, float amplitude = 0.3f) {
    return {Noise(1, length, amplitude), Noise(2, length, amplitude)};
}

/// A processor made through the factory, driven block by block as a wrapper drives it. All chance
/// in it follows from the seed.
class ProcessorRig {
public:
    explicit ProcessorRig(float sampleRate = 48000.0f, uint64_t seed = 1) : rate(sampleRate) {
        const SeededClock clock(seed);
        factory.reset(GetProcessorFactory());
        processor.reset(static_cast<Processor::IProcessor_V5*>(factory->CreateProcessor()));
        processor->SetLogger(nullptr);
        Initialize(rate);
    }
    void Initialize(float sampleRate) {
        rate = sampleRate;
        processor->Initialize(&rate);
        blockSize = frames = processor->GetBlockSize(rate);
        for (Channel& channel : scratch)
            channel.assign(blockSize, 0.0f);
    }

    static uint32_t IndexOf(const std::string& name) {
        static const std::map<std::string, uint32_t> indices = ReadNames();
        const auto found = indices.find(name);
        if (found == indices.end())
            throw std::invalid_argument("no parameter " + name);
        return found->second;
    }
    ProcessorRig& Set(const std::string& name, float position) {
        processor->SetParameter(IndexOf(name), position);
        return *this;
    }
    ProcessorRig& Set(const std::map<std::string, float>& positions) {
        for (const auto& [name, position] : positions)
            Set(name, position);
        return *this;
    }
    /// Sets what "name=position" says, several with semicolons between them. The prefix goes ahead
    /// of each name.
    ProcessorRig& SetAll(const std::string& positions, const std::string& prefix = {}) {
        std::istringstream text(positions);
        std::string name, position;
        while (std::getline(text, name, '=') && std::getline(text, position, ';'))
            Set(prefix + name, std::stof(position));
        return *this;
    }
    float Get(const std::string& name) { return GetAt(IndexOf(name)); }
    float GetAt(uint32_t index) {
        float position = -1.0f;
        processor->GetParameter(index, &position);
        return position;
    }
    /// Full wet signal at unity and a cloud of medium grains.
    ProcessorRig& MakeAudible() {
        return SetAll(
            "Dry / Wet=1;Granular Volume=1;Master Volume=1;MoteWeaver_MaxGrains=1;"
            "MoteWeaver_GranularPhaseHelper_RateUnSynced=0.7;MoteWeaver_GrainSizeAbsolute=0.4;"
            "MoteWeaver_ShapeParam=0.5;MoteWeaver_Shape=0.3;MoteWeaver_Pitch=0.5;"
            "MoteWeaver_RandomDirection=1;MoteWeaver_BufferLengthSynced=0.5;"
            "MoteWeaver_Speed=0.75");
    }
    void EndPresetLoad() {
        Set("PresetLoading", 1.0f);
        RunSilence(1);
        Set("PresetLoading", 0.0f);
    }

    /// One block over the given channels; the song moves on while it plays.
    bool RunBlock(std::vector<float*> inputs, std::vector<float*> outputs,
                  std::vector<float*> aux = {}, std::vector<float*> sideChain = {}) {
        while (aux.size() < 4)
            aux.push_back(scratch[aux.size()].data());
        Processor::ProcessData data{};
        data.inputs = inputs.data();
        data.inputCount = static_cast<uint32_t>(inputs.size());
        data.outputs = outputs.data();
        data.outputCount = static_cast<uint32_t>(outputs.size());
        data.frameCount = frames;
        data.auxOutputs = aux.data();
        data.auxOutputCount = static_cast<uint32_t>(aux.size());
        data.auxInputs = sideChain.data();
        data.auxInputCount = static_cast<uint32_t>(sideChain.size());
        data.tempo = tempo;
        data.songPosition = static_cast<float>(songPosition);
        data.transportPlaying = playing ? 1 : 0;
        data.processingMode = offline ? 1 : 0;
        const bool result = processor->Process(&data);
        if (playing)
            songPosition += static_cast<double>(frames) / static_cast<double>(rate) *
                            static_cast<double>(tempo) / 60.0;
        return result;
    }
    /// Whole blocks of a stereo signal; what doesn't fill one is left out. everyBlock may set
    /// another length.
    Stereo Run(const Stereo& input, const std::function<void()>& everyBlock = {}) {
        Stereo output{Channel(input[0].size()), Channel(input[0].size())};
        const size_t length = input[0].size() / blockSize * blockSize;
        for (size_t at = 0; at < length; at += frames) {
            if (everyBlock)
                everyBlock();
            frames = std::min(frames, static_cast<uint32_t>(length - at));
            RunBlock({const_cast<float*>(&input[0][at]), const_cast<float*>(&input[1][at])},
                     {&output[0][at], &output[1][at]});
        }
        frames = blockSize;
        return output;
    }
    Stereo RunSilence(uint32_t blocks) {
        const Channel zeros(size_t{blocks} * blockSize, 0.0f);
        return Run({zeros, zeros});
    }

    Display ReadDisplay() {
        Display display{};
        uint32_t size = sizeof(display);
        processor->GetParameterBlob(136, reinterpret_cast<uint8_t*>(&display), &size);
        return display;
    }
    auto TakeParameterChanges() {
        return Taken<Processor::ParameterChange>(&Processor::IProcessor_V5::GetParameterChanges);
    }
    auto TakeBlobChanges() {
        return Taken<Processor::BlobChange>(&Processor::IProcessor_V5::GetBlobChanges);
    }

    float rate;
    float tempo = 120.0f;
    double songPosition = 0.0;  ///< quarter notes
    bool playing = false;
    bool offline = false;
    uint32_t blockSize = 0;
    uint32_t frames = 0;  ///< of the next block
    std::unique_ptr<Processor::IProcessorFactory> factory;
    std::unique_ptr<Processor::IProcessor_V5> processor;
    std::array<Channel, 4> scratch;

private:
    template <class Change, class Getter>
    std::vector<Change> Taken(Getter get) {
        const Change* list = nullptr;
        int32_t count = 0;
        (processor.get()->*get)(&list, &count);
        return {list, list + count};
    }
    static std::map<std::string, uint32_t> ReadNames() {
        std::map<std::string, uint32_t> indices;
        const std::unique_ptr<Processor::IProcessorFactory> maker(GetProcessorFactory());
        const std::unique_ptr<Processor::IProcessor> made(maker->CreateProcessor());
        for (uint32_t i = 0; i < Processor::kParameterCount; ++i) {
            Processor::ParameterDescription description;
            if (made->GetParameterDescription(i, &description))
                indices[description.name] = i;
        }
        return indices;
    }
};

}  // namespace Quorvan::test
