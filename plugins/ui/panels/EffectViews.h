#pragma once

#include <span>
#include <string>
#include <vector>

#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/widgets/DrawnView.h"

namespace Quorvan::Ui {

/// Settings of a slot's effect at the moment, modulation included, in the order of a view's names.
struct EffectNow {
    std::vector<double> values;  ///< as the catalog's texts count; choices by their number
    std::vector<double> positions;
    double tempo = 120.0;
    double sampleRate = 48000.0;

    uint32_t Choice(size_t i) const { return static_cast<uint32_t>(values[i]); }
    bool operator==(const EffectNow&) const = default;
};

/// A picture of what an effect does at full wet, worked out from its settings.
struct EffectView {
    const char* help;                    ///< its name in the table of help
    std::span<const char* const> names;  ///< of the settings that it shows, behind the slot's
    Rect place;                          ///< from the upper left of the slot's panel
    void (*draw)(const EffectNow& now, Painter& painter, const Rect& inner);
};

/// By the choice of "Effect"; null: it has none.
const EffectView* ViewOfEffect(uint32_t choice);
DrawnView::Actions EffectPicture(FaceModel& model, const std::string& slot, const EffectView& view);

// The pictures: levels and frequencies in EffectCurves.cpp, times in EffectEchoes.cpp.
void DrawFilter(const EffectNow& now, Painter& painter, const Rect& inner);
void DrawDistortion(const EffectNow& now, Painter& painter, const Rect& inner);
void DrawCompressor(const EffectNow& now, Painter& painter, const Rect& inner);
void DrawDelay(const EffectNow& now, Painter& painter, const Rect& inner);
void DrawTapeEcho(const EffectNow& now, Painter& painter, const Rect& inner);
void DrawOctaver(const EffectNow& now, Painter& painter, const Rect& inner);
void DrawSway(const EffectNow& now, Painter& painter, const Rect& inner);
void DrawComb(const EffectNow& now, Painter& painter, const Rect& inner);
void DrawReverb(const EffectNow& now, Painter& painter, const Rect& inner);

}  // namespace Quorvan::Ui
