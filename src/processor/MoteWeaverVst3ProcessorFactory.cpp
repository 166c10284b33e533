#include "processor/MoteWeaverVst3ProcessorFactory.h"

#include <cstring>

#include "processor/DsplibProcessor.h"
#include "processor/MoteWeaverProcessor.h"

namespace Quorvan::Processor {

MoteWeaverVst3ProcessorFactory::MoteWeaverVst3ProcessorFactory() {
    std::strncpy(version, "1.0.0.2925", sizeof(version) - 1);
    std::strncpy(vendor, "Quorvan", sizeof(vendor) - 1);
    std::strncpy(productName, "Ondo TESSERAE", sizeof(productName) - 1);
}

IProcessor* MoteWeaverVst3ProcessorFactory::CreateProcessor() {
    try {
        return new DsplibProcessor<MoteWeaverProcessor>();
    } catch (...) {  // a wrapper may know nothing of exceptions
        return nullptr;
    }
}

}  // namespace Quorvan::Processor
