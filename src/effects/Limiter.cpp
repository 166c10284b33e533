#include "effects/Limiter.h"

#include <utility>

namespace Quorvan::dsp {

Limiter::Limiter(std::string moduleName) : Compressor(std::move(moduleName)) {
    const auto reshape = [this](uint32_t id, float min, float max, float value) {
        Configure(id, PotardKind::kLinear, min, max);
        SetParameterValue(id, value);
    };
    reshape(Threshold, -60.0f, 0.0f, -0.1f);
    reshape(Ratio, 1.0f, 100.0f, 1.0f);
    SetParameterValue(RatioInfinite, 1.0f);
    reshape(Attack, 0.0f, 1000.0f, 0.0f);
    reshape(Release, 0.0f, 1000.0f, 300.0f);
    SetParameterValue(OutputGain, 0.0f);
    SetParameterValue(Makeup, 0.0f);
    SetParameterValue(Wet, 1.0f);
    SetParameterValue(StereoMode, 1.0f);
    SetParameterValue(LevelMeasureSmoothAR, 1.0f);
    reshape(LevelMeasureAtMs, 0.0f, 1000.0f, 0.0f);
    reshape(LevelMeasureReMs, 0.0f, 1000.0f, 50.0f);
    SetParameterValue(LookaheadEnable, 1.0f);
    SetParameterValue(LookaheadTimeMs, 3.0f);
}

}  // namespace Quorvan::dsp
