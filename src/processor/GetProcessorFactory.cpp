#include "basictools/Raise.h"
#include "processor/IProcessor.h"
#include "processor/MoteWeaverVst3ProcessorFactory.h"

Quorvan::Processor::IProcessorFactory* GetProcessorFactory() {
    return Quorvan::AnswerOr<Quorvan::Processor::IProcessorFactory*>(
        nullptr, [] { return new Quorvan::Processor::MoteWeaverVst3ProcessorFactory(); });
}
