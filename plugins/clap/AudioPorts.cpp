#include "plugins/clap/AudioPorts.h"

#include <algorithm>
#include <cstdio>

namespace Quorvan::Clap {

namespace {

constexpr clap_id kMainInput = 0, kSideChain = 1, kMainOutput = 2;
constexpr uint32_t kStereo = 2;

const char* TypeOf(uint32_t channels) { return channels == 1 ? CLAP_PORT_MONO : CLAP_PORT_STEREO; }

template <size_t N>
void SetText(char (&target)[N], const char* text) {
    std::snprintf(target, N, "%s", text);
}

}  // namespace

bool AudioPorts::GetPort(uint32_t index, bool isInput, clap_audio_port_info_t& info) const {
    if (index >= Count(isInput))
        return false;
    const bool isMain = index == 0;
    const uint32_t channels = isInput && isMain ? inputs : kStereo;
    info = {};
    info.id = isInput ? (isMain ? kMainInput : kSideChain) : kMainOutput;
    SetText(info.name, isInput ? (isMain ? "Input" : "Side-Chain") : "Output");
    info.flags = CLAP_AUDIO_PORT_SUPPORTS_64BITS |
                 (isMain ? static_cast<uint32_t>(CLAP_AUDIO_PORT_IS_MAIN) : 0u);
    info.channel_count = channels;
    info.port_type = TypeOf(channels);
    info.in_place_pair = CLAP_INVALID_ID;
    if (isMain && inputs == kStereo)
        info.in_place_pair = isInput ? kMainOutput : kMainInput;
    return true;
}

bool AudioPorts::GetConfig(uint32_t index, AudioPortsConfig& config) {
    if (index >= kConfigs)
        return false;
    const uint32_t channels = index == 0 ? 2 : 1;
    config = {};
    config.id = index;
    SetText(config.name, index == 0 ? "Stereo" : "Mono to Stereo");
    config.inputPortCount = Count(true);
    config.outputPortCount = Count(false);
    config.hasMainInput = config.hasMainOutput = true;
    config.mainInputChannels = channels;
    config.mainInputType = TypeOf(channels);
    config.mainOutputChannels = kStereo;
    config.mainOutputType = TypeOf(kStereo);
    return true;
}

bool AudioPorts::Select(clap_id config) {
    if (config >= kConfigs)
        return false;
    inputs = config == 0 ? 2 : 1;
    return true;
}

Host::StreamFormat AudioPorts::Format(double rate) const {
    return {.sampleRate = rate, .inputs = inputs, .outputs = kStereo, .sideChainInputs = kStereo};
}

void AudioPorts::Prepare(uint32_t longestBuffer) {
    for (auto* memory : {&mainMemory, &sideMemory, &outputMemory})
        for (Plane& plane : *memory)
            plane.assign(longestBuffer, 0.0f);
}

bool AudioPorts::Fits(const clap_process_t& process) const {
    const auto isWide = [](const clap_audio_buffer_t& port) { return port.data32 == nullptr; };
    return process.frames_count <= outputMemory[0].size() ||
           (std::none_of(process.audio_inputs, process.audio_inputs + process.audio_inputs_count,
                         isWide) &&
            std::none_of(process.audio_outputs, process.audio_outputs + process.audio_outputs_count,
                         isWide));
}

void AudioPorts::ReadChannels(const clap_audio_buffer_t& port, uint32_t frames,
                              std::array<Plane, 2>& memory, Channels& channels) {
    for (uint32_t c = 0; c < std::min(port.channel_count, 2u); ++c) {
        if (port.data32 != nullptr) {
            channels[c] = port.data32[c];
        } else if (port.data64 != nullptr && port.data64[c] != nullptr) {
            const auto length = std::min<size_t>(frames, memory[c].size());
            std::transform(port.data64[c], port.data64[c] + length, memory[c].begin(),
                           [](double sample) { return static_cast<float>(sample); });
            channels[c] = memory[c].data();
        }
    }
}

void AudioPorts::Begin(const clap_process_t& process) {
    mainChannels = sideChannels = outputChannels = {};
    const uint32_t frames = process.frames_count;
    if (process.audio_inputs_count > 0)
        ReadChannels(process.audio_inputs[0], frames, mainMemory, mainChannels);
    if (process.audio_inputs_count > 1)
        ReadChannels(process.audio_inputs[1], frames, sideMemory, sideChannels);
    if (process.audio_outputs_count > 0) {
        clap_audio_buffer_t& port = process.audio_outputs[0];
        port.constant_mask = 0;
        for (uint32_t c = 0; c < std::min(port.channel_count, 2u); ++c)
            outputChannels[c] = port.data32 != nullptr ? port.data32[c] : outputMemory[c].data();
    }
}

Host::AudioBuffers AudioPorts::Part(uint32_t first, uint32_t frames) {
    const auto shift = [first](const Channels& whole, Channels& part) {
        std::transform(whole.begin(), whole.end(), part.begin(), [first](float* channel) {
            return channel != nullptr ? channel + first : nullptr;
        });
        return part.data();
    };
    Host::AudioBuffers buffers;
    buffers.inputs = shift(mainChannels, mainPart);
    buffers.outputs = shift(outputChannels, outputPart);
    buffers.sideChain = shift(sideChannels, sidePart);
    buffers.frames = frames;
    return buffers;
}

void AudioPorts::End(const clap_process_t& process) {
    if (process.audio_outputs_count == 0)
        return;
    const clap_audio_buffer_t& port = process.audio_outputs[0];
    if (port.data32 != nullptr || port.data64 == nullptr)
        return;
    for (uint32_t c = 0; c < std::min(port.channel_count, 2u); ++c)
        if (port.data64[c] != nullptr)
            std::copy_n(outputMemory[c].begin(),
                        std::min<size_t>(process.frames_count, outputMemory[c].size()),
                        port.data64[c]);
}

}  // namespace Quorvan::Clap
