#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <numeric>
#include <vector>

#include "clap/ext/gui.h"
#include "plugins/claphost/ClapInstance.h"
// Behind all others, whose names X11 takes for macros.
#include "plugins/claphost/HostWindow.h"

// How long a host's user waits for the window.
namespace Quorvan::bench {
namespace {

/// The plug-in's window in a host's, as soon as it may come.
class OpenFace : public ClapHost::HostWindow {
public:
    OpenFace(Display* shown, const ClapHost::ClapInstance& instance)
        : HostWindow(shown),
          plugin(instance.plugin),
          gui(instance.Get<clap_plugin_gui_t>(CLAP_EXT_GUI)) {
        clap_window_t parent{};
        parent.api = CLAP_WINDOW_API_X11;
        parent.x11 = window;
        ClapHost::Require(gui.create(plugin, CLAP_WINDOW_API_X11, false) &&
                              gui.set_parent(plugin, &parent) && gui.show(plugin),
                          "The window does not open.");
    }
    ~OpenFace() {
        gui.hide(plugin);
        gui.destroy(plugin);
    }
    /// Of its upper left, where buttons stand.
    size_t Colours() const {
        XImage* const image = XGetImage(display, Child(), 0, 0, 256, 48, AllPlanes, ZPixmap);
        ClapHost::Require(image != nullptr, "The window can't be read.");
        ClapHost::Pixels pixels;
        for (int y = 0; y < image->height; y += 4)
            for (int x = 0; x < image->width; x += 4)
                pixels.push_back(XGetPixel(image, x, y));
        XDestroyImage(image);
        return ClapHost::Colours(pixels);
    }

private:
    const clap_plugin_t* plugin;
    const clap_plugin_gui_t& gui;
};

/// From the host's first call until the window on the display holds a picture, by the clock: the
/// timer runs as soon as it may. "first" is the very first window, whose fonts nobody has loaded.
void BM_FaceOpening(benchmark::State& state) {
    Display* const display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        state.SkipWithError("There is no display.");
        return;
    }
    const ClapHost::ClapLibrary library(CLAP_BINARY);
    ClapHost::ClapInstance instance(library);
    std::vector<double> times;
    for (auto _ : state) {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point began = Clock::now();
        const OpenFace face(display, instance);
        while (face.Colours() < 8)
            instance.RunTimers();
        times.push_back(std::chrono::duration<double>(Clock::now() - began).count());
        state.SetIterationTime(times.back());
    }
    state.counters["mean_ms"] =
        1e3 * std::accumulate(times.begin(), times.end(), 0.0) / static_cast<double>(times.size());
    state.counters["first_ms"] = 1e3 * times.front();
    state.counters["longest_ms"] = 1e3 * *std::max_element(times.begin(), times.end());
    XCloseDisplay(display);
}
BENCHMARK(BM_FaceOpening)->Iterations(20)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvan::bench
