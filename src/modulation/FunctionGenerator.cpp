#include "modulation/FunctionGenerator.h"

#include <utility>

namespace Quorvan::dsp {

namespace {

template <uint32_t Points>
const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable table =
        Join(FunctionGenerator<Points>::Helper::Rows(), {
                                                            P::Raw("CntrlSrc"),
                                                            P::Linear("OutputValue", -1.0f, 1.0f),
                                                            P::Linear("Smooth", 0.00001f, 1.0f),
                                                            P::Raw("Destination"),
                                                            P::Linear("Amount", -1.0f, 1.0f),
                                                            P::Raw("GateOut"),
                                                        });
    return table;
}

}  // namespace

template <uint32_t Points>
FunctionGenerator<Points>::FunctionGenerator(std::string moduleName)
    : IGenerator(std::move(moduleName), 2, 1, Table<Points>()) {
    rateInputMode = kPerBlock;
    rateInputIndex = 0;
}

template <uint32_t Points>
bool FunctionGenerator<Points>::SetParameterNormalized(uint32_t id, float position) {
    return IGenerator::SetParameterNormalized(id, position);
}
template <uint32_t Points>
bool FunctionGenerator<Points>::SetParameterValue(uint32_t id, float value) {
    return IGenerator::SetParameterValue(id, value);
}
template <uint32_t Points>
void FunctionGenerator<Points>::OnSetup(float rateHz, uint32_t blockSize) {
    IGenerator::OnSetup(rateHz, blockSize);
}
template <uint32_t Points>
void FunctionGenerator<Points>::OnReset(bool hard) {
    IGenerator::OnReset(hard);
}
template <uint32_t Points>
bool FunctionGenerator<Points>::UpdateParameters(ProcessBlock& block) {
    return IGenerator::UpdateParameters(block);
}
template <uint32_t Points>
void FunctionGenerator<Points>::Restart() {
    IGenerator::Restart();
}
template <uint32_t Points>
bool FunctionGenerator<Points>::Generate(ProcessBlock&) {
    return true;
}

template class FunctionGenerator<64>;

}  // namespace Quorvan::dsp
