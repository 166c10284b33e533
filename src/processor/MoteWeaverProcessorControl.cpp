// The processor's control step: own parameters into smoother targets and writes on the children.
#include <cmath>

#include "processor/MoteWeaverProcessor.h"

namespace Quorvan::Processor {

namespace {

/// Writes a rate type to a generator's sync parameters.
void WriteRateType(dsp::IGenerator& generator, int32_t type) {
    generator.SetParameterNormalized(dsp::IGenerator::MidiSync, type != kRateFree ? 1.0f : 0.0f);
    generator.SetParameterValue(dsp::IGenerator::RateSyncedType,
                                type != kRateFree ? static_cast<float>(type - 1) : 0.0f);
}

}  // namespace

bool MoteWeaverProcessor::UpdateEffect(dsp::ProcessBlock& block) {
    UpdateRateTypes();
    UpdateTransportMute(block);
    UpdateSlotPositions();
    UpdateSpatializer(block);
    UpdateGains(block);
    return true;
}

void MoteWeaverProcessor::UpdateRateTypes() {
    constexpr uint32_t kType = dsp::IGenerator::RateSyncedType;
    for (uint32_t k = 0; k < 3; ++k) {
        if (!IsChanged(kFunction1RateType + k))
            continue;
        dsp::FunctionGenerator<64>& function = Function(k);
        WriteRateType(function, Index(kFunction1RateType + k));
        function.NotifyObservers(kType, function.Position(kType));
    }
    if (IsChanged(kStepSeqRateType))
        WriteRateType(Sequencer(), Index(kStepSeqRateType));
}

void MoteWeaverProcessor::UpdateTransportMute(const dsp::ProcessBlock& block) {
    const bool playing = block.transportPlaying != 0;
    const float target = Position(kTransportMute) < 0.5f || playing ? 1.0f : 0.0f;
    if (needsFullUpdate)
        transportGain.Reset(target);
    else if (IsChanged(kTransportMute) || playing != lastTransportPlaying)
        transportGain.SetTarget(target);
    lastTransportPlaying = playing;
}

/// "FX2" never sits ahead of "FX1".
void MoteWeaverProcessor::UpdateSlotPositions() {
    if (!IsChanged(kFX1Position) && !IsChanged(kFX2Position))
        return;
    fx1Position = Index(kFX1Position);
    fx2Position = Index(kFX2Position);
    if (fx1Position >= fx2Position)
        return;
    fx2Position = fx1Position;
    const float position = Position(kFX1Position);
    SetParameterNormalized(kFX2Position, position);
    PushParameterChange(kFX2Position, position);
}

void MoteWeaverProcessor::UpdateSpatializer(const dsp::ProcessBlock& block) {
    UpdateSpatializerAmounts(block);
    const bool enabled = Position(kSpatializerEnable) > 0.5f;
    if (IsChanged(kSpatializerTrajectory) ||
        (IsChanged(kSpatializerEnable) && enabled && !needsFullUpdate)) {
        LfoX().Reset(true);
        LfoY().Reset(true);
    }
    const float freeRate = LiveValue(kSpatializerRateUnSynced, 3, block);
    const float syncedIndex = LiveValue(kSpatializerRateSynced, 3, block);
    const bool tempoMoved = block.tempo != tempo;
    tempo = block.tempo;
    if (freeRate != lastRateFree || syncedIndex != lastRateSynced || tempoMoved ||
        IsChanged(kSpatializerRateType) || IsChanged(kSpatializerTrajectory) ||
        IsChanged(kSpatializerInvert))
        UpdateSpatializerRates(freeRate, syncedIndex);
}

void MoteWeaverProcessor::UpdateSpatializerAmounts(const dsp::ProcessBlock& block) {
    namespace Id = dsp::MoteWeaverId;
    const bool enabled = Position(kSpatializerEnable) > 0.5f;
    const float amount = enabled ? LiveValue(kSpatializerAmount, 4, block) : 0.0f;
    const float distance = enabled ? LiveValue(kSpatializerDistance, 5, block) : 0.0f;
    Granular().SetParameterValue(Id::SpatAmountX, amount);
    Granular().SetParameterValue(Id::SpatAmountY, distance);
}

void MoteWeaverProcessor::UpdateSpatializerRates(float freeRate, float syncedIndex) {
    namespace Id = dsp::MoteWeaverId;
    const int32_t type = Index(kSpatializerRateType);
    WriteRateType(LfoX(), type);
    WriteRateType(LfoY(), type);
    const Trajectory& figure = kTrajectories[static_cast<size_t>(Index(kSpatializerTrajectory))];
    const bool inverted = Position(kSpatializerInvert) > 0.5f;
    LfoY().SetParameterNormalized(dsp::LFO::PhaseInit,
                                  inverted ? figure.invertedPhase : figure.phase);
    const bool walks = figure.ratio == kRandomWalk;
    if (walks)
        SetWalkRate(type, freeRate, syncedIndex);
    else
        SetFigureRates(figure.ratio, type != kRateFree, freeRate, syncedIndex);
    Granular().SetParameterValue(Id::RandomWalk, walks ? 1.0f : 0.0f);
    lastRateFree = freeRate;
    lastRateSynced = syncedIndex;
}

void MoteWeaverProcessor::SetWalkRate(int32_t type, float freeRate, float syncedIndex) {
    float walkRate = freeRate;
    if (type != kRateFree) {
        float note = kSpatializerNotes[static_cast<size_t>(syncedIndex)];
        if (type == kRateDotted)
            note *= 1.5f;
        else if (type == kRateTriplet)
            note *= 0.6666667f;
        walkRate = dsp::IGenerator::kHertzPerWholeNoteBpm / note * tempo;
    }
    Granular().SetParameterValue(dsp::MoteWeaverId::RandomWalkRate, walkRate);
}

/// The faster axis runs at the rate of the knob.
void MoteWeaverProcessor::SetFigureRates(float ratio, bool isSynced, float freeRate,
                                         float syncedIndex) {
    using L = dsp::LFO;
    const auto setFree = [](L& lfo, float rate) { lfo.SetParameterValue(L::RateUnSynced, rate); };
    const auto setSynced = [syncedIndex](L& lfo, const float* notes) {
        lfo.SetSyncedRates(notes, kSpatializerNotes.size());
        lfo.SetParameterValue(L::RateSynced, syncedIndex);
    };
    const auto scaleNotes = [this](float factor) {
        for (size_t i = 0; i < scaledRates.size(); ++i)
            scaledRates[i] = factor * kSpatializerNotes[i];
    };
    if (ratio == 0.0f) {
        LfoY().SetParameterNormalized(L::MidiSync, 0.0f);
        setFree(LfoY(), 0.0f);
        if (isSynced)
            setSynced(LfoX(), kSpatializerNotes.data());
        else
            setFree(LfoX(), freeRate);
    } else if (!isSynced) {
        setFree(LfoX(), ratio >= 1.0f ? freeRate / ratio : freeRate);
        setFree(LfoY(), ratio >= 1.0f ? freeRate : ratio * freeRate);
    } else if (ratio >= 1.0f) {
        scaleNotes(ratio);
        setSynced(LfoX(), scaledRates.data());
        setSynced(LfoY(), kSpatializerNotes.data());
    } else {
        scaleNotes(1.0f / ratio);
        setSynced(LfoX(), kSpatializerNotes.data());
        setSynced(LfoY(), scaledRates.data());
    }
}

void MoteWeaverProcessor::UpdateGains(const dsp::ProcessBlock& block) {
    const auto aim = [this](dsp::Smoother& smoother, float target) {
        needsFullUpdate ? smoother.Reset(target) : smoother.SetTarget(target);
    };
    const auto gainOf = [&](uint32_t id, uint32_t row, KnownGain& known) {
        return known.Of(LiveValue(id, row, block));
    };
    aim(envelopeGain, gainOf(kEnvelopeFollowerGain, 26, knownEnvelopeGain));
    const float feedback = LiveValue(kFeedback, 1, block);
    // The bottom of the knob is silence.
    aim(feedbackGain,
        feedback > ParameterAt(kFeedback).minValue ? knownFeedbackGain.Of(feedback) : 0.0f);
    aim(granularVolume, gainOf(kGranularVolume, 2, knownGranularGain));
    aim(dryWetMix, LiveValue(kDryWet, 0, block));
    if (needsFullUpdate || IsChanged(kMasterVolume))
        aim(masterVolume, dsp::DecibelsToGain(Value(kMasterVolume)));
}

}  // namespace Quorvan::Processor
