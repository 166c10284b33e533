#include "plugins/clap/picture/PictureHost.h"

#include <dlfcn.h>

#include <cmath>
#include <cstring>
#include <stdexcept>

#include "clap/ext/state.h"
#include "clap/ext/timer-support.h"

namespace Quorvan::Clap {

const void* PictureHost::Need(const void* part, const std::string& what) {
    if (part == nullptr)
        throw std::runtime_error("The plug-in lacks " + what + ".");
    return part;
}

const void* CLAP_ABI PictureHost::Extension(const clap_host_t*, const char* id) {
    using Host = const clap_host_t*;
    static constexpr clap_host_timer_support_t kTimers{
        [](Host h, uint32_t milliseconds, clap_id* timer) {
            PictureHost& me = Of(h);
            *timer = me.timersMade++;
            me.timers[*timer] = {milliseconds / 1000.0, 0.0};
            return true;
        },
        [](Host h, clap_id timer) { return Of(h).timers.erase(timer) > 0; }};
    static constexpr HostPosixFd kFiles{
        [](Host h, int file, uint32_t) { return Of(h).files.insert(file).second; },
        [](Host h, int file, uint32_t) { return Of(h).files.count(file) > 0; },
        [](Host h, int file) { return Of(h).files.erase(file) > 0; }};
    if (std::strcmp(id, CLAP_EXT_TIMER_SUPPORT) == 0)
        return &kTimers;
    return std::strcmp(id, kPosixFdExtension) == 0 ? &kFiles : nullptr;
}

PictureHost::PictureHost(const std::string& library, const std::string& state)
    : handle(dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle == nullptr)
        throw std::runtime_error("The plug-in can't be loaded: " + std::string(dlerror()));
    entry = static_cast<const clap_plugin_entry_t*>(Need(dlsym(handle, "clap_entry"), "an entry"));
    if (!entry->init(library.c_str()))
        throw std::runtime_error("The plug-in's entry fails.");
    const auto* const factory = static_cast<const clap_plugin_factory_t*>(
        Need(entry->get_factory(CLAP_PLUGIN_FACTORY_ID), "a factory"));
    constexpr auto kNothing = [](const clap_host_t*) {};
    host = {CLAP_VERSION, this,    "Tesserae's pictures", "Quorvan", "", "1", Extension, kNothing,
            kNothing,     kNothing};
    const auto* const descriptor = factory->get_plugin_descriptor(factory, 0);
    plugin = factory->create_plugin(factory, &host, descriptor->id);
    if (plugin == nullptr || !plugin->init(plugin))
        throw std::runtime_error("The plug-in is not made.");
    Load(state);
    if (!plugin->activate(plugin, kRate, 1, kFrames) || !plugin->start_processing(plugin))
        throw std::runtime_error("The plug-in does not start.");
}

PictureHost::~PictureHost() {
    plugin->stop_processing(plugin);
    plugin->deactivate(plugin);
    plugin->destroy(plugin);
    entry->deinit();
    dlclose(handle);
}

void PictureHost::Load(const std::string& state) {
    std::string_view left(state);
    const clap_istream_t stream{&left, [](const clap_istream_t* from, void* bytes, uint64_t most) {
                                    auto& text = *static_cast<std::string_view*>(from->ctx);
                                    const size_t given = text.copy(static_cast<char*>(bytes), most);
                                    text.remove_prefix(given);
                                    return static_cast<int64_t>(given);
                                }};
    if (!Get<clap_plugin_state_t>(CLAP_EXT_STATE).load(plugin, &stream))
        throw std::runtime_error("The plug-in does not take the state.");
}

void PictureHost::Play(const std::array<const float*, 2>& music, double tempo) {
    const double now = static_cast<double>(played) / kRate;
    clap_event_transport_t song{};
    song.header = {sizeof song, 0, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_TRANSPORT, 0};
    song.flags =
        CLAP_TRANSPORT_HAS_TEMPO | CLAP_TRANSPORT_HAS_BEATS_TIMELINE | CLAP_TRANSPORT_IS_PLAYING;
    song.tempo = tempo;
    song.song_pos_beats =
        std::llround(now * tempo / 60.0 * static_cast<double>(CLAP_BEATTIME_FACTOR));
    // The side-chain is silent; nobody writes to inputs.
    static const std::array<float, kFrames> kSilence{};
    std::array<float*, 2> in{const_cast<float*>(music[0]), const_cast<float*>(music[1])};
    std::array<float*, 2> side{const_cast<float*>(kSilence.data()),
                               const_cast<float*>(kSilence.data())};
    std::array<std::array<float, kFrames>, 2> sound{};
    std::array<float*, 2> out{sound[0].data(), sound[1].data()};
    const std::array<clap_audio_buffer_t, 2> inputs{
        {{in.data(), nullptr, 2, 0, 0}, {side.data(), nullptr, 2, 0, 3}}};
    clap_audio_buffer_t output{out.data(), nullptr, 2, 0, 0};
    const clap_input_events_t none{
        nullptr, [](const clap_input_events_t*) { return 0u; },
        [](const clap_input_events_t*, uint32_t) -> const clap_event_header_t* { return nullptr; }};
    const clap_output_events_t nobody{
        nullptr, [](const clap_output_events_t*, const clap_event_header_t*) { return true; }};
    const clap_process_t process{played, kFrames, &song, inputs.data(), &output,
                                 2,      1,       &none, &nobody};
    if (plugin->process(plugin, &process) == CLAP_PROCESS_ERROR)
        throw std::runtime_error("The plug-in does not play.");
    played += kFrames;

    const auto due = timers;  // a timer may end itself
    for (const auto& [id, timer] : due)
        if (timers.count(id) > 0 && timer.next <= now) {
            timers[id].next = now + timer.period - 0.5 * kFrames / kRate;
            Get<clap_plugin_timer_support_t>(CLAP_EXT_TIMER_SUPPORT).on_timer(plugin, id);
        }
    for (const int file : std::set<int>(files))
        Get<PluginPosixFd>(kPosixFdExtension).onFd(plugin, file, kFdReadable);
}

}  // namespace Quorvan::Clap
