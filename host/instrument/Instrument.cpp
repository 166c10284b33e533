#include "host/instrument/Instrument.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/ParameterReader.h"

namespace Quorvan::Host {

namespace {

using Lock = std::lock_guard<std::mutex>;
using FaceKind = InstrumentPlayer::FaceMove::Kind;

bool IsSetting(const ParameterInfo& info) { return IsStored(info, ParameterScope::Sound); }

}  // namespace

Instrument::Instrument(const ParameterCatalog& parameters)
    : catalog(parameters),
      controls(parameters, positions),
      player(parameters, positions, controls),
      mirror(parameters, positions) {
    for (const ParameterInfo& info : catalog.All())
        if (info.index < kProcessorParameters)
            positions.Note(info.index, info.defaultPosition);
}

Instrument::~Instrument() = default;

// ---- Sound

std::unique_ptr<Engine> Instrument::MakeEngine(const StreamFormat& format, double tempo) {
    auto engine = std::make_unique<Engine>(kept.seed);
    engine->AddListener(player.display);
    engine->SetTempo(tempo);
    engine->Prepare(format);
    return engine;
}

void Instrument::Activate(const StreamFormat& format, double tempo) {
    const Lock lock(mutex);
    // The new engine takes all positions as they are: nothing put so far is news to it.
    if (!positions.TakeRestore())
        positions.TakeMarks([](uint32_t) {});
    std::unique_ptr<Engine> engine = MakeEngine(format, tempo);
    latency = engine->LatencyFrames();
    player.SetEngine(std::move(engine));
    active = format;
    OfferUnderstudy();
}

void Instrument::OfferFreshEngine() {
    OfferUnderstudy();
    player.OfferEngine(MakeEngine(*active, player.Tempo()));
}

/// With a seed, a start of the host's song is one from silence.
void Instrument::OfferUnderstudy() {
    player.OfferUnderstudy(kept.seed ? MakeEngine(*active, player.Tempo()) : nullptr);
}

void Instrument::Deactivate() {
    const Lock lock(mutex);
    active.reset();
}

bool Instrument::IsActive() const {
    const Lock lock(mutex);
    return active.has_value();
}

uint32_t Instrument::LatencyFrames() const {
    const Lock lock(mutex);
    return latency;
}

Tail Instrument::GetTail() {
    const Lock lock(mutex);
    return mirror.EstimateTail(player.Tempo());
}

void Instrument::Process(const InstrumentBuffer& buffer, ControlSink& sink) {
    player.Process(buffer, sink);
}

void Instrument::Clear() { player.Clear(); }

// ---- Controls

void Instrument::PutControl(uint32_t id, float position) {
    const uint32_t index = controls.TargetOf(id);
    if (index != kUnassigned && std::isfinite(position))
        positions.Put(index, std::clamp(position, 0.0f, 1.0f));
}

float Instrument::ControlPosition(uint32_t id) const {
    const uint32_t index = controls.TargetOf(id);
    return index != kUnassigned ? positions.Position(index) : 0.0f;
}

uint32_t Instrument::ControlSteps(uint32_t id) const {
    const HostControl* const control = FindHostControl(id);
    return control != nullptr && control->target == ControlTarget::Parameter
               ? catalog[control->index].StepCount()
               : 0;
}

double Instrument::ControlValue(uint32_t id, float position) const {
    return ControlSteps(id) > 0 ? catalog.Value(controls.TargetOf(id), position)
                                : static_cast<double>(position);
}

float Instrument::PositionOfControlValue(uint32_t id, double value) const {
    const uint32_t steps = ControlSteps(id);
    if (steps == 0 || !std::isfinite(value))
        return std::clamp(static_cast<float>(value), 0.0f, 1.0f);
    const double step = std::clamp(std::floor(value), 0.0, static_cast<double>(steps - 1));
    return catalog.PositionOfValue(controls.TargetOf(id), step);
}

std::string Instrument::ControlText(uint32_t id, float position) const {
    const uint32_t index = controls.TargetOf(id);
    if (index == kUnassigned)
        return "Off";
    if (index >= kProcessorParameters)
        return FormatNumber(100.0 * static_cast<double>(position), Unit::Percent);
    const TextContext context{
        static_cast<uint32_t>(catalog.Value(kScaleIndex, positions.Position(kScaleIndex)))};
    return catalog.Text(index, position, context);
}

TextResult Instrument::ControlPositionOf(uint32_t id, std::string_view text) const {
    const uint32_t index = controls.TargetOf(id);
    if (index == kUnassigned)
        return {0.0f, {}};
    if (index >= kProcessorParameters) {
        const auto percent = ParseNumber(text, Unit::Percent);
        if (!percent)
            return {{}, Quoted(text) + " is no share. Write a number such as \"50 %\"."};
        return {std::clamp(static_cast<float>(*percent / 100.0), 0.0f, 1.0f), {}};
    }
    const TextContext context{
        static_cast<uint32_t>(catalog.Value(kScaleIndex, positions.Position(kScaleIndex)))};
    return catalog.Position(index, text, context);
}

void Instrument::Move(uint32_t index, float position) {
    positions.Put(index, std::clamp(position, 0.0f, 1.0f));
    TellHost(FaceKind::Move, index);
}

void Instrument::TellHost(FaceKind kind, uint32_t index) {
    const uint32_t id = controls.ControlOf(index);
    if (id != kUnassigned)
        player.TellHost({kind, id, positions.Position(index)});
}

void Instrument::Edit(uint32_t index, float position) {
    if (index >= PositionBoard::kCount || !std::isfinite(position))
        return;
    const Lock lock(mutex);
    const float before = positions.Position(index);
    Move(index, position);
    if (index < catalog.Count() && IsSetting(catalog[index]))
        history.AddMove(gesture, catalog[index].group + " " + catalog[index].label,
                        {index, before, positions.Position(index)});
}

void Instrument::BeginGesture(uint32_t index) {
    const Lock lock(mutex);
    gesture = ++gestures;
    TellHost(FaceKind::Begin, index);
}

void Instrument::EndGesture(uint32_t index) {
    const Lock lock(mutex);
    gesture = 0;
    TellHost(FaceKind::End, index);
}

uint32_t Instrument::MovableOrNone(uint32_t index) const {
    return index < kProcessorParameters && IsMovable(catalog[index]) ? index : kUnassigned;
}

void Instrument::Assign(uint32_t number, uint32_t index) {
    if (number >= kAssignments)
        return;
    controls.Assign(number, MovableOrNone(index));
}

// ---- Whole sounds

std::vector<float> Instrument::Snapshot() const {
    std::vector<float> all(kProcessorParameters);
    for (uint32_t index = 0; index < kProcessorParameters; ++index)
        all[index] = positions.Position(index);
    return all;
}

void Instrument::Remember(const std::string& name, const std::vector<float>& before) {
    EditHistory::Step step{name, {}};
    for (const ParameterInfo& info : catalog.All())
        if (IsSetting(info))
            step.changes.push_back(
                {info.index, before[info.index], positions.Position(info.index)});
    history.Add(std::move(step));
}

void Instrument::LoadPreset(const Preset& preset) {
    const Lock lock(mutex);
    const std::vector<float> before = Snapshot();
    mirror.Apply(preset);
    kept.preset = preset.name;
    presetPositions = Snapshot();
    Remember("Preset " + Quoted(preset.name), before);
}

Preset Instrument::GetPreset() {
    const Lock lock(mutex);
    Preset preset = mirror.CapturePreset();
    preset.name = kept.preset;
    return preset;
}

std::string Instrument::PresetName() const {
    const Lock lock(mutex);
    return kept.preset;
}

bool Instrument::IsModified() {
    const Lock lock(mutex);
    return Differs();
}

/// A state that was saved with a modified preset knows the name only.
bool Instrument::Differs() const {
    if (kept.preset.empty())
        return false;
    if (presetPositions.empty())
        return true;
    return std::any_of(catalog.All().begin(), catalog.All().end(), [&](const ParameterInfo& info) {
        return IsSetting(info) && positions.Position(info.index) != presetPositions[info.index];
    });
}

bool Instrument::CanUndo() const {
    const Lock lock(mutex);
    return history.CanUndo();
}

bool Instrument::CanRedo() const {
    const Lock lock(mutex);
    return history.CanRedo();
}

void Instrument::Undo() {
    const Lock lock(mutex);
    if (const EditHistory::Step* const step = history.Undo())
        for (const EditHistory::Change& change : step->changes)
            Move(change.index, change.before);
}

void Instrument::Redo() {
    const Lock lock(mutex);
    if (const EditHistory::Step* const step = history.Redo())
        for (const EditHistory::Change& change : step->changes)
            Move(change.index, change.after);
}

void Instrument::PlaySound(uint32_t which) {
    const Lock lock(mutex);
    SoundPair& sounds = kept.sounds;
    if (which > 1 || which == sounds.played)
        return;
    const std::vector<float> before = Snapshot();
    sounds.kept[sounds.played] = mirror.CaptureState();
    sounds.played = which;
    if (sounds.kept[which])
        for (const ParameterValue& value : sounds.kept[which]->parameters)
            if (value.position != positions.Position(value.index) && value.index != kBypassIndex)
                Move(value.index, value.position);
    Remember(which == 0 ? "Sound A" : "Sound B", before);
    OfferMorph();
}

uint32_t Instrument::PlayedSound() const {
    const Lock lock(mutex);
    return kept.sounds.played;
}

void Instrument::CopySound() {
    const Lock lock(mutex);
    const State present = mirror.CaptureState();
    kept.sounds.kept = {present, present};
    OfferMorph();
}

void Instrument::OfferMorph() { player.OfferPlan(PlanMorph(kept.sounds, catalog)); }

void Instrument::Randomise(std::string_view group, float amount, uint64_t seed) {
    const Lock lock(mutex);
    const std::vector<float> before = Snapshot();
    std::mt19937_64 chance(seed);
    for (const ParameterInfo& info : catalog.All()) {
        if (!IsSetting(info) || info.group != group || info.kind != ParameterKind::Continuous)
            continue;
        // Our own way to a number: the library's distributions differ between compilers.
        const double share = static_cast<double>(chance() >> 11) * 0x1p-53;
        const auto move = static_cast<float>(2.0 * share - 1.0) * std::clamp(amount, 0.0f, 1.0f);
        Move(info.index, before[info.index] + move);
    }
    Remember("Randomise " + std::string(group), before);
}

// ---- MIDI

void Instrument::LearnMidi(uint32_t index) { player.Learn(MovableOrNone(index)); }

MidiMap Instrument::GetMidiMap() const {
    const Lock lock(mutex);
    return kept.midi;
}

void Instrument::SetMidiMap(MidiMap map) {
    const Lock lock(mutex);
    kept.midi = std::move(map);
    OfferMidi();
}

/// A parameter has one source, and so has a source one parameter that was learnt.
std::optional<uint32_t> Instrument::Poll() {
    const Lock lock(mutex);
    std::optional<uint32_t> program;
    InstrumentPlayer::Note note;
    while (player.TakeNote(note)) {
        if (note.kind == InstrumentPlayer::Note::Kind::Program) {
            program = note.number;
            continue;
        }
        std::erase_if(kept.midi, [&](const MidiBinding& binding) {
            return binding.index == note.number || binding.source == note.source;
        });
        MidiBinding learnt;
        learnt.source = note.source;
        learnt.index = note.number;
        if (note.source.kind == MidiSource::Kind::Note)
            learnt.take = MidiBinding::Take::Toggle;
        kept.midi.push_back(learnt);
        OfferMidi();
    }
    if (active && kept.seed && !player.HasUnderstudy())
        OfferUnderstudy();
    return program;
}

// ---- Chance and projects

void Instrument::SetSeed(std::optional<uint64_t> seed) {
    const Lock lock(mutex);
    if (seed == kept.seed)
        return;
    kept.seed = seed;
    if (active)
        OfferFreshEngine();
}

std::optional<uint64_t> Instrument::Seed() const {
    const Lock lock(mutex);
    return kept.seed;
}

InstrumentState Instrument::Capture() {
    InstrumentState state = kept;
    state.sound = mirror.CaptureState();
    state.morph = positions.Position(PositionBoard::kMorphIndex);
    state.modified = Differs();
    for (uint32_t i = 0; i < kAssignments; ++i)
        state.assignments[i] = controls.Assignment(i);
    return state;
}

std::string Instrument::SaveState() {
    const Lock lock(mutex);
    return WriteInstrumentState(Capture(), catalog);
}

std::vector<Issue> Instrument::LoadState(std::string_view text) {
    Parsed<InstrumentState> parsed = ReadInstrumentState(text, catalog);
    if (!parsed.value)
        return std::move(parsed.issues);
    const Lock lock(mutex);
    const bool otherSeed = parsed.value->seed != kept.seed || parsed.value->seed.has_value();
    kept = std::move(*parsed.value);
    for (uint32_t i = 0; i < kAssignments; ++i)
        controls.Assign(i, kept.assignments[i]);
    positions.Note(PositionBoard::kMorphIndex, kept.morph);
    mirror.Apply(kept.sound);
    presetPositions = kept.modified ? std::vector<float>() : Snapshot();
    history.Clear();
    OfferMorph();
    OfferMidi();
    if (active && otherSeed)
        OfferFreshEngine();
    return std::move(parsed.issues);
}

void Instrument::SetWindowSize(WindowSize size) {
    const Lock lock(mutex);
    kept.window = size;
}

WindowSize Instrument::GetWindowSize() const {
    const Lock lock(mutex);
    return kept.window;
}

}  // namespace Quorvan::Host
