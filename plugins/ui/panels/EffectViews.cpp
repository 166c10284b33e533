#include "plugins/ui/panels/EffectViews.h"

#include <iterator>
#include <memory>
#include <utility>

#include "plugins/ui/model/ParameterControl.h"

namespace Quorvan::Ui {

namespace {

constexpr const char* kFilterNames[]{"Filter Mode", "Filter Freq", "Filter Resonance",
                                     "Filter Slope"};
constexpr const char* kDistortionNames[]{"Distortion Drive", "Distortion Curve"};
constexpr const char* kCompressorNames[]{"Compressor Threshold",      "Compressor Ratio",
                                         "Compressor Infinite Ratio", "Compressor Knee",
                                         "Compressor Input Gain",     "Compressor Output Gain",
                                         "Compressor Working Level",  "Compressor Makeup Gain"};
constexpr const char* kDelayNames[]{
    "Delay Time Sync",   "Delay Time",          "Delay Fine Time",      "Delay Feedback",
    "Delay Stereo Mode", "Delay Stereo Offset", "Delay Ping-Pong Width"};
constexpr const char* kTapeNames[]{"Tape Echo Time Sync",      "Tape Echo Time",
                                   "Tape Echo Fine Time",      "Tape Echo Intensity",
                                   "Tape Echo Stereo Mode",    "Tape Echo Stereo Offset",
                                   "Tape Echo Ping-Pong Width"};
constexpr const char* kOctaverNames[]{"Octaver Time Sync", "Octaver Time", "Octaver Feedback",
                                      "Octaver Pitch",     "Octaver Mode", "Octaver Detune"};
constexpr const char* kChorusNames[]{"Chorus Delay", "Chorus Depth", "Chorus Voices",
                                     "Chorus Channels", "Chorus Waveform"};
constexpr const char* kFlangerNames[]{"Flanger Delay", "Flanger Depth", "Flanger Voices",
                                      "Flanger Channels"};
constexpr const char* kReverbNames[]{"Reverb Decay",     "Reverb Size",
                                     "Reverb Predelay",  "Reverb Damping",
                                     "Reverb Freeze",    "Reverb Early Reflections",
                                     "Reverb Early Size"};

// Beside one row of knobs, below it, and what the second row leaves.
constexpr Rect kTall{168.0, 40.0, 216.0, 152.0}, kFlat{168.0, 120.0, 216.0, 72.0},
    kSmall{248.0, 120.0, 136.0, 72.0}, kLow{200.0, 208.0, 184.0, 32.0};

constexpr EffectView kViews[]{
    {"Frequency response", kFilterNames, kTall, DrawFilter},
    {"Transfer curve", kDistortionNames, kTall, DrawDistortion},
    {"Transfer curve#compressor", kCompressorNames, kFlat, DrawCompressor},
    {"Echoes", kDelayNames, kFlat, DrawDelay},
    {"Echoes#octaver", kOctaverNames, kSmall, DrawOctaver},
    {"Echoes", kTapeNames, kSmall, DrawTapeEcho},
    {"Delay of the voices", kChorusNames, kFlat, DrawSway},
    {"Delay of the combs", kFlangerNames, kFlat, DrawComb},
    {"Decay", kReverbNames, kLow, DrawReverb}};

/// The settings that a view shows, read as they are in force.
class Reader {
public:
    Reader(FaceModel& faceModel, const std::string& slot, const EffectView& view)
        : model(faceModel) {
        for (const char* const name : view.names)
            controls.push_back(std::make_unique<ParameterControl>(model, slot + " " + name));
    }
    EffectNow Read() const {
        EffectNow now;
        for (const auto& control : controls) {
            const float position = control->Influences().present;
            now.positions.push_back(static_cast<double>(position));
            now.values.push_back(model.Catalog().Value(*control->Index(), position, model.Texts()));
        }
        if (model.IsAlive()) {
            now.tempo = model.Frame().transport.tempo;
            now.sampleRate = model.Frame().sampleRate;
        }
        return now;
    }

private:
    FaceModel& model;
    std::vector<std::unique_ptr<ParameterControl>> controls;
};

}  // namespace

const EffectView* ViewOfEffect(uint32_t choice) {
    return choice > 0 && choice <= std::size(kViews) ? &kViews[choice - 1] : nullptr;
}

DrawnView::Actions EffectPicture(FaceModel& model, const std::string& slot,
                                 const EffectView& view) {
    const auto reader = std::make_shared<Reader>(model, slot, view);
    const auto seen = std::make_shared<EffectNow>();
    DrawnView::Actions actions;
    actions.tick = [reader, seen](double) {
        EffectNow now = reader->Read();
        if (now == *seen)
            return false;
        *seen = std::move(now);
        return true;
    };
    actions.draw = [seen, draw = view.draw](Painter& painter, const Rect& box) {
        painter.Round(box, 4.0, Theme::kWell);
        painter.Clip(box.Inset(1.0));
        if (!seen->values.empty())
            draw(*seen, painter, box.Inset(8.0, 6.0));
        painter.Unclip();
    };
    return actions;
}

}  // namespace Quorvan::Ui
