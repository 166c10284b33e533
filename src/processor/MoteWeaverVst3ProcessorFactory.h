#pragma once

#include "processor/IProcessor.h"

namespace Quorvan::Processor {

/// Makes processors of the one kind that this library has.
class MoteWeaverVst3ProcessorFactory final : public IProcessorFactory {
public:
    MoteWeaverVst3ProcessorFactory();

    IProcessor* CreateProcessor() override;
};

}  // namespace Quorvan::Processor
