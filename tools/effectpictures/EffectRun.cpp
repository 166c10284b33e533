#include "tools/effectpictures/EffectRun.h"

#include <utility>

#include "host/engine/Engine.h"
#include "host/state/StateTransfer.h"
#include "tools/support/ExitCode.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

constexpr uint64_t kSeed = 1;
constexpr double kSettling = 1.0;  // seconds

Host::ParameterValue Read(const Host::ParameterCatalog& catalog, const std::string& name,
                          const std::string& text) {
    const auto index = catalog.Find(name);
    if (!index)
        throw Failure(ExitCode::Internal, catalog.UnknownName(name));
    const Host::TextResult result = catalog.Position(*index, text);
    if (!result.position)
        throw Failure(ExitCode::Internal, name + ": " + result.problem);
    return {*index, *result.position};
}

}  // namespace

EffectRun::EffectRun(std::string effectName, std::vector<Setting> wanted, double wetShare)
    : effect(std::move(effectName)), settings(std::move(wanted)), wet(wetShare) {}

EffectRun::Stereo EffectRun::Play(const std::vector<float>& input) const {
    Host::Preset preset;
    const auto set = [&](const std::string& name, const std::string& text) {
        preset.parameters.push_back(Read(catalog, name, text));
    };
    set("Master Volume", "0 dB");
    set("FX1_ModuleType", effect);
    set("FX1_Position", "After Mix");
    set("FX1_Dry / Wet", std::string("@").append(std::to_string(wet)));
    for (const Setting& setting : settings)
        set(std::string("FX1_").append(setting.name), setting.text);
    Host::Engine engine(kSeed);
    engine.Prepare({.sampleRate = kRate, .sendsFeedback = false});
    Host::ApplyPreset(preset, engine, catalog);

    std::vector<float> fed = input;
    fed.resize(input.size() + engine.LatencyFrames(), 0.0f);
    Stereo out{std::vector<float>(fed.size()), std::vector<float>(fed.size())};
    const std::array<const float*, 2> in{fed.data(), fed.data()};
    const std::array<float*, 2> given{out[0].data(), out[1].data()};
    engine.Process({.inputs = in.data(),
                    .outputs = given.data(),
                    .frames = static_cast<uint32_t>(fed.size())});
    for (std::vector<float>& channel : out)
        channel.erase(channel.begin(), channel.begin() + engine.LatencyFrames());
    return out;
}

EffectRun::Stereo EffectRun::ImpulseResponse(double seconds) const {
    const auto settling = static_cast<size_t>(kSettling * kRate);
    std::vector<float> input(settling + static_cast<size_t>(seconds * kRate), 0.0f);
    input[settling] = 1.0f;
    Stereo out = Play(input);
    for (std::vector<float>& channel : out)
        channel.erase(channel.begin(), channel.begin() + static_cast<std::ptrdiff_t>(settling));
    return out;
}

}  // namespace Quorvan::Tools
