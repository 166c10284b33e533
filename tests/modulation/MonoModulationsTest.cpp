#include "modulation/MonoModulations.h"

#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

using Matrix = MonoModulations<7, 95, 1, DefaultModulationPolicy>;

constexpr uint32_t kSources = 7;
constexpr uint32_t kRows = 95;
constexpr uint32_t kCells = kSources * kRows;
constexpr uint32_t kBlock = 44;
constexpr float kUntouched = -77.0f;

constexpr uint32_t Cell(uint32_t row, uint32_t source) { return row * kSources + source; }
constexpr uint32_t Switch(uint32_t row, uint32_t source) { return kCells + Cell(row, source); }

Parameter Bipolar() {
    return Parameter::MakeContinuous("", PotardKind::kLinear, -1.0f, 1.0f, 0.5f);
}

struct Rig {
    explicit Rig(uint32_t alwaysDirty = 0x7f, uint32_t blockSize = kBlock)
        : matrix(alwaysDirty, Bipolar(), "Modulations") {
        matrix.Setup(48000.0f, blockSize);
    }
    void Process(uint32_t frames = kBlock) {
        ProcessBlock block;
        block.numFrames = frames;
        EXPECT_TRUE(matrix.Process(block));
    }
    void Write(uint32_t source, float value, uint32_t frames = kBlock) {
        std::fill_n(matrix.GetSourceRow(source), frames, value);
    }
    void Announce(uint32_t source, float value, uint32_t frames = kBlock) {
        Write(source, value, frames);
        matrix.SourceUpdated(source, frames);
    }
    /// Marks a row, so that it shows whether it has been computed.
    void Spoil(uint32_t row) { matrix.GetDestinationRow(row)[0] = kUntouched; }
    float First(uint32_t row) { return matrix.GetDestinationRow(row)[0]; }
    float Activity(uint32_t row) { return matrix.GetDestinationRow(row)[-1]; }

    Matrix matrix;
};

struct Plain {
    std::array<float, kCells> amounts{};
    std::array<bool, kCells> off{};

    float Effective(uint32_t row, uint32_t source) const {
        return off[Cell(row, source)] ? 0.0f : amounts[Cell(row, source)];
    }
    bool Reaches(uint32_t row) const {
        bool reaches = false;
        for (uint32_t s = 0; s < kSources; ++s)
            reaches = reaches || Effective(row, s) != 0.0f;
        return reaches;
    }
    void Expect(Rig& rig, uint32_t row, uint32_t frames) const {
        for (uint32_t j = 0; j < frames; ++j) {
            float sum = 0.0f;
            for (uint32_t s = 0; s < kSources; ++s)
                sum += Effective(row, s) * rig.matrix.GetSourceRow(s)[j];
            ASSERT_EQ(rig.matrix.GetDestinationRow(row)[j], sum) << "row " << row << " at " << j;
        }
    }
};

// Routing that changes all the time, announced and silent sources, and blocks of several lengths:
// behind a block every row is the plain sum, and behind an announcement those rows are that it
// concerns.
TEST(MonoModulationsTest, RowsAreThePlainSumsWhateverHappens) {
    Rig rig;
    Plain plain;
    Dice dice(12);
    const auto draw = [&dice](uint32_t below) { return dice.Below(below); };
    for (uint32_t step = 0; step < 400; ++step) {
        for (uint32_t change = draw(6); change > 0; --change) {
            const uint32_t cell = draw(3) == 0 ? draw(kCells) : draw(40) * 16;
            if (draw(2) == 0) {
                plain.off[cell] = draw(2) == 0;
                rig.matrix.SetActivated(kCells + cell, !plain.off[cell]);
            } else {
                plain.amounts[cell] = draw(3) == 0 ? 0.0f : Noise(draw(99), 1)[0];
                rig.matrix.SetAmount(cell, plain.amounts[cell]);
            }
        }
        const uint32_t frames = draw(5) == 0 ? 16 : kBlock;
        for (uint32_t s = 0; s < kSources; ++s) {
            const std::vector<float> signal = Noise(100 * step + s, frames);
            std::copy(signal.begin(), signal.end(), rig.matrix.GetSourceRow(s));
            if (draw(3) == 0)
                continue;
            rig.matrix.SourceUpdated(s, frames);
            for (uint32_t row = 0; row < kRows; ++row)
                if (plain.Effective(row, s) != 0.0f)
                    plain.Expect(rig, row, frames);
        }
        rig.Process(frames);
        for (uint32_t s = 0; s < kSources; ++s)
            ASSERT_EQ(rig.matrix.GetSourceRow(s)[kBlock - 1],
                      rig.matrix.GetSourceRow(s)[frames - 1]);
        for (uint32_t row = 0; row < kRows; ++row) {
            plain.Expect(rig, row, kBlock);
            ASSERT_EQ(rig.matrix.IsDestinationConnected(row), plain.Reaches(row));
            ASSERT_EQ(rig.Activity(row), plain.Reaches(row) ? 1.23456f : 0.0f);
        }
    }
}

