#pragma once

#include <cstdint>

#include "framework/EventQueue.h"

namespace Quorvan::dsp {

/// Content of a modulation row's activity word while at least one source reaches the row.
inline constexpr float kRowActive = 1.23456f;

/// Floats ahead of the first sample of a modulation row; the last of them is the activity word.
inline constexpr uint32_t kRowHeadFloats = 4;

/// What one call of Module::Process works on. A plain value: a parent builds a new one for each
/// child. Channels hold numFrames floats each; an input entry may be null.
struct ProcessBlock {
    float** inputs = nullptr;
    float** auxInputs = nullptr;  ///< side-chain channels, passed down unchanged
    float** outputs = nullptr;
    float** auxOutputs = nullptr;  ///< passed down unchanged
    Processor::EventQueue* eventsIn = nullptr;
    Processor::EventQueue* eventsOut = nullptr;
    uint32_t numInputs = 0;
    uint32_t numAuxInputs = 0;
    uint32_t numOutputs = 0;
    uint32_t numAuxOutputs = 0;
    uint32_t numFrames = 0;        ///< a multiple of 4
    float tempo = 0.0f;            ///< beats per minute
    float songPosition = 0.0f;     ///< quarter notes
    uint8_t transportPlaying = 0;  ///< non-zero while the transport runs
    uint32_t offline = 0;          ///< 1 in a call that makes no user interface feedback
};

/// Whether input channel is there and, by its activity word, reached by a modulation source.
inline bool IsRowActive(const ProcessBlock& block, uint32_t channel) {
    return channel < block.numInputs && block.inputs[channel] != nullptr &&
           block.inputs[channel][-1] != 0.0f;
}

}  // namespace Quorvan::dsp
