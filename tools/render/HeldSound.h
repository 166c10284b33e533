#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "tools/render/RenderSink.h"

namespace Quorvan::Tools {

/// Sound that waits until it is known whether it is needed. Digital silence at its end is counted
/// and takes no memory.
class HeldSound {
public:
    uint64_t Frames() const { return stored + zeros; }
    /// Appends a piece from one of its frames on.
    void Add(const SoundPiece& piece, size_t from);
    /// Fades the last frames out, by a raised cosine that ends at 0.
    void FadeOut(uint64_t frames);

    /// Calls take with the first frames of it as one piece, which counts from start; forgets all.
    template <class Take>
    void Give(uint64_t start, uint64_t frames, Take&& take) {
        Store();
        std::array<const float*, 2> channels{};
        for (size_t c = 0; c < sound.size(); ++c)
            channels[c] = sound[c].data();
        if (frames > 0)
            take(SoundPiece{start, static_cast<size_t>(frames), channels.data(),
                            static_cast<uint32_t>(sound.size())});
        Clear();
    }
    void Clear();

private:
    void Store();

    std::vector<std::vector<float>> sound;
    uint64_t stored = 0;  ///< frames in sound
    uint64_t zeros = 0;   ///< frames of silence behind those
};

}  // namespace Quorvan::Tools
