#include <memory>
#include <stdexcept>
#include <utility>

#include "c/Guard.h"

using namespace Quorvan::C;

namespace {

tesserae_result Create(std::optional<uint64_t> seed, tesserae_processor** processor) {
    if (processor == nullptr)
        return FailForNull(nullptr, "processor");
    *processor = nullptr;
    return Guarded(nullptr, [&] {
        *processor = std::make_unique<tesserae_processor>(seed).release();
        return TESSERAE_OK;
    });
}

}  // namespace

const char* tesserae_version(void) { return TESSERAE_VERSION; }

tesserae_result tesserae_create(tesserae_processor** processor) {
    return Create(std::nullopt, processor);
}

tesserae_result tesserae_create_seeded(uint64_t seed, tesserae_processor** processor) {
    return Create(seed, processor);
}

void tesserae_destroy(tesserae_processor* processor) {
    const std::unique_ptr<tesserae_processor> owned(processor);
}

tesserae_result tesserae_prepare(tesserae_processor* processor, double sample_rate, uint32_t inputs,
                                 uint32_t outputs, uint32_t side_chain_inputs) {
    return WithProcessor(processor, [=] {
        // Where memory lacks halfway, no block may run on what is there; a refused format is looked
        // at before anything changes.
        const bool before = std::exchange(processor->prepared, false);
        try {
            processor->engine.Prepare({.sampleRate = sample_rate,
                                       .inputs = inputs,
                                       .outputs = outputs,
                                       .sideChainInputs = side_chain_inputs});
        } catch (const std::invalid_argument&) {
            processor->prepared = before;
            throw;
        }
        processor->prepared = true;
        return TESSERAE_OK;
    });
}
