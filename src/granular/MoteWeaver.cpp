#include "granular/MoteWeaver.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>

#include "granular/GranularTables.h"
#include "primitives/BlockTests.h"

namespace Quorvan::dsp {

namespace Id = MoteWeaverId;
namespace Row = MoteWeaverRow;

namespace {

constexpr float kGateSeconds = 0.02f;
/// Equals no value, not even itself.
constexpr float kMoving = std::numeric_limits<float>::quiet_NaN();
constexpr uint32_t kCurveCount = static_cast<uint32_t>(Curve::Count);
constexpr float kWholeNoteBeats = 240.0f;  // seconds of a whole note, times the tempo

auto Named(const char* name) { return std::tuple<std::string>(name); }

/// Room for frames floats on a cache line of their own.
uint32_t StrideOf(uint32_t frames) { return (frames + 15) / 16 * 16; }

float* MakeRow(AlignedVector& storage, uint32_t frames) {
    storage.assign(kRowHeadFloats + frames, 0.0f);
    storage[kRowHeadFloats - 1] = kRowActive;
    return storage.data() + kRowHeadFloats;
}

}  // namespace

MoteWeaver::MoteWeaver(std::string moduleName)
    : ModuleContainer(std::move(moduleName), Row::Count, 2, MoteWeaverTable(),
                      Named("GranularPhaseHelper"), Named("GranularPhaseHelperTexture"),
                      Named("SPPPhaseHelper"), Named("StepSequencerGranular"), Named("BitCrusher")),
      scheduler(grains, capture, markers, settings, curves, position, gate) {
    grains.Resize(kMaxGrains);
    ended.reserve(kMaxGrains);
    ConfigureChildren();
}

void MoteWeaver::ConfigureChildren() {
    using G = IGenerator;
    for (IGenerator* clock :
         {static_cast<IGenerator*>(&MainClock()), static_cast<IGenerator*>(&SongClock()),
          static_cast<IGenerator*>(&Sequencer())})
        clock->SetSyncedRates(kMainRates.data(), kMainRates.size());
    TextureClock().SetSyncedRates(kTextureRates.data(), kTextureRates.size());
    for (IGenerator* clock :
         {static_cast<IGenerator*>(&MainClock()), static_cast<IGenerator*>(&TextureClock()),
          static_cast<IGenerator*>(&Sequencer())})
        clock->NeedPhases(false);
    for (GranularPhaseHelper* clock : {&MainClock(), &TextureClock(), &SongClock()})
        clock->SetParameterValue(G::Mode, static_cast<float>(G::kFree));

    MainClock().Configure(G::RateUnSynced, PotardKind::kExponential, 0.25f, 250.0f, 6.0f);
    MainClock().FollowRateInput();
    TextureClock().Configure(G::RateUnSynced, PotardKind::kExponential, 0.25f, 10000.0f, 6.0f);
    TextureClock().SetParameterNormalized(G::RateUnSynced, 0.0f);
    TextureClock().SetParameterNormalized(G::RateSynced, 0.0f);
    TextureClock().FollowRateInput();
    SongClock().SetParameterNormalized(G::MidiSync, 1.0f);
    SongClock().SetParameterNormalized(G::SppHardFollow, 1.0f);
    SongClock().SetParameterValue(G::RateSynced, static_cast<float>(kSongClockRate));
    Sequencer().SetParameterNormalized(G::MidiSync, 1.0f);
    Crusher().SetParameterNormalized(BitCrusher::Wet, 1.0f);
}

void MoteWeaver::OnSetup(float rate, uint32_t frames) {
    sampleRate = rate;
    blockSize = frames;
    const uint32_t stride = StrideOf(frames);
    storage.assign(size_t{kCurveCount + 2} * stride, 0.0f);
    float* buffer = storage.data();
    for (float*& row : curves.rows)
        row = std::exchange(buffer, buffer + stride);
    restingAt.fill(kMoving);
    persistence = buffer;
    sequence = buffer + stride;
    rateInput = MakeRow(rateStorage, frames);
    textureRateInput = MakeRow(textureRateStorage, frames);

    renderer.Setup(rate, frames);
    capture.Setup(rate);
    persistenceSmoother.stepLength = 1;
    persistenceSmoother.sampleRate = static_cast<double>(rate);
    persistenceSmoother.UpdateCoefficients();
    detector.Setup(rate, frames);
    detector.Reset();
    gate.length = static_cast<uint32_t>(rate * kGateSeconds);
}

void MoteWeaver::OnReset(bool) {
    grains.Clear();
    ended.clear();
    scheduler.ArmTrigger();
    capture.Reset();
    markers.Clear();
    tempo = previousTempo;
    detector.Reset();
    gate.Reset();
    scheduler.ClearStartedCount();
    endedCount = 0;
}

/// A curve that stands still is left as it was filled before.
void MoteWeaver::Fill(const ProcessBlock& block, uint32_t id, uint32_t row, Curve curve) {
    float& resting = restingAt[static_cast<size_t>(curve)];
    if (IsRowActive(block, row)) {
        ParameterAt(id).FillBlockValues(block, row, curves[curve]);
        resting = kMoving;
        return;
    }
    const float value = Value(id);
    if (value == resting)
        return;
    std::fill_n(curves[curve], blockSize, value);
    resting = value;
}

bool MoteWeaver::Rests(Curve curve, uint32_t frames) const {
    return !std::isnan(restingAt[static_cast<size_t>(curve)]) || IsConstant(curves[curve], frames);
}

float MoteWeaver::WholeNote() const { return kWholeNoteBeats / tempo; }

bool MoteWeaver::UpdateParameters(ProcessBlock& block) {
    const auto persistenceTarget = BlockValue(block, Id::BufferPersistence, Row::BufferPersistence);
    if (needsFullUpdate) {
        persistenceSmoother.Reset(persistenceTarget);
        wasPlaying = block.transportPlaying != 0;
    }
    tempo = block.tempo;
    if (IsChanged(Id::GranularMode))
        UpdateMode();
    if (IsChanged(Id::MaxGrains))
        UpdateGrainLimit();
    if (IsChanged(Id::Crossfade))
        settings.crossfade = IsOn(Id::Crossfade);
    if (IsChanged(Id::Scale))
        UpdateScale();
    capture.frozen = BlockValue(block, Id::BufferFreeze, Row::BufferFreeze) > 0.5f;
    UpdateLoop();
    persistenceSmoother.SetTarget(persistenceTarget);
    persistenceSmoother.FillBlock(persistence, block.numFrames);
    if (IsChanged(Id::PlayHeadRetrig))
        capture.retrigPlayHead = IsOn(Id::PlayHeadRetrig);
    UpdateOffsetType();
    UpdatePlayHead(block);
    UpdatePlaybackModes(block);
    UpdateChoices();
    FillGrainCurves(block);
    UpdateDensityType();
    UpdateTexture(block);
    UpdateSpatializer();
    Sequencer().SetParameterValue(IGenerator::RateSynced,
                                  MainClock().Value(IGenerator::RateSynced));
    if (IsChanged(Id::SequencerRetrig))
        capture.retrigSequencer = IsOn(Id::SequencerRetrig);
    if (IsChanged(Id::BitCrushPreset))
        outputStage.SetPreset(Index(Id::BitCrushPreset), Crusher());
    if (IsChanged(Id::GateSelection))
        gate.selection = Index(Id::GateSelection);
    previousTempo = tempo;
    return true;
}

/// The beat mode takes its size from the density, and skips steps at random in place of jitter.
void MoteWeaver::UpdateMode() {
    settings.granularMode = Index(Id::GranularMode);
    const bool beat = settings.granularMode == GranularSettings::kBeat;
    settings.densitySizeLink = beat || IsOn(Id::DensitySizeLink);
    settings.randomDensityArrow = beat ? 1 : Index(Id::RandomDensityArrow);
}

void MoteWeaver::UpdateGrainLimit() {
    settings.grainLimit = kGrainLimits[static_cast<size_t>(Value(Id::MaxGrains))] + 1;
    if (grains.Count() > settings.grainLimit)
        scheduler.ReleaseOldest(grains.Count() - settings.grainLimit);
}

/// "Pitch" counts semitones, or the notes of a scale. Its position stays where it is.
void MoteWeaver::UpdateScale() {
    settings.scale = Index(Id::Scale);
    settings.scaleTable = ScaleSemitones(static_cast<uint32_t>(settings.scale));
    Parameter& pitch = ParameterAt(Id::Pitch);
    const float where = pitch.GetNormalized();
    if (settings.scale == 0)
        pitch.Configure(PotardKind::kLinear, -36.0f, 36.0f);
    else
        pitch.ConfigureStepped(static_cast<uint32_t>(settings.scaleTable.size()), 0.0f);
    MarkChanged(Id::Pitch);
    pitch.WriteNormalized(where, true);
}

void MoteWeaver::UpdateLoop() {
    const auto clearTape = [this] {
        capture.Clear();
        markers.Clear();
        detector.Reset();
    };
    if (IsChanged(Id::BufferClear))
        clearTape();
    const float notes = kBufferLengths[static_cast<size_t>(Value(Id::BufferLengthSynced))];
    const float seconds = notes * WholeNote() * TimeTypeFactor(settings.grainSizeMode);
    if (IsChanged(Id::BufferLengthSynced) || IsChanged(Id::GranularMode)) {
        if (!capture.frozen)
            markers.Clear();
        capture.SetLength(seconds, notes / kMainRates[kSongClockRate]);
    }
    if (tempo != previousTempo)
        capture.SetTargetLength(seconds);
}

void MoteWeaver::UpdateOffsetType() {
    const bool beat = settings.granularMode == GranularSettings::kBeat;
    if (!beat && (IsChanged(Id::OffsetType) || IsChanged(Id::GranularMode)))
        capture.offsetType = Index(Id::OffsetType);
    if (beat && (IsChanged(Id::BeatOffsetType) || IsChanged(Id::GranularMode)))
        capture.offsetType = Index(Id::BeatOffsetType) + 1;
}

void MoteWeaver::UpdatePlayHead(const ProcessBlock& block) {
    float offset = 0.0f;  // seconds
    if (capture.offsetType == 0 && settings.granularMode != GranularSettings::kBeat) {
        offset = BlockValue(block, Id::Offset, Row::PlayHead) * 0.001f;
    } else {
        const float index = BlockValue(block, Id::OffsetSynced, Row::PlayHead);
        offset = kSyncedOffsets[static_cast<size_t>(index)] * WholeNote() *
                 TimeTypeFactor(capture.offsetType);
    }
    capture.SetOffset(offset);
    capture.speed = static_cast<double>(BlockValue(block, Id::Speed, Row::PlayHead));
    const float grid = BlockValue(block, Id::GridSize, Row::GridSize);
    settings.gridSize = kGridSizes[static_cast<size_t>(grid)];
    sensitivity = BlockValue(block, Id::TransientSensitivity, Row::TransientSensitivity);
    Fill(block, Id::Spray, Row::Spray, Curve::Spray);
    Fill(block, Id::GrainTrigger, Row::GrainTrigger, Curve::GrainTrigger);
}

void MoteWeaver::UpdatePlaybackModes(const ProcessBlock& block) {
    if (IsChanged(Id::PlaybackMode)) {
        capture.playbackMode = Index(Id::PlaybackMode);
        if (capture.playbackMode == CaptureBuffer::kFollow)
            capture.PlaceFollower();
    }
    if (capture.playbackMode == CaptureBuffer::kManual) {
        Fill(block, Id::ManualScanPosition, Row::PlayHead, Curve::ManualScanPosition);
        capture.playPosition =
            static_cast<double>(BlockValue(block, Id::ManualScanPosition, Row::PlayHead)) *
            static_cast<double>(capture.EffectiveLength() - 1);
    }
    if (IsChanged(Id::PlaybackQuantizationMode)) {
        capture.quantizationMode = Index(Id::PlaybackQuantizationMode);
        if (capture.quantizationMode != CaptureBuffer::kTransients && !capture.frozen) {
            markers.Clear();
            detector.Reset();
        }
    }
}

void MoteWeaver::UpdateChoices() {
    const auto take = [this](uint32_t id, int32_t& choice) {
        if (IsChanged(id))
            choice = Index(id);
    };
    const bool beat = settings.granularMode == GranularSettings::kBeat;
    take(Id::TriggerMode, settings.triggerMode);
    if (!beat)
        take(Id::RandomDensityArrow, settings.randomDensityArrow);
    take(Id::RandomPitchArrow, settings.randomPitchArrow);
    take(Id::RandomSizeArrow, settings.randomSizeArrow);
    take(Id::SprayDirection, settings.sprayDirection);
    if (!beat) {
        take(Id::GrainSizeMode, settings.grainSizeMode);
        if (IsChanged(Id::DensitySizeLink))
            settings.densitySizeLink = IsOn(Id::DensitySizeLink);
    }
}

void MoteWeaver::FillGrainCurves(const ProcessBlock& block) {
    if (settings.densitySizeLink)
        Fill(block, Id::GrainSizeRatio, Row::GrainSize, Curve::GrainSizeRatio);
    else if (settings.grainSizeMode == 0)
        Fill(block, Id::GrainSizeAbsolute, Row::GrainSize, Curve::GrainSizeAbsolute);
    else
        Fill(block, Id::GrainSizeSynced, Row::GrainSize, Curve::GrainSizeSynced);
    Fill(block, Id::Pitch, Row::Pitch, Curve::Pitch);
    Fill(block, Id::RandomPitch, Row::RandomPitch, Curve::RandomPitch);
    Fill(block, Id::ShapeParam, Row::ShapeParam, Curve::ShapeParam);
    Fill(block, Id::RandomSize, Row::RandomSize, Curve::RandomSize);
    Fill(block, Id::RandomDensity, Row::RandomDensity, Curve::RandomDensity);
    Fill(block, Id::RandomDirection, Row::RandomDirection, Curve::RandomDirection);
    Fill(block, Id::RandomPan, Row::RandomPan, Curve::RandomPan);
    Fill(block, Id::Width, Row::Width, Curve::Width);
    Fill(block, Id::RandomFine, Row::RandomFine, Curve::RandomFine);
}

void MoteWeaver::UpdateDensityType() {
    using G = IGenerator;
    if (settings.granularMode == GranularSettings::kBeat) {
        const float type = Value(Id::BeatDensityType);
        MainClock().SetParameterNormalized(G::MidiSync, 1.0f);
        MainClock().SetParameterValue(G::RateSyncedType, type);
        Sequencer().SetParameterValue(G::RateSyncedType, type);
        return;
    }
    const int32_t type = Index(Id::DensityType);
    MainClock().SetParameterNormalized(G::MidiSync, type == 0 ? 0.0f : 1.0f);
    if (type != 0)
        MainClock().SetParameterValue(G::RateSyncedType, static_cast<float>(type - 1));
}

void MoteWeaver::UpdateTexture(const ProcessBlock& block) {
    if (IsChanged(Id::Shape))
        settings.shape = Index(Id::Shape);
    Fill(block, Id::TextureDensity, Row::TextureDensity, Curve::TextureDensity);
    Fill(block, Id::RandomLayers, Row::RandomLayers, Curve::RandomLayers);
    if (IsChanged(Id::RandomLayersArrow))
        settings.randomLayersArrow = Index(Id::RandomLayersArrow);
    if (IsChanged(Id::TextureSizeMidiSync)) {
        settings.textureSizeMidiSync = IsOn(Id::TextureSizeMidiSync);
        TextureClock().SetParameterNormalized(IGenerator::MidiSync,
                                              settings.textureSizeMidiSync ? 1.0f : 0.0f);
    }
    if (settings.textureSizeMidiSync)
        Fill(block, Id::TextureSizeSynced, Row::GrainSize, Curve::TextureSizeSynced);
    else
        Fill(block, Id::TextureSizeAbsolute, Row::GrainSize, Curve::TextureSizeAbsolute);
}

void MoteWeaver::UpdateSpatializer() {
    if (IsChanged(Id::SpatializerEnabled))
        settings.spatializerEnabled = IsOn(Id::SpatializerEnabled);
    if (IsChanged(Id::DistanceRange))
        settings.distanceRange = Value(Id::DistanceRange);
    if (IsChanged(Id::RandomDistance))
        settings.randomDistance = Value(Id::RandomDistance);
    if (IsChanged(Id::RandomWalk)) {
        settings.randomWalk = IsOn(Id::RandomWalk);
        if (settings.randomWalk)
            position.StartWalk();
    }
}

bool MoteWeaver::OnProcess(ProcessBlock& block) {
    capture.Wipe();
    const bool transportStarted = FollowTransport(block);
    RunClocks(block);
    for (uint32_t c = 0; c < 2; ++c)
        std::fill_n(block.outputs[c], block.numFrames, 0.0f);
    const bool marking = capture.quantizationMode == CaptureBuffer::kTransients;
    if (marking)
        detector.BeginBlock(static_cast<int32_t>(capture.writePosition));
    scheduler.EnforceLimit();
    MovePosition(block);
    RunSamples(block, transportStarted);
    if (marking)
        FindTransients();
    RenderGrains(block);
    UpdateGate(block.numFrames);
    return true;
}

/// Answers whether the transport has started with this block.
bool MoteWeaver::FollowTransport(const ProcessBlock& block) {
    const bool playing = block.transportPlaying != 0;
    const bool started = playing && !wasPlaying;
    wasPlaying = playing;
    if (!started)
        return false;
    MainClock().Restart();
    TextureClock().Restart();
    SongClock().Restart();
    Sequencer().Restart();
    scheduler.ArmTrigger();
    capture.StartTransport(BlockValue(block, Id::ManualScanPosition, Row::PlayHead));
    return true;
}

void MoteWeaver::RunClocks(const ProcessBlock& block) {
    const uint32_t frames = block.numFrames;
    FillRateInput(block);
    ProcessBlock inner = block;
    float* inputs[] = {rateInput, nullptr};
    float* outputs[] = {sequence};
    inner.inputs = inputs;
    inner.numInputs = 2;
    inner.outputs = outputs;
    inner.numOutputs = 1;
    Sequencer().Process(inner);
    Sequencer().HoldSingleStep(sequence, frames);

    if (settings.granularMode == GranularSettings::kBeat) {
        // One entry of the rate table is this far from the next, and doubles the rate.
        constexpr float kEntry = 1.0f / static_cast<float>(kMainRates.size() - 1);
        for (uint32_t n = 0; n < frames; ++n)
            if (sequence[n] != 0.0f)
                rateInput[n] += (sequence[n] - 1.0f) * kEntry;
    }
    inner.numInputs = 1;
    inner.outputs = nullptr;
    inner.numOutputs = 0;
    MainClock().Process(inner);
    FillTextureRate(frames);
    inputs[0] = textureRateInput;
    TextureClock().Process(inner);
    inner.inputs = nullptr;
    inner.numInputs = 0;
    SongClock().NeedPhases(block.transportPlaying != 0);
    SongClock().Process(inner);
}

void MoteWeaver::FillRateInput(const ProcessBlock& block) {
    const bool beat = settings.granularMode == GranularSettings::kBeat;
    const float base = beat ? 0.0f : scheduler.DensityJitter();
    if (!IsRowActive(block, Row::Density)) {
        std::fill_n(rateInput, block.numFrames, base);
        return;
    }
    const float* row = block.inputs[Row::Density];
    for (uint32_t n = 0; n < block.numFrames; ++n)
        rateInput[n] = base + row[n];
}

/// The texture clock's own knob stays at the bottom, and the row moves it to layers over size: so
/// many grains overlap.
void MoteWeaver::FillTextureRate(uint32_t frames) {
    const float* const density = curves[Curve::TextureDensity];
    const float offset = scheduler.LayerOffset();
    if (settings.textureSizeMidiSync) {
        constexpr float kLastSize = static_cast<float>(kSyncedSizes.size() - 1);
        constexpr float kLastRate = static_cast<float>(kTextureRates.size() - 1);
        const float* const size = curves[Curve::TextureSizeSynced];
        for (uint32_t n = 0; n < frames; ++n)
            textureRateInput[n] = (kLastSize - size[n] + (density[n] + offset)) / kLastRate;
        return;
    }
    const float* const size = curves[Curve::TextureSizeAbsolute];
    Parameter& knob = TextureClock().ParameterAt(IGenerator::RateUnSynced);
    const float now = knob.GetNormalized();
    const auto rateAt = [&](uint32_t n) {
        const auto layer = static_cast<size_t>(
            std::clamp(density[n] + offset, 0.0f, static_cast<float>(kTextureLayers.size() - 1)));
        const float hertz = kTextureLayers[layer] * 1000.0f / size[n];
        if (hertz != textureHertz)
            texturePosition = knob.PositionOf(hertz);
        textureHertz = hertz;
        return texturePosition - now;
    };
    // The curve's inverse is a logarithm: it is taken where something has moved.
    if (Rests(Curve::TextureSizeAbsolute, frames) && Rests(Curve::TextureDensity, frames)) {
        std::fill_n(textureRateInput, frames, rateAt(0));
        return;
    }
    for (uint32_t n = 0; n < frames; ++n)
        textureRateInput[n] = rateAt(n);
}

void MoteWeaver::MovePosition(const ProcessBlock& block) {
    if (settings.randomWalk) {
        position.Walk(Value(Id::RandomWalkRate), Value(Id::SpatAmountX), Value(Id::SpatAmountY));
    } else {
        // The owner gives both rows always; a block without them stands still.
        const auto first = [&block](uint32_t row) {
            return row < block.numInputs && block.inputs[row] != nullptr ? block.inputs[row][0]
                                                                         : 0.0f;
        };
        position.Follow(Value(Id::CenterStereo), Value(Id::SpatAmountX), first(Row::StereoX),
                        Value(Id::Distance), Value(Id::SpatAmountY), first(Row::StereoY));
    }
    SetParameterValue(Id::LfoStereoX_Out, position.ShownX());
    SetParameterValue(Id::LfoStereoY_Out, position.ShownY());
}

void MoteWeaver::RunSamples(const ProcessBlock& block, bool transportStarted) {
    const GranularPhaseHelper& clock = TriggerClock();
    scheduler.BeginBlock({.tick = clock.TickBuffer(),
                          .hz = clock.RateHertz(0),
                          .mainRate = MainClock().RateBuffer(),
                          .mainSynced = MainClock().IsSynced(),
                          .mainTempo = MainClock().Tempo(),
                          .sequence = sequence,
                          .wholeNote = WholeNote(),
                          .sampleRate = sampleRate});
    const CaptureBuffer::Transport transport{.playing = block.transportPlaying != 0,
                                             .started = transportStarted,
                                             .songPosition = block.songPosition,
                                             .wholeNote = WholeNote(),
                                             .typeFactor = TimeTypeFactor(settings.grainSizeMode)};
    // The heads matter where a grain starts, and whether one does may hang on the markers that they
    // pass; in between they are moved on in one go.
    const bool marking = capture.quantizationMode == CaptureBuffer::kTransients;
    const uint32_t end = block.numFrames;
    uint32_t done = 0;
    const auto catchUp = [&](uint32_t n) {
        RunHeads(block, transport, done, n);
        done = n;
    };
    for (uint32_t n = scheduler.PassTo(0, end); n < end; n = scheduler.PassTo(n + 1, end)) {
        if (marking)
            catchUp(n);
        scheduler.Step(n, [&catchUp, n] { catchUp(n); });
    }
    catchUp(end);
}

/// Records the samples from first to ahead of end, and moves the heads over them.
void MoteWeaver::RunHeads(const ProcessBlock& block, const CaptureBuffer::Transport& transport,
                          uint32_t first, uint32_t end) {
    const uint32_t from = capture.writePosition;
    if (first == end)
        return;
    if (RunHeadsStraight(block, transport, first, end)) {
        if (capture.quantizationMode == CaptureBuffer::kTransients)
            MarkStretch(first, end, from);
        return;
    }
    const float* const left = block.inputs[Row::AudioLeft];
    const float* const right = block.inputs[Row::AudioRight];
    const float* const cycles = SongClock().CycleBuffer();
    const float* const phases = SongClock().PhaseBuffer();
    for (uint32_t n = first; n < end; ++n) {
        if (!capture.frozen) {
            RecordSample(n, left[n], right[n]);
            if (transport.playing)
                capture.AdvanceLocked(cycles[n] + phases[n], transport, n == 0, markers);
            else
                capture.AdvanceFree();
        }
        const bool atStart = capture.AdvancePlayHead(transport, n == 0);
        if (atStart && capture.retrigSequencer)
            Sequencer().Restart();
    }
}

/// RunHeads in one go; false, and nothing is done, where something has to be looked at on the way.
bool MoteWeaver::RunHeadsStraight(const ProcessBlock& block,
                                  const CaptureBuffer::Transport& transport, uint32_t first,
                                  uint32_t end) {
    if (capture.frozen || capture.retrigPlayHead || capture.retrigSequencer)
        return false;
    const float* const left = block.inputs[Row::AudioLeft] + first;
    const float* const right = block.inputs[Row::AudioRight] + first;
    const uint32_t count = end - first;
    if (!transport.playing) {
        if (capture.quantizationMode == CaptureBuffer::kTransients &&
            capture.writePosition + count >= capture.length)
            return false;
        capture.RunFree(left, right, persistence + first, count, transport);
        return true;
    }
    if (!SongClock().StaysInCycle() || (transport.started && first == 0))
        return false;
    const float* const cycles = SongClock().CycleBuffer();
    const float* const phases = SongClock().PhaseBuffer();
    return capture.RunLocked(left, right, persistence + first, count, cycles[first] + phases[first],
                             cycles[end - 1] + phases[end - 1], transport);
}

/// Shows the detector what has been recorded from a place on, and drops the markers passed over.
void MoteWeaver::MarkStretch(uint32_t first, uint32_t end, uint32_t from) {
    for (uint32_t n = first; n < end; ++n)
        detector.PushSample(n, capture.mono[from + n - first]);
    const auto behind = static_cast<int32_t>(from + end - first);
    auto passed = static_cast<int32_t>(from);
    while (markers.Count() > 0 && markers.Front() >= passed && markers.Front() < behind) {
        passed = markers.Front() + 1;
        markers.DropFront();
    }
}

void MoteWeaver::RecordSample(uint32_t n, float left, float right) {
    const float mono = capture.Write(left, right, persistence[n]);
    if (capture.quantizationMode != CaptureBuffer::kTransients)
        return;
    detector.PushSample(n, mono);
    if (markers.Count() > 0 && static_cast<int32_t>(capture.writePosition) == markers.Front())
        markers.DropFront();
}

void MoteWeaver::FindTransients() {
    if (!detector.EndBlock(sensitivity))
        return;
    markers.Push(detector.MarkerPosition());
    gate.Trigger(GatePulse::kTransients);
}

void MoteWeaver::RenderGrains(const ProcessBlock& block) {
    const GrainRenderer::Block how{.numFrames = block.numFrames,
                                   .crossfade = settings.crossfade,
                                   .interpolate = outputStage.Interpolates()};
    renderer.Render(grains, capture, how, block.outputs[0], block.outputs[1], ended);
    outputStage.Apply(block, Crusher());
    endedCount = 0;
    for (size_t i = ended.size(); i-- > 0;) {
        if (grains[ended[i]].displayed)
            ++endedCount;
        grains.Erase(ended[i]);
    }
    ended.clear();
}

void MoteWeaver::UpdateGate(uint32_t frames) {
    gate.Advance(frames);
    SetParameterValue(Id::GateOut, gate.on ? 1.0f : 0.0f);
}

}  // namespace Quorvan::dsp
