#include "processor/IProcessor.h"
#include "processor/MoteWeaverVst3ProcessorFactory.h"

Quorvan::Processor::IProcessorFactory* GetProcessorFactory() {
    return new Quorvan::Processor::MoteWeaverVst3ProcessorFactory();
}