TEST(MonoModulationsTest, WorkFollowsRouting) {
    Rig rig;
    rig.matrix.SetAmount(Cell(3, 0), 1.0f);
    rig.matrix.SetAmount(Cell(70, 0), 0.5f);
    rig.matrix.SetAmount(Cell(4, 6), 1.0f);
    rig.Process();
    for (uint32_t row = 0; row < kRows; ++row)
        rig.Spoil(row);
    rig.Announce(0, 1.0f);
    for (uint32_t row = 0; row < kRows; ++row)
        EXPECT_EQ(rig.First(row), row == 3 ? 1.0f : row == 70 ? 0.5f : kUntouched);
    rig.Spoil(3);
    rig.matrix.SetAmount(Cell(3, 0), 1.0f);  // as it is
    rig.matrix.SetActivated(Switch(3, 0), true);
    rig.Process();  // source 0 has been taken in; source 6 has not
    EXPECT_EQ(rig.First(3), kUntouched);
    EXPECT_EQ(rig.First(4), 0.0f);
    EXPECT_EQ(rig.First(5), kUntouched);
}

TEST(MonoModulationsTest, OnlySourcesInTheMaskAreTakenInUnannounced) {
    Rig rig(0x02);
    rig.matrix.SetAmount(Cell(10, 0), 1.0f);
    rig.matrix.SetAmount(Cell(11, 1), 1.0f);
    rig.Process();
    rig.Write(0, 0.25f);
    rig.Write(1, 0.25f);
    rig.Process();
    EXPECT_EQ(rig.First(10), 0.0f);
    EXPECT_EQ(rig.First(11), 0.25f);
}

TEST(MonoModulationsTest, ASecondAnnouncementCountsOnlyInABlockOfAnotherLength) {
    Rig rig;
    rig.matrix.SetAmount(Cell(0, 2), 1.0f);
    rig.Process();
    rig.Announce(2, 0.5f);
    rig.Announce(2, 0.75f);
    EXPECT_EQ(rig.First(0), 0.5f);
    rig.Process();
    rig.Announce(2, 0.5f, 16);
    rig.Announce(2, 0.75f, 16);
    EXPECT_EQ(rig.First(0), 0.75f);
}

TEST(MonoModulationsTest, SetupKeepsTheRoutingAndAlignsTheRows) {
    Rig rig;
    rig.matrix.SetAmount(Cell(94, 6), -0.5f);
    rig.matrix.SetActivated(Switch(2, 3), false);
    for (const uint32_t size : {48u, 192u, 44u}) {
        rig.matrix.Setup(48000.0f, size);
        rig.matrix.Reset(true);
        EXPECT_FALSE(rig.matrix.IsActivated(Cell(2, 3)));
        for (uint32_t row = 0; row < kRows; ++row)
            EXPECT_EQ(reinterpret_cast<uintptr_t>(rig.matrix.GetDestinationRow(row)) % 16, 0u);
        rig.Write(6, 1.0f, size);
        rig.Process(size);
        EXPECT_EQ(rig.matrix.GetDestinationRow(94)[size - 1], -0.5f);
    }
}

}  // namespace
}  // namespace Quorvan::dsp
