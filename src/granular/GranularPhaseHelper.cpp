#include "granular/GranularPhaseHelper.h"

#include <utility>

namespace Quorvan::dsp {

GranularPhaseHelper::GranularPhaseHelper(std::string moduleName)
    : IGenerator(std::move(moduleName), 1, 0, {}) {}

bool GranularPhaseHelper::Generate(ProcessBlock&) { return true; }

}  // namespace Quorvan::dsp
