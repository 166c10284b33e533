#include <algorithm>
#include <cmath>

#include "c/CallerText.h"
#include "c/Guard.h"
#include "c/ParameterName.h"
#include "host/state/ParameterReader.h"
#include "processor/IProcessor.h"

using namespace Quorvan;
using namespace Quorvan::C;

namespace {

Host::TextContext ContextOf(const tesserae_processor& processor) {
    return {tesserae_scale(&processor)};
}

tesserae_result Put(tesserae_processor& processor, uint64_t frame, uint32_t index, float position) {
    if (index >= processor.catalog.Count())
        return FailForIndex(&processor);
    if (!Host::IsStored(processor.catalog[index], Host::ParameterScope::Project))
        return Fail(&processor, TESSERAE_READ_ONLY,
                    "This parameter is the processor's own and can't be set; leave it out.");
    if (!std::isfinite(position))
        return Fail(&processor, TESSERAE_BAD_ARGUMENT,
                    "This position is no number; give one from 0 to 1.");
    return processor.engine.WriteAt(frame, index, position)
               ? tesserae_result{TESSERAE_OK}
               : Fail(&processor, TESSERAE_QUEUE_FULL,
                      "Too many writes wait for their blocks; call tesserae_process before the "
                      "next.");
}

}  // namespace

tesserae_result tesserae_get(const tesserae_processor* processor, uint32_t index, float* position) {
    return WithProcessor(processor, [=] {
        if (position == nullptr)
            return FailForNull(processor, "position");
        if (index >= processor->catalog.Count())
            return FailForIndex(processor);
        *position = processor->engine.Position(index);
        return tesserae_result{TESSERAE_OK};
    });
}

tesserae_result tesserae_set(tesserae_processor* processor, uint32_t index, float position) {
    return tesserae_set_at(processor, 0, index, position);
}

tesserae_result tesserae_set_at(tesserae_processor* processor, uint32_t frames_ahead,
                                uint32_t index, float position) {
    return WithPrepared(processor, [=] {
        return Put(*processor, processor->engine.FramesIn() + frames_ahead, index, position);
    });
}

tesserae_result tesserae_get_text(const tesserae_processor* processor, uint32_t index, char* text,
                                  size_t size) {
    return WithProcessor(processor, [=] {
        if (index >= processor->catalog.Count())
            return FailForIndex(processor);
        const float position = processor->engine.Position(index);
        return GiveText(processor, processor->catalog.Text(index, position, ContextOf(*processor)),
                        text, size);
    });
}

tesserae_result tesserae_set_text(tesserae_processor* processor, const char* name,
                                  const char* text) {
    return WithPrepared(processor, [=] {
        if (name == nullptr)
            return FailForNull(processor, "name");
        if (text == nullptr)
            return FailForNull(processor, "text");
        uint32_t index = 0;
        if (const tesserae_result found = FindNamed(processor, name, index); found != TESSERAE_OK)
            return found;
        const Host::TextResult result =
            processor->catalog.Position(index, text, ContextOf(*processor));
        return result.position ? tesserae_set(processor, index, *result.position)
                               : Fail(processor, TESSERAE_BAD_TEXT, result.problem);
    });
}

uint32_t tesserae_scale(const tesserae_processor* processor) {
    return processor != nullptr ? Host::TextContext::Of(processor->engine.GetProcessor()).scale : 0;
}
