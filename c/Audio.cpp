#include <cmath>
#include <limits>

#include "c/Guard.h"
#include "host/engine/TailEstimator.h"

using namespace Quorvan;
using namespace Quorvan::C;

tesserae_result tesserae_process(tesserae_processor* processor, const float* const* inputs,
                                 const float* const* side_chain, float* const* outputs,
                                 float* const* aux, uint32_t frames) {
    return WithPrepared(processor, [=] {
        if (inputs == nullptr)
            return FailForNull(processor, "inputs");
        if (outputs == nullptr)
            return FailForNull(processor, "outputs");
        processor->engine.Process({.inputs = inputs,
                                   .outputs = outputs,
                                   .sideChain = side_chain,
                                   .aux = aux,
                                   .frames = frames});
        return tesserae_result{TESSERAE_OK};
    });
}

uint32_t tesserae_latency(const tesserae_processor* processor) {
    return processor != nullptr && processor->prepared ? processor->engine.LatencyFrames() : 0;
}

tesserae_result tesserae_tail(tesserae_processor* processor, double* seconds) {
    return WithProcessor(processor, [=] {
        if (seconds == nullptr)
            return FailForNull(processor, "seconds");
        const Host::Tail tail = Host::EstimateTail(processor->engine, processor->catalog);
        *seconds = tail.endless ? std::numeric_limits<double>::infinity() : tail.seconds;
        return tesserae_result{TESSERAE_OK};
    });
}

tesserae_result tesserae_panic(tesserae_processor* processor) {
    return WithPrepared(processor, [=] {
        processor->engine.Panic();
        return TESSERAE_OK;
    });
}

tesserae_result tesserae_set_transport(tesserae_processor* processor, double tempo, double beat,
                                       int playing) {
    return WithProcessor(processor, [=] {
        if (!std::isfinite(tempo) || !std::isfinite(beat))
            return Fail(processor, TESSERAE_BAD_ARGUMENT,
                        "Tempo and beat have to be finite numbers; give beats per minute and "
                        "quarter notes.");
        processor->engine.SetTransport({.tempo = tempo, .beat = beat, .playing = playing != 0});
        return tesserae_result{TESSERAE_OK};
    });
}

tesserae_result tesserae_set_tempo(tesserae_processor* processor, double tempo) {
    return WithProcessor(processor, [=] {
        const Host::Transport now = processor->engine.GetTransport();
        return tesserae_set_transport(processor, tempo, now.beat, now.playing ? 1 : 0);
    });
}
