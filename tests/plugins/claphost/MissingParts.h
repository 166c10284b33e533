#pragma once

#include "clap/plugin.h"
#include "clap/string-sizes.h"

// Structs of the interface that the headers in use lack, declared a second time, by its published
// layout, so that a mistake in the plug-in's own declarations shows.

namespace Quorvan::ClapHost {

struct TailPart {
    uint32_t(CLAP_ABI* get)(const clap_plugin_t*);
};
struct RenderPart {
    bool(CLAP_ABI* hasHardRealtimeRequirement)(const clap_plugin_t*);
    bool(CLAP_ABI* set)(const clap_plugin_t*, int32_t mode);
};
struct PortsConfig {
    clap_id id;
    char name[CLAP_NAME_SIZE];
    uint32_t inputPorts, outputPorts;
    bool hasMainInput;
    uint32_t mainInputChannels;
    const char* mainInputType;
    bool hasMainOutput;
    uint32_t mainOutputChannels;
    const char* mainOutputType;
};
struct PortsConfigPart {
    uint32_t(CLAP_ABI* count)(const clap_plugin_t*);
    bool(CLAP_ABI* get)(const clap_plugin_t*, uint32_t index, PortsConfig*);
    bool(CLAP_ABI* select)(const clap_plugin_t*, clap_id);
};
enum PresetKind : uint32_t { kPresetFile, kPresetInPlugin };
struct PresetPart {
    bool(CLAP_ABI* fromLocation)(const clap_plugin_t*, uint32_t kind, const char* location,
                                 const char* key);
};
struct HostPresetPart {
    void(CLAP_ABI* onError)(const clap_host_t*, uint32_t kind, const char* location,
                            const char* key, int32_t osError, const char* message);
    void(CLAP_ABI* loaded)(const clap_host_t*, uint32_t kind, const char* location,
                           const char* key);
};
struct HostChangedPart {  ///< of both latency and tail
    void(CLAP_ABI* changed)(const clap_host_t*);
};
struct HostLogPart {
    void(CLAP_ABI* log)(const clap_host_t*, int32_t severity, const char* message);
};
struct HostThreadPart {
    bool(CLAP_ABI* isMain)(const clap_host_t*);
    bool(CLAP_ABI* isAudio)(const clap_host_t*);
};

}  // namespace Quorvan::ClapHost
