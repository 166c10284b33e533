#include "modulation/MonoModulations.h"

namespace Quorvan::dsp {

template class ModulationsBase<7, 95, DefaultModulationPolicy>;
template class MonoModulations<7, 95, 1, DefaultModulationPolicy>;

}  // namespace Quorvan::dsp
