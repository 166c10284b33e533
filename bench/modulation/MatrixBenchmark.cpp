// The matrix for one block, as the processor runs it: five sources announce themselves, the two
// macros are taken in by the matrix. Work has to follow routing.
#include <algorithm>

#include "modulation/Sources.h"

namespace Quorvan::bench {
namespace {

constexpr uint32_t kSources = 7, kAnnounced = 5, kRows = 95;

/// A matrix whose sources hold noise.
struct Routed {
    Routed() : matrix(MakeMatrix()) {
        matrix.Setup(kRate, kFrames);
        for (uint32_t s = 0; s < kSources; ++s) {
            const std::vector<float> noise = test::Noise(s + 1, kFrames);
            std::copy(noise.begin(), noise.end(), matrix.GetSourceRow(s));
        }
    }
    void Connect(uint32_t row, uint32_t source) {
        matrix.SetAmount(row * kSources + source, 0.1f + 0.008f * static_cast<float>(row));
    }
    /// count cells, over all sources and as many rows as there are.
    void ConnectMany(uint32_t count) {
        for (uint32_t k = 0; k < count; ++k)
            Connect(k % kRows, (k + k / kRows) % kSources);
    }
    void Run(benchmark::State& state, uint32_t announced = kAnnounced) {
        dsp::ProcessBlock block = Song().Block();
        matrix.Process(block);  // the first block computes every row
        for (auto _ : state) {
            for (uint32_t s = 0; s < announced; ++s)
                matrix.SourceUpdated(s, kFrames);
            matrix.Process(block);
            benchmark::ClobberMemory();
        }
        CountFrames(state);
    }

    Matrix matrix;
};

void BM_MatrixCells(benchmark::State& state) {
    Routed routed;
    routed.ConnectMany(static_cast<uint32_t>(state.range(0)));
    routed.Run(state);
}
BENCHMARK(BM_MatrixCells)->ArgName("cells")->Arg(0)->Arg(1)->Arg(20)->Arg(40)->Arg(665);

/// Twenty cells of the first source alone. With 5 announcements, four of the sources that run reach
/// nothing: they must not show against the run with 1.
void BM_SourcesThatReachNothing(benchmark::State& state) {
    Routed routed;
    for (uint32_t row = 0; row < 20; ++row)
        routed.Connect(row, 0);
    routed.Run(state, static_cast<uint32_t>(state.range(0)));
}
BENCHMARK(BM_SourcesThatReachNothing)->ArgName("announced")->Arg(1)->Arg(5);

/// One cell, on the first row or behind 94 rows that nothing reaches.
void BM_RowsThatNothingReaches(benchmark::State& state) {
    Routed routed;
    routed.Connect(static_cast<uint32_t>(state.range(0)), 0);
    routed.Run(state);
}
BENCHMARK(BM_RowsThatNothingReaches)->ArgName("ahead")->Arg(0)->Arg(94);

/// Amounts that are set but switched off.
void BM_MatrixSwitchedOff(benchmark::State& state) {
    Routed routed;
    routed.ConnectMany(Matrix::kCells);
    for (uint32_t cell = 0; cell < Matrix::kCells; ++cell)
        routed.matrix.SetActivated(Matrix::kFirstSwitchId + cell, false);
    routed.Run(state);
}
BENCHMARK(BM_MatrixSwitchedOff);

}  // namespace
}  // namespace Quorvan::bench
