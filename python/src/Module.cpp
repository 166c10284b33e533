#include <limits>

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "host/parameters/ModulationNames.h"
#include "host/state/PresetFormat.h"
#include "presets/FactoryPresets.h"
#include "python/src/Errors.h"
#include "python/src/Rendering.h"
#include "python/src/Stream.h"

namespace py = pybind11;

namespace Quorvan::Python {

namespace {

py::list Parameters() {
    py::list all;
    for (const Host::ParameterInfo& info : Catalog().All()) {
        if (info.role != Host::ParameterRole::Setting || info.kind == Host::ParameterKind::Binary)
            continue;
        py::dict entry;
        entry["name"] = info.name;
        entry["label"] = info.title;
        entry["group"] = info.group;
        entry["minimum"] = info.minimum;
        entry["maximum"] = info.maximum;
        entry["lowest"] = Catalog().Text(info.index, 0.0f);
        entry["highest"] = Catalog().Text(info.index, 1.0f);
        entry["default"] = Catalog().Text(info.index, info.defaultPosition);
        entry["choices"] = std::vector<std::string>(info.choices.begin(), info.choices.end());
        all.append(entry);
    }
    return all;
}

py::list FactoryPresets() {
    py::list names;
    for (const Host::FactoryPreset& preset : Host::FactoryPresets())
        names.append(std::string(preset.id));
    return names;
}

void BindStream(py::module_& module) {
    py::class_<Stream>(module, "Stream")
        .def(py::init<double, std::optional<uint64_t>, const std::string&, uint32_t,
                      std::optional<double>, uint32_t>())
        .def("process", &Stream::Process)
        .def("reset", &Stream::Reset, py::call_guard<py::gil_scoped_release>())
        .def("capture", &Stream::Capture)
        .def("load", &Stream::Load)
        .def("latency", &Stream::Latency)
        .def("tail", &Stream::Tail)
        .def("sample_rate", &Stream::Rate)
        .def("tempo", &Stream::Tempo)
        .def("set_tempo", &Stream::SetTempo)
        .def("seed", &Stream::Seed)
        .def("engine_seconds", &Stream::EngineSeconds)
        .def("channels", &Stream::Channels)
        .def("side_channels", &Stream::SideChannels)
        .def("text", &Stream::Text)
        .def("value", &Stream::Value)
        .def("position", &Stream::Position)
        .def("put", &Stream::Put)
        .def("put_position", &Stream::PutPosition);
}

}  // namespace

PYBIND11_MODULE(_core, module) {
    RegisterErrors();
    RegisterGrains();
    module.attr("version") = TESSERAE_VERSION;
    BindStream(module);
    module.def("parameters", &Parameters);
    module.def("factory_presets", &FactoryPresets);
    module.def("preset_text", [](const std::string& source) {
        return Host::WritePreset(LoadSound(source), Catalog());
    });
    py::class_<RenderWish>(module, "RenderWish")
        .def(py::init<>())
        .def_readwrite("sample_rate", &RenderWish::sampleRate)
        .def_readwrite("preset", &RenderWish::preset)
        .def_readwrite("set", &RenderWish::set)
        .def_readwrite("seed", &RenderWish::seed)
        .def_readwrite("automation", &RenderWish::automation)
        .def_readwrite("automation_file", &RenderWish::automationFile)
        .def_readwrite("tail", &RenderWish::tail)
        .def_readwrite("tail_fade", &RenderWish::tailFade)
        .def_readwrite("tempo", &RenderWish::tempo)
        .def_readwrite("playing", &RenderWish::playing)
        .def_readwrite("start_beat", &RenderWish::startBeat)
        .def_readwrite("meter", &RenderWish::meter)
        .def_readwrite("mono", &RenderWish::mono)
        .def_readwrite("shows_modulation", &RenderWish::showsModulation)
        .def_readwrite("destinations", &RenderWish::destinations);
    module.def("render", &Render);
}

}  // namespace Quorvan::Python
