#pragma once

#include "clap/plugin.h"
#include "clap/string-sizes.h"

/// Parts of the CLAP interface that the headers in use do not carry, declared by its published
/// binary layout.
namespace Quorvan::Clap {

inline constexpr const char* kTailExtension = "clap.tail";
struct PluginTail {
    uint32_t(CLAP_ABI* get)(const clap_plugin_t*);  ///< frames; from INT32_MAX on endless
};
struct HostTail {
    void(CLAP_ABI* changed)(const clap_host_t*);
};

inline constexpr const char* kRenderExtension = "clap.render";
inline constexpr int32_t kRenderOffline = 1;
struct PluginRender {
    bool(CLAP_ABI* hasHardRealtimeRequirement)(const clap_plugin_t*);
    bool(CLAP_ABI* set)(const clap_plugin_t*, int32_t mode);
};

inline constexpr const char* kPosixFdExtension = "clap.posix-fd-support";
inline constexpr uint32_t kFdReadable = 1;
struct PluginPosixFd {
    void(CLAP_ABI* onFd)(const clap_plugin_t*, int fd, uint32_t flags);
};
struct HostPosixFd {
    bool(CLAP_ABI* registerFd)(const clap_host_t*, int fd, uint32_t flags);
    bool(CLAP_ABI* modifyFd)(const clap_host_t*, int fd, uint32_t flags);
    bool(CLAP_ABI* unregisterFd)(const clap_host_t*, int fd);
};

inline constexpr const char* kAudioPortsConfigExtension = "clap.audio-ports-config";
struct AudioPortsConfig {
    clap_id id;
    char name[CLAP_NAME_SIZE];
    uint32_t inputPortCount, outputPortCount;
    bool hasMainInput;
    uint32_t mainInputChannels;
    const char* mainInputType;
    bool hasMainOutput;
    uint32_t mainOutputChannels;
    const char* mainOutputType;
};
struct PluginAudioPortsConfig {
    uint32_t(CLAP_ABI* count)(const clap_plugin_t*);
    bool(CLAP_ABI* get)(const clap_plugin_t*, uint32_t index, AudioPortsConfig*);
    bool(CLAP_ABI* select)(const clap_plugin_t*, clap_id id);
};

inline constexpr const char* kLogExtension = "clap.log";
inline constexpr int32_t kLogWarning = 2, kLogError = 3;
struct HostLog {
    void(CLAP_ABI* log)(const clap_host_t*, int32_t severity, const char* message);
};

/// The draft and the final name have one layout.
inline constexpr const char* kPresetLoadExtension = "clap.preset-load/2";
inline constexpr const char* kPresetLoadDraft = "clap.preset-load.draft/2";
inline constexpr uint32_t kLocationFile = 0, kLocationPlugin = 1;
struct PluginPresetLoad {
    /// location is a path for files, null for the plug-in's own; key names one of several presets.
    bool(CLAP_ABI* fromLocation)(const clap_plugin_t*, uint32_t kind, const char* location,
                                 const char* key);
};
struct HostPresetLoad {
    void(CLAP_ABI* onError)(const clap_host_t*, uint32_t kind, const char* location,
                            const char* key, int32_t osError, const char* message);
    void(CLAP_ABI* loaded)(const clap_host_t*, uint32_t kind, const char* location,
                           const char* key);
};

}  // namespace Quorvan::Clap
