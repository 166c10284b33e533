#pragma once

#include <vector>

#include "plugins/dpf/DpfPlugin.h"
#include "plugins/dpf/vst3/Vst3Moves.h"
#include "travesty/audio_processor.h"

namespace Quorvan::Plugins {

/// The framework's audio processor with what it leaves out: the side-chain's samples, a mono input,
/// automation and MIDI at their frames, buffers of 64 bits, and the tail. It cuts each buffer where
/// a parameter moves and has the framework process the parts.
///
/// Threads  Process on the audio thread; it neither allocates nor waits.
class Vst3Processor {
public:
    /// What plays; no plug-in once it is gone.
    void Begin(DpfPlugin* played) { plugin = played; }
    DpfPlugin* Played() const { return plugin; }
    /// The framework's own processor, of which this one counts as a part.
    void Surround(v3_audio_processor** framework) { inner = framework; }
    v3_audio_processor** Inner() const { return inner; }

    bool IsMono() const { return isMono; }
    void ActivateSideChain(bool on) { hasSideChain = on; }

    v3_result SetArrangements(v3_speaker_arrangement* inputs, int32_t inputCount,
                              v3_speaker_arrangement* outputs, int32_t outputCount);
    v3_result GetArrangement(int32_t direction, int32_t bus, v3_speaker_arrangement* arrangement);
    v3_result SetUp(v3_process_setup& setup);
    v3_result Process(v3_process_data& data);
    uint32_t TailSamples() const;

private:
    static constexpr size_t kInputs = 4, kOutputs = 2;

    void FindChannels(const v3_process_data& data);
    void TakeDoubles(const v3_process_data& data);
    void GiveDoubles(const v3_process_data& data);
    v3_result ProcessPart(const v3_process_data& data, int32_t from, int32_t to);

    DpfPlugin* plugin = nullptr;
    v3_audio_processor** inner = nullptr;
    bool isMono = false;
    bool hasSideChain = false;
    Vst3Moves moves;
    std::vector<float> scratch;  ///< one buffer a channel, for 64 bits
    size_t longest = 0;          ///< frames of each
    std::array<float*, kInputs> inputs{};
    std::array<float*, kOutputs> outputs{};
};

}  // namespace Quorvan::Plugins
