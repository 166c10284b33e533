#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/parameters/ParameterForm.h"

namespace Quorvan::Host {

/// What people see of one parameter of a module. A "#" in name and label stands for the number of a
/// family: "StepVal#" is "StepVal1" and on.
struct DescriptionRow {
    std::string_view name;  ///< short name, as the module has it
    std::string_view label;
    ParameterForm form;
    ParameterRole role = ParameterRole::Setting;
};

using DescriptionRows = std::span<const DescriptionRow>;

/// One module in the tree: the prefix of its parameters' full names, what people call it, and its
/// rows. Some of a module's parameters are settings in one place and driven in another.
struct ModuleDescription {
    std::string prefix;
    std::string group;
    std::vector<DescriptionRows> rows;
    std::vector<std::string_view> driven = {};  ///< short names
    bool allDriven = false;                     ///< outputs stay outputs
};

// One function for each kind of module.
DescriptionRows GranularRows();
DescriptionRows GranularSequencerRows();
DescriptionRows BitCrusherRows();

DescriptionRows GeneratorRows();  ///< what all clocks share, with the usual table of rates
DescriptionRows DensityRows();    ///< those of the grain clock that set the density
DescriptionRows SongClockRows();  ///< rows that come before those of a generator
DescriptionRows TextureClockRows();
DescriptionRows FunctionRows();
DescriptionRows LfoRows();
DescriptionRows StepSequencerRows();
DescriptionRows EnvelopeFollowerRows();
DescriptionRows FollowerInputRows();

DescriptionRows SlotRows();
DescriptionRows FilterRows();
DescriptionRows DistortionRows();
DescriptionRows DistortionPartRows();
DescriptionRows CompressorRows();
DescriptionRows DelayRows();
DescriptionRows OctaverRows();
DescriptionRows PitchShiftDelayRows();
DescriptionRows TapeEchoRows();
DescriptionRows ChorusRows();
DescriptionRows FlangerRows();
DescriptionRows FlangerCoreRows();
DescriptionRows ReverbRows();

DescriptionRows ProcessorRows();
DescriptionRows SpatializerRows();  ///< rows of the processor that are a group of their own
DescriptionRows MeterRows();

/// Every module, those with longer prefixes first.
const std::vector<ModuleDescription>& ModuleDescriptions();

}  // namespace Quorvan::Host
