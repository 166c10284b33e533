#pragma once

#include <array>
#include <vector>

#include "clap/ext/audio-ports.h"
#include "clap/process.h"
#include "host/engine/StreamFormat.h"
#include "plugins/clap/ClapExtras.h"

namespace Quorvan::Clap {

/// The ports of the plug-in, in its two configurations, and the way of a host's buffers to the
/// engine's: 64-bit ones by conversion.
class AudioPorts {
public:
    static constexpr uint32_t kConfigs = 2;  ///< stereo in, mono in

    bool GetPort(uint32_t index, bool isInput, clap_audio_port_info_t& info) const;
    static uint32_t Count(bool isInput) { return isInput ? 2 : 1; }
    static bool GetConfig(uint32_t index, AudioPortsConfig& config);
    bool Select(clap_id config);

    Host::StreamFormat Format(double rate) const;
    void Prepare(uint32_t longestBuffer);

    /// Audio thread. Whether the memory for conversions is long enough for a call; it is for all
    /// buffers that are no longer than what Prepare was told.
    bool Fits(const clap_process_t& process) const;
    /// Audio thread. Takes up the host's buffers of a call; converts those in 64 bits.
    void Begin(const clap_process_t& process);
    /// A stretch of them. Null channels where a port is missing. Valid until the next call.
    Host::AudioBuffers Part(uint32_t first, uint32_t frames);
    /// Converts what has been written back.
    void End(const clap_process_t& process);

private:
    using Plane = std::vector<float>;
    using Channels = std::array<float*, 2>;
    static void ReadChannels(const clap_audio_buffer_t& port, uint32_t frames,
                             std::array<Plane, 2>& memory, Channels& channels);

    uint32_t inputs = 2;
    std::array<Plane, 2> mainMemory, sideMemory, outputMemory;
    Channels mainChannels{}, sideChannels{}, outputChannels{};  ///< whole buffers
    Channels mainPart{}, sidePart{}, outputPart{};
};

}  // namespace Quorvan::Clap
