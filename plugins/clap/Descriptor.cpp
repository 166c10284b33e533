#include "plugins/clap/Descriptor.h"

namespace Quorvan::Clap {

const clap_plugin_descriptor_t& Descriptor() {
    static const char* features[]{CLAP_PLUGIN_FEATURE_AUDIO_EFFECT, CLAP_PLUGIN_FEATURE_GRANULAR,
                                  CLAP_PLUGIN_FEATURE_PITCH_SHIFTER, CLAP_PLUGIN_FEATURE_STEREO,
                                  nullptr};
    static const clap_plugin_descriptor_t descriptor{
        .clap_version = CLAP_VERSION,
        .id = "quorvan.tesserae",
        .name = "Tesserae",
        .vendor = "Quorvan",
        .url = "",
        .manual_url = "",
        .support_url = "",
        .version = TESSERAE_VERSION,
        .description = "Live granular processor: a looping tape, played back as a cloud of grains",
        .features = features};
    return descriptor;
}

}  // namespace Quorvan::Clap
