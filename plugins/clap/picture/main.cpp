// A picture of the plug-in's window as hosts show it, with a piece of music running through it.
#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <thread>
#include <vector>

#include "host/parameters/SharedCatalog.h"
#include "host/state/PresetFormat.h"
#include "plugins/clap/picture/PictureHost.h"
#include "plugins/ui/model/FaceModel.h"
#include "presets/FactoryPresets.h"
#include "tools/audio/DemoSound.h"

// Behind all others, whose names X11 takes for macros.
#include "plugins/clap/picture/PictureWindow.h"

namespace Quorvan::Clap {

namespace {

struct Options {
    std::string plugin, output, preset = "dense-cloud";
    double scale = 1.0, seconds = 6.0;
    std::vector<std::string> settings;  ///< NAME=TEXT
    std::vector<int> click;             ///< where it clicks at the start, X Y
};

/// The state that the plug-in gets: a factory preset and what else is set, with a fixed chance.
std::string StateOf(const Options& options) {
    const Host::ParameterCatalog& catalog = Host::SharedCatalog();
    Host::Instrument instrument(catalog);
    Host::PresetLibrary presets(catalog, Host::FactoryPresets(), "/nonexistent");
    const Host::FactoryPreset* const found = Host::FindFactoryPreset(options.preset);
    if (found == nullptr)
        throw std::runtime_error(Host::UnknownFactoryPreset(options.preset));
    instrument.LoadPreset(*Host::ReadPreset(found->json, catalog).value);
    instrument.SetSeed(1);
    for (const std::string& setting : options.settings) {
        Ui::FaceModel model(instrument, presets);
        const size_t sign = setting.find('=');
        const auto index = model.Find(setting.substr(0, sign));
        std::string problem = index && sign != std::string::npos
                                  ? model.Type(*index, setting.substr(sign + 1))
                                  : "There is no such parameter.";
        if (!problem.empty())
            throw std::runtime_error(problem.insert(0, setting + ": "));
    }
    return instrument.SaveState();
}

/// As fast as the music, so that what fades with time is seen as in a host.
void Draw(const Options& options) {
    using Clock = std::chrono::steady_clock;
    constexpr double kFrame = PictureHost::kFrames / PictureHost::kRate;
    const Tools::Planes music = Tools::MakeDemoSound(PictureHost::kRate, options.seconds + 0.5);
    PictureHost host(options.plugin, StateOf(options));
    PictureWindow window(host, options.scale);
    const auto began = Clock::now();
    for (uint32_t picture = 0; picture * kFrame < options.seconds; ++picture) {
        const size_t at = size_t{picture} * PictureHost::kFrames;
        host.Play({music[0].data() + at, music[1].data() + at}, Tools::kDemoTempo);
        if (picture == 20 && !options.click.empty())
            window.Click(options.click[0], options.click[1]);
        if (picture == 25)
            window.Leave();
        std::this_thread::sleep_until(began +
                                      std::chrono::duration_cast<Clock::duration>(
                                          std::chrono::duration<double>((picture + 1) * kFrame)));
    }
    window.Save(options.output);
}

}  // namespace

}  // namespace Quorvan::Clap

int main(int count, char** arguments) {
    try {
        Quorvan::Clap::Options options;
        CLI::App app("Photographs the plug-in's window with music running through it");
        app.add_option("plugin", options.plugin, "The .clap")->required();
        app.add_option("output", options.output, "PNG to write")->required();
        app.add_option("--preset", options.preset, "Factory preset");
        app.add_option("--scale", options.scale, "1 is 1280 x 800");
        app.add_option("--seconds", options.seconds, "Music before the picture");
        app.add_option("--set", options.settings, "NAME=TEXT of a parameter");
        app.add_option("--click", options.click, "X Y of a click at the start")->expected(2);
        CLI11_PARSE(app, count, arguments);
        Quorvan::Clap::Draw(options);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
