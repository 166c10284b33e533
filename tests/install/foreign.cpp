#include <processor/IProcessor.h>

#include <memory>

int main() {
    using namespace Quorvan::Processor;
    const std::unique_ptr<IProcessorFactory> factory(GetProcessorFactory());
    const std::unique_ptr<IProcessor_V5> p(static_cast<IProcessor_V5*>(factory->CreateProcessor()));
    const float rate = 48000.0f;
    float in[48] = {1.0f}, out[48], aux[48];
    float *inputs[] = {in, in}, *outputs[] = {out, out}, *auxOutputs[] = {aux, aux, aux, aux};
    ProcessData data{};
    data.inputs = inputs, data.outputs = outputs, data.auxOutputs = auxOutputs;
    data.inputCount = data.outputCount = 2, data.auxOutputCount = 4;
    data.frameCount = 48, data.tempo = 120.0f;
    return p->SetLogger(nullptr) && p->Initialize(&rate) && p->Process(&data) ? 0 : 1;
}
