// Pictures of the face, with a piece of music running through the instrument behind it.
#include <cairo.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <exception>
#include <string>
#include <vector>

#include "host/parameters/SharedCatalog.h"
#include "host/state/PresetFormat.h"
#include "plugins/ui/FaceCore.h"
#include "presets/FactoryPresets.h"
#include "tools/audio/DemoSound.h"

namespace Quorvan::Ui {

namespace {

struct Options {
    std::string output, preset = "dense-cloud";
    double scale = 1.0, seconds = 6.0;
    size_t page = 0;
    bool time = false;
    std::vector<std::string> settings;  ///< NAME=TEXT
    std::vector<double> points;         ///< where it clicks, and rests at last
    bool press = false, rightPress = false;
};

/// Plays music through the instrument, buffer by buffer, and lets the face look at it.
class Session {
public:
    explicit Session(const Options& wanted)
        : options(wanted),
          instrument(Host::SharedCatalog()),
          presets(Host::SharedCatalog(), Host::FactoryPresets(), "/nonexistent"),
          music(Tools::MakeDemoSound(kRate, wanted.seconds + 0.5)) {
        Load();
        Host::StreamFormat format;
        format.sampleRate = kRate;
        instrument.SetSeed(1);
        instrument.Activate(format);
        instrument.Song().Run(true);
        for (const std::string& setting : options.settings)
            Set(setting);
    }

    int Run() {
        const std::clock_t began = std::clock();
        FaceCore face(instrument, presets);
        const int width = static_cast<int>(1280 * options.scale);
        const int height = static_cast<int>(800 * options.scale);
        face.Resize(width, height);
        cairo_surface_t* const surface =
            cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
        cairo_t* const context = cairo_create(surface);
        face.OpenPage(options.page);
        std::vector<double> times;
        double largest = 0.0, opening = 0.0, playing = 0.0;
        bool pointed = false;
        for (uint32_t picture = 0; picture * kFrame < options.seconds; ++picture) {
            const double now = picture * kFrame;
            const std::clock_t before = std::clock();
            Play();
            playing += Since(before);
            if (!pointed && now > options.seconds - 1.5)
                pointed = Point(face, context, now);
            double spent = 0.0, area = 0.0;
            for (const Rect& rect : face.Idle(now)) {
                face.Draw(context, rect);
                spent += face.LastDrawSeconds();
                area += rect.width * rect.height;
            }
            if (times.empty())
                opening = Since(began) - playing;
            times.push_back(spent);
            largest = std::max(largest, area / (width * height));
        }
        if (options.time)
            Tell(times, opening, face.Model().Frame().grainCount);
        const bool saved =
            cairo_surface_write_to_png(surface, options.output.c_str()) == CAIRO_STATUS_SUCCESS;
        cairo_destroy(context);
        cairo_surface_destroy(surface);
        return saved ? 0 : 4;
    }

private:
    static constexpr double kRate = 48000.0;
    static constexpr uint32_t kFrames = 800;
    static constexpr double kFrame = kFrames / kRate;

    void Load() {
        if (const Host::FactoryPreset* const found = Host::FindFactoryPreset(options.preset))
            if (const auto parsed = Host::ReadPreset(found->json, Host::SharedCatalog());
                parsed.value)
                instrument.LoadPreset(*parsed.value);
    }
    void Set(const std::string& setting) {
        const size_t sign = setting.find('=');
        FaceModel model(instrument, presets);
        const auto index = model.Find(setting.substr(0, sign));
        const std::string problem =
            index ? model.Type(*index, setting.substr(sign + 1)) : std::string("unknown");
        if (!problem.empty())
            std::fprintf(stderr, "%s: %s\n", setting.c_str(), problem.c_str());
    }
    void Play() {
        Host::InstrumentBuffer buffer;
        const std::array<const float*, 2> in{music[0].data() + done, music[1].data() + done};
        std::array<std::array<float, kFrames>, 2> sound{};
        const std::array<float*, 2> out{sound[0].data(), sound[1].data()};
        buffer.audio = {.inputs = in.data(), .outputs = out.data(), .frames = kFrames};
        Host::ControlSink sink;
        instrument.Process(buffer, sink);
        done += kFrames;
    }
    bool Point(FaceCore& face, cairo_t* context, double now) const {
        for (size_t i = 0; i + 1 < options.points.size(); i += 2) {
            PointerEvent event;
            event.at = {options.points[i] * options.scale, options.points[i + 1] * options.scale};
            event.time = now + static_cast<double>(i);
            face.Move(event);
            const bool isLast = i + 2 == options.points.size();
            if (isLast && !options.press && !options.rightPress)
                break;
            event.button = isLast && options.rightPress ? Button::Right : Button::Left;
            face.Press(event);
            face.Release(event);
            for (const Rect& rect : face.Idle(now))
                face.Draw(context, rect);
        }
        return true;
    }
    /// Seconds of a core.
    static double Since(std::clock_t then) {
        return static_cast<double>(std::clock() - then) / CLOCKS_PER_SEC;
    }
    static void Tell(std::vector<double> times, double opening, uint32_t grains) {
        times.erase(times.begin(), times.begin() + 30);
        std::sort(times.begin(), times.end());
        double sum = 0.0;
        for (const double each : times)
            sum += each;
        std::printf("opens in %.1f ms; %u grains at the end\n", 1e3 * opening, grains);
        std::printf("draws: mean %.2f ms, median %.2f ms, 99 %% below %.2f ms\n",
                    1e3 * sum / static_cast<double>(times.size()), 1e3 * times[times.size() / 2],
                    1e3 * times[times.size() * 99 / 100]);
    }

    const Options& options;
    Host::Instrument instrument;
    Host::PresetLibrary presets;
    Tools::Planes music;
    size_t done = 0;
};

}  // namespace

}  // namespace Quorvan::Ui

int main(int count, char** arguments) {
    using namespace Quorvan;
    try {
        Ui::Options options;
        CLI::App app("Draws the face of the instrument with music running through it");
        app.add_option("output", options.output, "PNG to write")->required();
        app.add_option("--preset", options.preset, "Factory preset");
        app.add_option("--scale", options.scale, "1 is 1280 x 800");
        app.add_option("--seconds", options.seconds, "Music before the picture");
        app.add_option("--page", options.page, "Number of the page below the tape, from 0");
        app.add_option("--set", options.settings, "NAME=TEXT of a parameter");
        app.add_option("--point", options.points,
                       "X Y of clicks, and of where the pointer rests at last");
        app.add_flag("--press", options.press, "Click there too");
        app.add_flag("--right-press", options.rightPress, "Click there with the right button");
        app.add_flag("--time", options.time, "Print how long drawing took");
        CLI11_PARSE(app, count, arguments);
        return Ui::Session(options).Run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
