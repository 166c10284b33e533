#include "processor/IProcessor.h"
#include "processor/MoteWeaverVst3ProcessorFactory.h"

Quorvan::Processor::IProcessorFactory* GetProcessorFactory() {
    try {
        return new Quorvan::Processor::MoteWeaverVst3ProcessorFactory();
    } catch (...) {
        return nullptr;
    }
}
