#include "host/instrument/Instrument.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

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
      face(parameters, positions, controls),
      player(parameters, positions, controls),
      mirror(parameters, positions),
      desk(parameters, positions) {
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

void Instrument::Move(uint32_t index, float position, float own) {
    positions.Put(index, std::clamp(position, 0.0f, 1.0f), std::clamp(own, 0.0f, 1.0f));
    TellHost(FaceKind::Move, index);
}

void Instrument::TellHost(FaceKind kind, uint32_t index) {
    bool isControl = false;
    controls.ForEachOf(index, [&](uint32_t id) {
        isControl = true;
        player.TellHost({kind, id, positions.Position(index)});
    });
    if (!isControl && kind == FaceKind::Move)
        ++changes;
}

void Instrument::Edit(uint32_t index, float position) {
    if (index >= PositionBoard::kCount || !std::isfinite(position))
        return;
    const Lock lock(mutex);
    const float before = positions.Position(index), ownBefore = positions.Own(index);
    if (gesture != 0 && std::find(begun.begin(), begun.end(), index) == begun.end())
        TellBegin(index);
    Move(index, position);
    const float after = std::clamp(position, 0.0f, 1.0f);
    if (index < catalog.Count() && IsSetting(catalog[index]))
        history.AddMove(gesture, catalog[index].group + " " + catalog[index].label,
                        {index, before, after, ownBefore, after});
}

void Instrument::BeginGesture(uint32_t index) {
    const Lock lock(mutex);
    gesture = ++gestures;
    TellEnds();
    TellBegin(index);
}

/// What a gesture moves besides is touched too, for hosts.
void Instrument::TellBegin(uint32_t index) {
    begun.push_back(index);
    TellHost(FaceKind::Begin, index);
}

void Instrument::TellEnds() {
    for (const uint32_t index : std::exchange(begun, {}))
        TellHost(FaceKind::End, index);
}

void Instrument::EndGesture(uint32_t) {
    const Lock lock(mutex);
    history.EndGesture(gesture);
    gesture = 0;
    TellEnds();
}

uint32_t Instrument::MovableOrNone(uint32_t index) const {
    return index < kProcessorParameters && IsMovable(catalog[index]) ? index : kUnassigned;
}

void Instrument::Assign(uint32_t number, uint32_t index) {
    if (number >= kAssignments)
        return;
    controls.Assign(number, MovableOrNone(index));
    ++changes;
}

void Instrument::EditAssignment(uint32_t number, uint32_t index) {
    const Lock lock(mutex);
    const Wiring before = PresentWiring();
    Assign(number, index);
    RememberWiring("Assign " + std::to_string(number + 1), index, before);
}

Wiring Instrument::PresentWiring() const {
    Wiring wiring{kept.midi, {}};
    for (uint32_t i = 0; i < kAssignments; ++i)
        wiring.assignments[i] = controls.Assignment(i);
    return wiring;
}

void Instrument::Rewire(const std::optional<Wiring>& wiring) {
    if (!wiring)
        return;
    kept.midi = wiring->midi;
    for (uint32_t i = 0; i < kAssignments; ++i)
        controls.Assign(i, wiring->assignments[i]);
    ++changes;
    OfferMidi();
}

void Instrument::RememberWiring(const std::string& name, uint32_t index, const Wiring& before) {
    const std::string target = index < catalog.Count() ? " to " + catalog[index].title : "";
    history.Add({name + target, {}, {}, {}, before, PresentWiring()});
}

// ---- Whole sounds

void Instrument::Remember(const std::string& name, const Moment& before) {
    const Moment after = Now();
    EditHistory::Step step{name, {}, before.scene, after.scene};
    for (const ParameterInfo& info : catalog.All())
        if (const uint32_t i = info.index; IsSetting(info))
            step.changes.push_back(
                {i, before.heard[i], after.heard[i], before.own[i], after.own[i]});
    history.Add(std::move(step));
}

void Instrument::LoadPreset(const Preset& preset) {
    const Lock lock(mutex);
    const Moment before = Now();
    mirror.Apply(preset);
    desk.LoadedPreset(preset.name);
    Remember("Preset " + Quoted(preset.name), before);
}

Preset Instrument::GetPreset() {
    const Lock lock(mutex);
    Preset preset = mirror.CapturePreset();
    preset.name = desk.PlayedPreset().name;
    return preset;
}

std::string Instrument::PresetName() const {
    const Lock lock(mutex);
    return desk.PlayedPreset().name;
}

bool Instrument::IsModified() {
    const Lock lock(mutex);
    return desk.IsModified();
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
    const EditHistory::Step* const step = history.Undo();
    if (step == nullptr)
        return;
    GoTo(step->before);
    Rewire(step->wiringBefore);
    for (const EditHistory::Change& change : step->changes)
        Move(change.index, change.before, change.ownBefore);
}

void Instrument::Redo() {
    const Lock lock(mutex);
    const EditHistory::Step* const step = history.Redo();
    if (step == nullptr)
        return;
    GoTo(step->after);
    Rewire(step->wiringAfter);
    for (const EditHistory::Change& change : step->changes)
        Move(change.index, change.after, change.ownAfter);
}

void Instrument::GoTo(const std::optional<SoundDesk::Scene>& scene) {
    if (!scene)
        return;
    if (scene->played != desk.Played())
        SwapSounds();
    desk.SetPlayedPreset(scene->preset);
    if (scene->other == nullptr)
        return;
    desk.SetOther(*scene->other);
    OfferMorph();
}

void Instrument::PlaySound(uint32_t which) {
    const Lock lock(mutex);
    if (which > 1 || which == desk.Played())
        return;
    const Moment before = Now();
    SwapSounds();
    Remember(which == 0 ? "Sound A" : "Sound B", before);
}

void Instrument::SwapSounds() {
    for (const ParameterValue& value : desk.Swap().parameters)
        if (value.index != kBypassIndex && (value.position != positions.Position(value.index) ||
                                            value.position != positions.Own(value.index)))
            Move(value.index, value.position);
    OfferMorph();
}

uint32_t Instrument::PlayedSound() const {
    const Lock lock(mutex);
    return desk.Played();
}

void Instrument::CopySound() {
    const Lock lock(mutex);
    const SoundDesk::Scene before = desk.PresentPair();
    desk.Copy();
    ++changes;
    history.Add({desk.Played() == 0 ? "Copy to B" : "Copy to A", {}, before, desk.PresentPair()});
    OfferMorph();
}

void Instrument::OfferMorph() {
    player.OfferPlan(desk.Other() ? PlanMorph(desk.Played(), *desk.Other(), catalog)
                                  : std::make_unique<MorphPlan>());
}

void Instrument::Randomise(std::string_view group, float amount, uint64_t seed) {
    if (!(amount > 0.0f))
        return;
    const Lock lock(mutex);
    const Moment before = Now();
    std::mt19937_64 chance(seed);
    for (const ParameterInfo& info : catalog.All()) {
        if (!IsSetting(info) || info.group != group || info.kind != ParameterKind::Continuous)
            continue;
        // Our own way to a number: the library's distributions differ between compilers.
        const double share = static_cast<double>(chance() >> 11) * 0x1p-53;
        const auto move = static_cast<float>(2.0 * share - 1.0) * std::min(amount, 1.0f);
        Move(info.index, before.heard[info.index] + move);
    }
    Remember("Randomise " + std::string(group), before);
}

// ---- MIDI

void Instrument::LearnMidi(uint32_t index, bool goesOn) {
    player.Learn(MovableOrNone(index), goesOn);
}

MidiMap Instrument::GetMidiMap() const {
    const Lock lock(mutex);
    return kept.midi;
}

void Instrument::SetMidiMap(MidiMap map) {
    const Lock lock(mutex);
    kept.midi = std::move(map);
    ++changes;
    OfferMidi();
}

void Instrument::ForgetMidi(uint32_t index) {
    const Lock lock(mutex);
    const Wiring before = PresentWiring();
    std::erase_if(kept.midi, [&](const MidiBinding& binding) { return binding.index == index; });
    ++changes;
    OfferMidi();
    RememberWiring("Forget MIDI", kUnassigned, before);
}

/// A parameter has one source, and so has a source one parameter that was learnt. Range, curve and
/// what else was set by hand go over to the new source.
void Instrument::Keep(const MidiSource& source, uint32_t index) {
    const Wiring before = PresentWiring();
    const bool isNote = source.kind == MidiSource::Kind::Note;
    MidiBinding learnt;
    for (const MidiBinding& former : kept.midi)
        if (former.index == index && (former.source.kind == MidiSource::Kind::Note) == isNote)
            learnt = former;
    if (learnt == MidiBinding() && isNote)
        learnt.take = MidiBinding::Take::Toggle;
    learnt.source = source;
    learnt.index = index;
    std::erase_if(kept.midi, [&](const MidiBinding& binding) {
        return binding.index == index || IsSameKnob(binding.source, source);
    });
    kept.midi.push_back(learnt);
    ++lessons;
    ++changes;
    OfferMidi();
    RememberWiring("Learn MIDI", index, before);
}

std::optional<uint32_t> Instrument::Poll() {
    const Lock lock(mutex);
    std::optional<uint32_t> program;
    InstrumentPlayer::Note note;
    while (player.TakeNote(note)) {
        if (note.kind == InstrumentPlayer::Note::Kind::Program) {
            program = note.number;
            continue;
        }
        Keep(note.source, note.number);
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
    ++changes;
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
    state.sounds = desk.Save(state.preset, state.modified);
    for (uint32_t i = 0; i < kAssignments; ++i)
        state.assignments[i] = controls.Assignment(i);
    return state;
}

std::string Instrument::SaveState(std::vector<PortValue> ports) {
    const Lock lock(mutex);
    InstrumentState state = Capture();
    state.ports = std::move(ports);
    return WriteInstrumentState(state, catalog);
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
    if (const auto& own = kept.sounds.kept[kept.sounds.played])
        for (const ParameterValue& value : own->parameters)
            positions.NoteOwn(value.index, value.position);
    desk.Load(kept.sounds, kept.preset, kept.modified);
    history.Clear();
    OfferMorph();
    OfferMidi();
    if (active && otherSeed)
        OfferFreshEngine();
    return std::move(parsed.issues);
}

std::vector<PortValue> Instrument::LoadedPorts() const {
    const Lock lock(mutex);
    return kept.ports;
}

void Instrument::SetWindowSize(WindowSize size) {
    const Lock lock(mutex);
    kept.window = size;
    ++changes;
}

WindowSize Instrument::GetWindowSize() const {
    const Lock lock(mutex);
    return kept.window;
}

}  // namespace Quorvan::Host
