#include "plugins/dpf/vst3/Vst3Processor.h"

#include <algorithm>
#include <limits>

#include "travesty/component.h"

namespace Quorvan::Plugins {

namespace {

/// A channel of a bus; null where the host brings none.
template <class Sample>
Sample* Channel(const v3_audio_bus_buffers* buses, int32_t count, int32_t bus, int32_t channel) {
    if (buses == nullptr || bus >= count || channel >= buses[bus].num_channels)
        return nullptr;
    Sample** channels = nullptr;
    if constexpr (std::is_same_v<Sample, float>)
        channels = buses[bus].channel_buffers_32;
    else
        channels = buses[bus].channel_buffers_64;
    return channels == nullptr ? nullptr : channels[channel];
}

template <class Sample>
Sample* Input(const v3_process_data& data, size_t channel) {
    const auto number = static_cast<int32_t>(channel);
    return Channel<Sample>(data.inputs, data.num_input_buses, number / 2, number % 2);
}

template <class Sample>
Sample* Output(const v3_process_data& data, size_t channel) {
    return Channel<Sample>(data.outputs, data.num_output_buses, 0, static_cast<int32_t>(channel));
}

/// The song's place so many frames later.
v3_process_context Later(v3_process_context place, int32_t frames) {
    place.continuous_time_in_samples += frames;
    if ((place.state & V3_PROCESS_CTX_PLAYING) == 0)
        return place;
    place.project_time_in_samples += frames;
    const double tempo = (place.state & V3_PROCESS_CTX_TEMPO_VALID) != 0 ? place.bpm : 120.0;
    place.project_time_quarters += frames * tempo / (60.0 * place.sample_rate);
    return place;
}

}  // namespace

v3_result Vst3Processor::SetArrangements(v3_speaker_arrangement* in, int32_t inputCount,
                                         v3_speaker_arrangement* out, int32_t outputCount) {
    constexpr v3_speaker_arrangement kStereo = V3_SPEAKER_L | V3_SPEAKER_R;
    std::array<v3_speaker_arrangement, 2> stereo{kStereo, kStereo};
    const bool asksForMono = in != nullptr && inputCount > 0 && in[0] == V3_SPEAKER_M;
    if (!asksForMono || inputCount > 2) {
        const v3_result result =
            v3_cpp_obj(inner)->set_bus_arrangements(inner, in, inputCount, out, outputCount);
        isMono = isMono && result != V3_OK;
        return result;
    }
    if (inputCount == 2)
        stereo[1] = in[1];
    const v3_result result =
        v3_cpp_obj(inner)->set_bus_arrangements(inner, stereo.data(), inputCount, out, outputCount);
    isMono = isMono || result == V3_OK;
    return result;
}

v3_result Vst3Processor::GetArrangement(int32_t direction, int32_t bus,
                                        v3_speaker_arrangement* arrangement) {
    const v3_result result =
        v3_cpp_obj(inner)->get_bus_arrangement(inner, direction, bus, arrangement);
    if (result == V3_OK && isMono && direction == V3_INPUT && bus == 0)
        *arrangement = V3_SPEAKER_M;
    return result;
}

v3_result Vst3Processor::SetUp(v3_process_setup& setup) {
    longest = setup.symbolic_sample_size == V3_SAMPLE_64
                  ? static_cast<size_t>(std::max(setup.max_block_size, 0))
                  : 0;
    scratch.assign(longest * (kInputs + kOutputs), 0.0f);
    v3_process_setup single = setup;
    single.symbolic_sample_size = V3_SAMPLE_32;
    return v3_cpp_obj(inner)->setup_processing(inner, &single);
}

void Vst3Processor::TakeDoubles(const v3_process_data& data) {
    const auto frames = static_cast<size_t>(data.nframes);
    for (size_t c = 0; c < kInputs; ++c) {
        const double* const from = Input<double>(data, c);
        inputs[c] = from == nullptr ? nullptr : &scratch[c * longest];
        if (from != nullptr)
            std::transform(from, from + frames, inputs[c],
                           [](double sample) { return static_cast<float>(sample); });
    }
    for (size_t c = 0; c < kOutputs; ++c)
        outputs[c] = &scratch[(kInputs + c) * longest];
}

void Vst3Processor::GiveDoubles(const v3_process_data& data) {
    for (size_t c = 0; c < kOutputs; ++c)
        if (double* const to = Output<double>(data, c))
            std::copy_n(outputs[c], data.nframes, to);
}

void Vst3Processor::FindChannels(const v3_process_data& data) {
    for (size_t c = 0; c < kInputs; ++c)
        inputs[c] = Input<float>(data, c);
    for (size_t c = 0; c < kOutputs; ++c)
        outputs[c] = Output<float>(data, c);
}

v3_result Vst3Processor::ProcessPart(const v3_process_data& data, int32_t from, int32_t to) {
    const auto later = [from](float* channel) {
        return channel == nullptr ? nullptr : channel + from;
    };
    std::array<float*, 2> mainInputs{later(inputs[0]), later(inputs[isMono ? 0 : 1])};
    std::array<float*, 2> outs{later(outputs[0]), later(outputs[1])};
    v3_audio_bus_buffers input{}, output{};
    input.num_channels = mainInputs[0] != nullptr && mainInputs[1] != nullptr ? 2 : 0;
    input.channel_buffers_32 = mainInputs.data();
    output.num_channels = outs[0] != nullptr && outs[1] != nullptr ? 2 : 0;
    output.channel_buffers_32 = outs.data();
    v3_process_context place{};
    v3_process_data part = data;
    part.symbolic_sample_size = V3_SAMPLE_32;
    part.nframes = to - from;
    part.num_input_buses = part.num_output_buses = 1;
    part.inputs = &input;
    part.outputs = &output;
    part.input_params = moves.At(from);
    part.output_params = data.output_params != nullptr ? data.output_params : moves.Nobody();
    part.input_events = part.output_events = nullptr;
    if (data.ctx != nullptr) {
        place = Later(*data.ctx, from);
        part.ctx = &place;
    }
    DpfPlugin::Beside beside;
    if (hasSideChain)
        beside.sideChain = {later(inputs[2]), later(inputs[3])};
    beside.events = moves.Midi(from, to);
    plugin->Take(beside);
    const v3_result result = v3_cpp_obj(inner)->process(inner, &part);
    plugin->Take({});
    return result;
}

v3_result Vst3Processor::Process(v3_process_data& data) {
    if (plugin == nullptr || data.nframes < 0)
        return V3_NOT_INITIALIZED;
    const bool isDouble = data.symbolic_sample_size == V3_SAMPLE_64;
    if (isDouble && static_cast<size_t>(data.nframes) > longest)
        return V3_INVALID_ARG;
    moves.Gather(data);
    isDouble ? TakeDoubles(data) : FindChannels(data);
    v3_result result = V3_OK;
    int32_t from = 0;
    do {
        const int32_t to = moves.NextCut(from);
        result = ProcessPart(data, from, to);
        from = to;
    } while (from < data.nframes && result == V3_OK);
    if (isDouble)
        GiveDoubles(data);
    return result;
}

uint32_t Vst3Processor::TailSamples() const {
    constexpr uint32_t kEndless = std::numeric_limits<uint32_t>::max();
    const double frames = plugin == nullptr ? 0.0 : plugin->TailFrames();
    return frames < static_cast<double>(kEndless) ? static_cast<uint32_t>(frames) : kEndless;
}

}  // namespace Quorvan::Plugins
