#include "plugins/ui/model/FaceModel.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "host/parameters/ModulationNames.h"
#include "host/state/PresetFormat.h"
#include "plugins/ui/model/EffectStarts.h"
#include "presets/FactoryPresets.h"

namespace Quorvan::Ui {

using Host::ActivatedIndex;
using Host::AmountIndex;

namespace {

constexpr std::array<const char*, 2> kSlots{"FX1", "FX2"};

/// A new plug-in stands where the first preset puts it.
std::vector<float> FreshPositions(const Host::ParameterCatalog& catalog) {
    std::vector<float> positions;
    for (const Host::ParameterInfo& info : catalog.All())
        positions.push_back(info.defaultPosition);
    const auto first = Host::ReadPreset(Host::FactoryPresets().front().json, catalog);
    if (first.value)
        for (const Host::ParameterValue& value : first.value->parameters)
            positions[value.index] = value.position;
    return positions;
}

}  // namespace

FaceModel::FaceModel(Host::Instrument& anInstrument, Host::PresetLibrary& library)
    : instrument(anInstrument),
      fresh(FreshPositions(anInstrument.Catalog())),
      presets(library),
      settings(anInstrument.Catalog()) {
    for (const Host::ParameterInfo& info : Catalog().All())
        if (info.index < Host::kProcessorParameters && Catalog().Decides(info.index))
            deciders.push_back(info.index);
    deciders.push_back(Host::kScaleIndex);
    for (size_t i = 0; i < effectIndices.size(); ++i) {
        const std::string slot = kSlots[i];
        effectIndices[i] = *Find(slot + " Effect");
        for (uint32_t effect = 1; effect < Catalog()[effectIndices[i]].StepCount(); ++effect)
            for (const Start& start : StartsIn(kSlots[i], effect))
                fresh[start.index] = start.position;
        mixIndices[i] = *Find(slot + " Dry / Wet");
    }
    for (const char* const depth :
         {"Random Pitch", "Random Size", "Random Density", "Random Layers", "Spray"})
        if (const auto index = Find(depth))
            foldedIndices.push_back(*index);
    decided.assign(deciders.size(), -1.0f);
    Refresh(0.0);
}

void FaceModel::Refresh(double seconds) {
    now = seconds;
    frameIsNew = instrument.Display().Take();
    if (frameIsNew)
        lastFrame = now;
    bool isOther = false;
    for (size_t i = 0; i < deciders.size(); ++i) {
        const float position = instrument.Position(deciders[i]);
        isOther |= position != decided[i];
        decided[i] = position;
        settings.Put(deciders[i], position);
    }
    revision += isOther ? 1 : 0;
    if (now >= nextCheck) {
        modified = instrument.IsModified();
        nextCheck = now + 0.2;
    }
}

std::optional<uint32_t> FaceModel::Find(std::string_view name) const {
    return Catalog().Resolve(name, settings);
}

float FaceModel::PositionOf(std::string_view name) const {
    const auto index = Find(name);
    return index ? Position(*index) : 0.0f;
}

double FaceModel::ValueOf(std::string_view name) const {
    const auto index = Find(name);
    return index ? Catalog().Value(*index, Position(*index), Texts()) : 0.0;
}

uint32_t FaceModel::ChoiceOf(std::string_view name) const {
    return static_cast<uint32_t>(ValueOf(name));
}

std::string FaceModel::Text(uint32_t index) const {
    return Catalog().Text(index, Position(index), Texts());
}

std::string FaceModel::EffectIn(const std::string& slot) const {
    const std::string name = Text(*Find(slot + " Effect"));
    return name == "Octaver Delay" ? "Octaver" : name;
}

std::vector<FaceModel::Start> FaceModel::StartsIn(const char* slot, uint32_t effect) const {
    std::vector<Start> starts;
    for (const EffectStart& start : EffectStartsOf(effect)) {
        const std::string name = std::string(slot) + " " + std::string(start.setting);
        const auto index = Catalog().Resolve(name, settings);
        const auto position =
            index ? Catalog().Position(*index, start.text, {}).position : std::nullopt;
        if (!position)
            throw std::logic_error("An effect can't begin with " + name);
        starts.push_back({*index, *position});
    }
    return starts;
}

float FaceModel::Default(uint32_t index) const {
    for (size_t slot = 0; slot < mixIndices.size(); ++slot)
        if (index == mixIndices[slot])
            return StartMix(ChoiceOf(std::string(kSlots[slot]) + " Effect"));
    return fresh[index];
}

/// Of an empty slot: none.
float FaceModel::StartMix(uint32_t effect) const {
    const auto starts = StartsIn(kSlots.front(), effect);
    return starts.empty() ? 0.0f : starts.front().position;
}

void FaceModel::Edit(uint32_t index, float position) {
    for (size_t slot = 0; slot < effectIndices.size(); ++slot)
        if (index == effectIndices[slot]) {
            const uint32_t before = ChoiceOf(std::string(kSlots[slot]) + " Effect");
            instrument.Edit(index, position);
            return Furnish(slot, before);
        }
    instrument.Edit(index, position);
}

/// Where nobody has moved anything yet: the mix is still that of the effect before.
void FaceModel::Furnish(size_t slot, uint32_t before) {
    const uint32_t effect = ChoiceOf(std::string(kSlots[slot]) + " Effect");
    const std::vector<Start> starts = StartsIn(kSlots[slot], effect);
    if (starts.empty() || effect == before)
        return;
    if (Position(mixIndices[slot]) == StartMix(before))
        instrument.Edit(mixIndices[slot], starts.front().position);
    const bool isUntouched =
        std::all_of(starts.begin() + 1, starts.end(), [this](const Start& start) {
            return Position(start.index) == Catalog()[start.index].defaultPosition;
        });
    for (size_t i = 1; isUntouched && i < starts.size(); ++i)
        instrument.Edit(starts[i].index, starts[i].position);
}

void FaceModel::EditOnce(uint32_t index, float position) {
    Begin(index);
    Edit(index, position);
    End(index);
}

std::string FaceModel::Type(uint32_t index, std::string_view text) {
    Host::TextResult result = Catalog().Position(index, text, Texts());
    if (!result.position)
        return std::move(result.problem);
    EditOnce(index, *result.position);
    return {};
}

// ---- Modulation

float FaceModel::Amount(uint32_t source, uint32_t row) const {
    return Position(ActivatedIndex(source, row)) > 0.5f
               ? Host::AmountOfPosition(Position(AmountIndex(source, row)))
               : 0.0f;
}

/// New processors have all cells on, with amounts of nothing.
bool FaceModel::IsRouted(uint32_t source, uint32_t row) const {
    return Amount(source, row) != 0.0f;
}

Influence FaceModel::InfluenceOn(uint32_t row, uint32_t index) const {
    Influence influence;
    influence.present = Position(index);
    for (uint32_t source = 0; source < Host::kModulationSources; ++source)
        if (IsRouted(source, row))
            influence.routes[influence.count++] = {source, Amount(source, row)};
    if (influence.count > 0 && IsAlive())
        influence.present = PresentPosition(row, index);
    return influence;
}

/// The feed shows depths of chance folded about the middle: below it where they go down.
float FaceModel::PresentPosition(uint32_t row, uint32_t index) const {
    const float shown = Frame().destinations[row];
    const bool isFolded =
        std::find(foldedIndices.begin(), foldedIndices.end(), index) != foldedIndices.end();
    if (!isFolded)
        return shown;
    const double depth = std::abs(2.0 * static_cast<double>(shown) - 1.0);
    return Catalog().PositionOfValue(index, 100.0 * depth);
}

void FaceModel::Route(uint32_t source, uint32_t row, float amount) {
    const uint32_t index = AmountIndex(source, row);
    const bool isHeld = heldRoute == index;
    if (!isHeld)
        Begin(index);
    Edit(index, Host::AmountPosition(std::clamp(amount, -1.0f, 1.0f)));
    if (Position(ActivatedIndex(source, row)) < 0.5f)
        Edit(ActivatedIndex(source, row), 1.0f);
    if (!isHeld)
        End(index);
}

void FaceModel::BeginRoute(uint32_t source, uint32_t row) {
    EndRoute();
    heldRoute = AmountIndex(source, row);
    Begin(*heldRoute);
}

void FaceModel::EndRoute() {
    if (const auto index = std::exchange(heldRoute, std::nullopt))
        End(*index);
}

void FaceModel::Unroute(uint32_t source, uint32_t row) {
    const uint32_t index = ActivatedIndex(source, row);
    Begin(index);
    Edit(index, 0.0f);
    Edit(AmountIndex(source, row), Host::AmountPosition(0.0f));
    End(index);
}

uint32_t FaceModel::RoutesFrom(uint32_t source) const {
    uint32_t count = 0;
    for (uint32_t row = 0; row < Host::kModulationDestinations; ++row)
        count += IsRouted(source, row) ? 1 : 0;
    return count;
}

// ---- Presets

std::string FaceModel::LoadPreset(size_t entry) {
    Host::Parsed<Host::Preset> parsed = presets.Load(entry);
    if (!parsed.value)
        return parsed.issues.empty() ? "It can't be read." : parsed.issues.front().text;
    instrument.LoadPreset(*parsed.value);
    nextCheck = 0.0;
    return {};
}

void FaceModel::StepPreset(int step) {
    if (const auto entry = presets.Beside(instrument.PresetName(), step))
        LoadPreset(*entry);
}

}  // namespace Quorvan::Ui
