#include "processor/MoteWeaverVst3ProcessorFactory.h"

#include <cstring>

#include "basictools/Raise.h"
#include "processor/DsplibProcessor.h"
#include "processor/MoteWeaverProcessor.h"

namespace Quorvan::Processor {

MoteWeaverVst3ProcessorFactory::MoteWeaverVst3ProcessorFactory() {
    std::strncpy(version, "1.0.0.2925", sizeof(version) - 1);
    std::strncpy(vendor, "Quorvan", sizeof(vendor) - 1);
    std::strncpy(productName, "Ondo TESSERAE", sizeof(productName) - 1);
}

IProcessor* MoteWeaverVst3ProcessorFactory::CreateProcessor() {
    // A wrapper may know nothing of exceptions.
    return AnswerOr<IProcessor*>(nullptr,
                                 [] { return new DsplibProcessor<MoteWeaverProcessor>(); });
}

}  // namespace Quorvan::Processor
