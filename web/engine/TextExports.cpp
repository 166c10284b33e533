#include "host/parameters/PresentSettings.h"
#include "host/parameters/SharedCatalog.h"
#include "presets/FactoryPresets.h"
#include "web/engine/CatalogText.h"
#include "web/engine/Desk.h"
#include "web/engine/Export.h"
#include "web/engine/SoundTexts.h"

/// Names, texts, presets and states, for the page's own thread. Each function stands with its
/// meaning in web/src/engine/EngineExports.ts.

using namespace Quorvan;
using Web::Desk;

namespace {

Web::SoundTexts& Sounds() {
    static Web::SoundTexts sounds;
    return sounds;
}

bool IsParameter(uint32_t index) { return index < Host::SharedCatalog().Count(); }

Host::PresentSettings Present() {
    return {Host::SharedCatalog(), [](uint32_t index) { return Desk::Get().Position(index); }};
}

}  // namespace

TESSERAE_EXPORT(tesserae_room) char* Room(size_t bytes) { return Desk::Get().MakeRoom(bytes); }
TESSERAE_EXPORT(tesserae_text_at) const char* TextAt() { return Desk::Get().Text().data(); }
TESSERAE_EXPORT(tesserae_text_bytes) size_t TextBytes() { return Desk::Get().Text().size(); }
TESSERAE_EXPORT(tesserae_positions_at) float* PositionsAt() {
    return Desk::Get().Positions().data();
}
TESSERAE_EXPORT(tesserae_parameter_count) uint32_t ParameterCount() {
    return Host::SharedCatalog().Count();
}

TESSERAE_EXPORT(tesserae_catalog) void Catalog() { Desk::Get().Leave(Web::CatalogText()); }

TESSERAE_EXPORT(tesserae_find) int32_t Find(size_t bytes) {
    const std::string_view name = Desk::Get().Room(bytes);
    const auto found = Host::SharedCatalog().Resolve(name, Present());
    if (!found)
        Desk::Get().Leave(Host::SharedCatalog().UnknownName(name));
    return found ? static_cast<int32_t>(*found) : -1;
}

TESSERAE_EXPORT(tesserae_in_force) int32_t InForce(uint32_t index) {
    return IsParameter(index) && Host::SharedCatalog().IsInForce(index, Present()) ? 1 : 0;
}

TESSERAE_EXPORT(tesserae_text_of_position)
void TextOfPosition(uint32_t index, float position, uint32_t scale) {
    Desk::Get().Leave(IsParameter(index) ? Host::SharedCatalog().Text(index, position, {scale})
                                         : std::string());
}

TESSERAE_EXPORT(tesserae_position_of_text)
float PositionOfText(uint32_t index, size_t bytes, uint32_t scale) {
    if (!IsParameter(index))
        return -1.0f;
    const Host::TextResult result =
        Host::SharedCatalog().Position(index, Desk::Get().Room(bytes), {scale});
    Desk::Get().Leave(result.problem);
    return result.position.value_or(-1.0f);
}

TESSERAE_EXPORT(tesserae_value_of_position)
double ValueOfPosition(uint32_t index, float position, uint32_t scale) {
    return IsParameter(index) ? Host::SharedCatalog().Value(index, position, {scale}) : 0.0;
}

TESSERAE_EXPORT(tesserae_position_of_value)
float PositionOfValue(uint32_t index, double value, uint32_t scale) {
    return IsParameter(index) ? Host::SharedCatalog().PositionOfValue(index, value, {scale}) : 0.0f;
}

TESSERAE_EXPORT(tesserae_scale) uint32_t Scale() { return Present().Texts().scale; }

TESSERAE_EXPORT(tesserae_read_sound) void ReadSound(size_t bytes) {
    Desk::Get().Leave(Sounds().Read(Desk::Get().Room(bytes)));
}

TESSERAE_EXPORT(tesserae_factory_sound) int32_t FactorySound(uint32_t number) {
    const auto presets = Host::FactoryPresets();
    if (number >= presets.size())
        return 0;
    Desk::Get().Leave(Sounds().Read(presets[number].json));
    return 1;
}

TESSERAE_EXPORT(tesserae_write_preset) void WritePreset(size_t bytes) {
    Desk::Get().Leave(Sounds().WritePreset(Desk::Get().Room(bytes)));
}

TESSERAE_EXPORT(tesserae_write_state) void WriteState() {
    Desk::Get().Leave(Sounds().WriteState());
}

TESSERAE_EXPORT(tesserae_tail) double TailSeconds(double tempo) {
    return Sounds().TailSeconds(tempo);
}
