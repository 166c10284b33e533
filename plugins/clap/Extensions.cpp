#include "plugins/clap/Extensions.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <string_view>

#include "clap/ext/audio-ports.h"
#include "clap/ext/gui.h"
#include "clap/ext/latency.h"
#include "clap/ext/note-ports.h"
#include "clap/ext/params.h"
#include "clap/ext/state.h"
#include "clap/ext/timer-support.h"
#include "plugins/clap/ClapPlugin.h"
#include "plugins/clap/Descriptor.h"
#include "plugins/ui/Face.h"

namespace Quorvan::Clap {

namespace {

ClapPlugin& Of(const clap_plugin_t* plugin) { return ClapPlugin::Of(plugin); }

/// No exception crosses to the host.
template <class Work>
bool Guarded(Work&& work) {
    try {
        return work();
    } catch (const std::exception&) {
        return false;
    }
}

// ---- Ports

uint32_t CLAP_ABI CountPorts(const clap_plugin_t*, bool isInput) {
    return AudioPorts::Count(isInput);
}
bool CLAP_ABI GetPort(const clap_plugin_t* plugin, uint32_t index, bool isInput,
                      clap_audio_port_info_t* info) {
    return Of(plugin).ports.GetPort(index, isInput, *info);
}
constexpr clap_plugin_audio_ports_t kPorts{CountPorts, GetPort};

uint32_t CLAP_ABI CountConfigs(const clap_plugin_t*) { return AudioPorts::kConfigs; }
bool CLAP_ABI GetConfig(const clap_plugin_t*, uint32_t index, AudioPortsConfig* config) {
    return AudioPorts::GetConfig(index, *config);
}
bool CLAP_ABI SelectConfig(const clap_plugin_t* plugin, clap_id id) {
    return !Of(plugin).instrument.IsActive() && Of(plugin).ports.Select(id);
}
constexpr PluginAudioPortsConfig kConfigs{CountConfigs, GetConfig, SelectConfig};

uint32_t CLAP_ABI CountNotePorts(const clap_plugin_t*, bool isInput) { return isInput ? 1 : 0; }
bool CLAP_ABI GetNotePort(const clap_plugin_t*, uint32_t index, bool isInput,
                          clap_note_port_info_t* info) {
    if (!isInput || index != 0)
        return false;
    *info = {};
    info->supported_dialects = CLAP_NOTE_DIALECT_MIDI | CLAP_NOTE_DIALECT_CLAP;
    info->preferred_dialect = CLAP_NOTE_DIALECT_MIDI;
    std::snprintf(info->name, sizeof info->name, "MIDI");
    return true;
}
constexpr clap_plugin_note_ports_t kNotePorts{CountNotePorts, GetNotePort};

// ---- Parameters

uint32_t CLAP_ABI CountParameters(const clap_plugin_t*) {
    return static_cast<uint32_t>(Host::HostControls().size());
}
bool CLAP_ABI GetParameterInfo(const clap_plugin_t* plugin, uint32_t index,
                               clap_param_info_t* info) {
    return Of(plugin).GetParameterInfo(index, *info);
}
bool CLAP_ABI GetValue(const clap_plugin_t* plugin, clap_id id, double* value) {
    if (Host::FindHostControl(id) == nullptr)
        return false;
    const Host::Instrument& instrument = Of(plugin).instrument;
    *value = instrument.ControlValue(id, instrument.ControlPosition(id));
    return true;
}
bool CLAP_ABI ValueToText(const clap_plugin_t* plugin, clap_id id, double value, char* text,
                          uint32_t size) {
    if (Host::FindHostControl(id) == nullptr || text == nullptr || size == 0)
        return false;
    return Guarded([&] {
        const Host::Instrument& instrument = Of(plugin).instrument;
        const float position = instrument.PositionOfControlValue(id, value);
        std::snprintf(text, size, "%s", instrument.ControlText(id, position).c_str());
        return true;
    });
}
bool CLAP_ABI TextToValue(const clap_plugin_t* plugin, clap_id id, const char* text,
                          double* value) {
    if (Host::FindHostControl(id) == nullptr || text == nullptr)
        return false;
    return Guarded([&] {
        const Host::Instrument& instrument = Of(plugin).instrument;
        const Host::TextResult result = instrument.ControlPositionOf(id, text);
        if (result.position)
            *value = instrument.ControlValue(id, *result.position);
        return result.position.has_value();
    });
}
void CLAP_ABI Flush(const clap_plugin_t* plugin, const clap_input_events_t* in,
                    const clap_output_events_t* out) {
    Of(plugin).Flush(in, out);
}
constexpr clap_plugin_params_t kParameters{CountParameters, GetParameterInfo, GetValue,
                                           ValueToText,     TextToValue,      Flush};

// ---- The rest

bool CLAP_ABI SaveState(const clap_plugin_t* plugin, const clap_ostream_t* stream) {
    return Guarded([&] { return Of(plugin).SaveState(*stream); });
}
bool CLAP_ABI LoadState(const clap_plugin_t* plugin, const clap_istream_t* stream) {
    return Guarded([&] { return Of(plugin).LoadState(*stream); });
}
constexpr clap_plugin_state_t kState{SaveState, LoadState};

uint32_t CLAP_ABI Latency(const clap_plugin_t* plugin) {
    return Of(plugin).instrument.LatencyFrames();
}
constexpr clap_plugin_latency_t kLatency{Latency};

uint32_t CLAP_ABI TailFrames(const clap_plugin_t* plugin) { return Of(plugin).TailFrames(); }
constexpr PluginTail kTail{TailFrames};

bool CLAP_ABI NeedsRealtime(const clap_plugin_t*) { return false; }
bool CLAP_ABI SetRenderMode(const clap_plugin_t* plugin, int32_t mode) {
    if (mode < 0 || mode > kRenderOffline)
        return false;
    Of(plugin).instrument.SetOffline(mode == kRenderOffline);
    return true;
}
constexpr PluginRender kRender{NeedsRealtime, SetRenderMode};

void CLAP_ABI OnTimer(const clap_plugin_t* plugin, clap_id id) {
    Guarded([&] {
        Of(plugin).OnTimer(id);
        return true;
    });
}
constexpr clap_plugin_timer_support_t kTimer{OnTimer};

bool CLAP_ABI LoadPreset(const clap_plugin_t* plugin, uint32_t kind, const char* location,
                         const char* key) {
    return Guarded([&] { return Of(plugin).LoadPreset(kind, location, key); });
}
constexpr PluginPresetLoad kPresetLoad{LoadPreset};

// ---- The window

bool CLAP_ABI IsApiSupported(const clap_plugin_t* plugin, const char* api, bool isFloating) {
    return Of(plugin).gui.IsSupported(api, isFloating);
}
bool CLAP_ABI GetPreferredApi(const clap_plugin_t*, const char** api, bool* isFloating) {
    *api = CLAP_WINDOW_API_X11;
    *isFloating = false;
    return true;
}
bool CLAP_ABI CreateGui(const clap_plugin_t* plugin, const char* api, bool isFloating) {
    return Guarded([&] { return Of(plugin).gui.Create(api, isFloating); });
}
void CLAP_ABI DestroyGui(const clap_plugin_t* plugin) { Of(plugin).gui.Destroy(); }
bool CLAP_ABI SetScale(const clap_plugin_t* plugin, double scale) {
    return Of(plugin).gui.SetScale(scale);
}
bool CLAP_ABI GetSize(const clap_plugin_t* plugin, uint32_t* width, uint32_t* height) {
    const Ui::FaceWindow::Size size = Of(plugin).gui.GetSize();
    *width = size.width;
    *height = size.height;
    return size.width > 0;
}
bool CLAP_ABI CanResize(const clap_plugin_t*) { return true; }
bool CLAP_ABI GetResizeHints(const clap_plugin_t*, clap_gui_resize_hints_t* hints) {
    *hints = {.can_resize_horizontally = true,
              .can_resize_vertically = true,
              .preserve_aspect_ratio = true,
              .aspect_ratio_width = Ui::Face::kWidth,
              .aspect_ratio_height = Ui::Face::kHeight};
    return true;
}
bool CLAP_ABI AdjustSize(const clap_plugin_t*, uint32_t* width, uint32_t* height) {
    const Ui::FaceWindow::Size size = Ui::FaceWindow::Fitting({*width, *height});
    *width = size.width;
    *height = size.height;
    return true;
}
bool CLAP_ABI SetSize(const clap_plugin_t* plugin, uint32_t width, uint32_t height) {
    return Guarded([&] { return Of(plugin).gui.SetSize({width, height}); });
}
bool CLAP_ABI SetParent(const clap_plugin_t* plugin, const clap_window_t* window) {
    return Guarded([&] { return Of(plugin).gui.SetParent(*window); });
}
bool CLAP_ABI SetTransient(const clap_plugin_t* plugin, const clap_window_t* window) {
    return Guarded([&] { return Of(plugin).gui.SetTransient(*window); });
}
void CLAP_ABI SuggestTitle(const clap_plugin_t* plugin, const char* title) {
    Guarded([&] {
        Of(plugin).gui.SuggestTitle(title != nullptr ? title : "");
        return true;
    });
}
bool CLAP_ABI ShowGui(const clap_plugin_t* plugin) {
    return Guarded([&] { return Of(plugin).gui.Show(); });
}
bool CLAP_ABI HideGui(const clap_plugin_t* plugin) {
    return Guarded([&] { return Of(plugin).gui.Hide(); });
}
constexpr clap_plugin_gui_t kGui{.is_api_supported = IsApiSupported,
                                 .get_preferred_api = GetPreferredApi,
                                 .create = CreateGui,
                                 .destroy = DestroyGui,
                                 .set_scale = SetScale,
                                 .get_size = GetSize,
                                 .can_resize = CanResize,
                                 .get_resize_hints = GetResizeHints,
                                 .adjust_size = AdjustSize,
                                 .set_size = SetSize,
                                 .set_parent = SetParent,
                                 .set_transient = SetTransient,
                                 .suggest_title = SuggestTitle,
                                 .show = ShowGui,
                                 .hide = HideGui};

void CLAP_ABI OnFd(const clap_plugin_t* plugin, int, uint32_t) {
    Guarded([&] {
        Of(plugin).gui.TakeEvents();
        return true;
    });
}
constexpr PluginPosixFd kPosixFd{OnFd};

const void* CLAP_ABI GetExtension(const clap_plugin_t*, const char* id) {
    struct Row {
        std::string_view id;
        const void* functions;
    };
    static constexpr Row kRows[]{
        {CLAP_EXT_AUDIO_PORTS, &kPorts},    {kAudioPortsConfigExtension, &kConfigs},
        {CLAP_EXT_NOTE_PORTS, &kNotePorts}, {CLAP_EXT_PARAMS, &kParameters},
        {CLAP_EXT_STATE, &kState},          {CLAP_EXT_LATENCY, &kLatency},
        {kTailExtension, &kTail},           {kRenderExtension, &kRender},
        {CLAP_EXT_TIMER_SUPPORT, &kTimer},  {kPresetLoadExtension, &kPresetLoad},
        {kPresetLoadDraft, &kPresetLoad},   {CLAP_EXT_GUI, &kGui},
        {kPosixFdExtension, &kPosixFd}};
    for (const Row& row : kRows)
        if (id != nullptr && row.id == id)
            return row.functions;
    return nullptr;
}

bool CLAP_ABI Init(const clap_plugin_t* plugin) {
    return Guarded([&] { return Of(plugin).Init(); });
}
void CLAP_ABI Destroy(const clap_plugin_t* plugin) { delete &Of(plugin); }
bool CLAP_ABI Activate(const clap_plugin_t* plugin, double rate, uint32_t, uint32_t longest) {
    return Of(plugin).Activate(rate, longest);
}
void CLAP_ABI Deactivate(const clap_plugin_t* plugin) { Of(plugin).Deactivate(); }
bool CLAP_ABI StartProcessing(const clap_plugin_t*) { return true; }
void CLAP_ABI StopProcessing(const clap_plugin_t*) {}
void CLAP_ABI Reset(const clap_plugin_t* plugin) { Of(plugin).Reset(); }
clap_process_status CLAP_ABI Process(const clap_plugin_t* plugin, const clap_process_t* process) {
    return Of(plugin).Process(*process);
}
void CLAP_ABI OnMainThread(const clap_plugin_t* plugin) { OnTimer(plugin, CLAP_INVALID_ID); }

}  // namespace

clap_plugin_t PluginFunctions(ClapPlugin* plugin) {
    return {.desc = &Descriptor(),
            .plugin_data = plugin,
            .init = Init,
            .destroy = Destroy,
            .activate = Activate,
            .deactivate = Deactivate,
            .start_processing = StartProcessing,
            .stop_processing = StopProcessing,
            .reset = Reset,
            .process = Process,
            .get_extension = GetExtension,
            .on_main_thread = OnMainThread};
}

}  // namespace Quorvan::Clap
