#include "support/Test.h"
#include "tools/picture/Axis.h"
#include "tools/picture/Colour.h"
#include "tools/picture/GrainLog.h"
#include "tools/picture/Spectrogram.h"
#include "tools/picture/TimeTicks.h"
#include "tools/picture/Waveform.h"

namespace Quorvan::Tools {
namespace {

constexpr double kRate = 48000.0;

template <class Meter>
void Feed(Meter& meter, const std::vector<float>& sound, size_t cut = 1000) {
    for (size_t at = 0; at < sound.size(); at += cut) {
        const float* const channel = sound.data() + at;
        meter.Add({at, std::min(cut, sound.size() - at), &channel, 1});
    }
}

TEST(SpectrogramTest, SineShowsAtItsPitchAndLevel) {
    for (const double hertz : {60.0, 440.0, 5000.0}) {
        Spectrogram spectrogram(kRate);
        Feed(spectrogram, Sine(hertz, kRate, 48000, 0.5f));
        const size_t column = spectrogram.Columns() / 2;
        size_t loudest = 0;
        for (size_t row = 0; row < spectrogram.Rows(); ++row) {
            if (spectrogram.Level(column, row) > spectrogram.Level(column, loudest))
                loudest = row;
        }
        const double share = static_cast<double>(loudest) / static_cast<double>(spectrogram.Rows());
        const double shown =
            spectrogram.LowestHertz() *
            std::pow(spectrogram.HighestHertz() / spectrogram.LowestHertz(), share);
        // Between bins a Hann window reads up to 1.4 dB low, and low rows are narrower than a bin.
        EXPECT_NEAR(shown / hertz, 1.0, hertz < 100.0 ? 0.12 : 0.03);
        EXPECT_NEAR(spectrogram.Level(column, loudest), -6.0f, 1.5f);
    }
}

TEST(SpectrogramTest, ClickShowsAtItsMoment) {
    std::vector<float> click(48000, 0.0f);
    click[20000] = 1.0f;
    Spectrogram spectrogram(kRate);
    Feed(spectrogram, click);
    spectrogram.Finish();
    size_t loudest = 0;
    for (size_t column = 0; column < spectrogram.Columns(); ++column) {
        if (spectrogram.Level(column, 200) > spectrogram.Level(loudest, 200))
            loudest = column;
    }
    const double frame = static_cast<double>(loudest * spectrogram.FramesPerColumn());
    EXPECT_NEAR(frame, 20000.0, static_cast<double>(spectrogram.FramesPerColumn()));
    EXPECT_GE(spectrogram.Columns() * spectrogram.FramesPerColumn(), click.size());
}

TEST(WaveformTest, PeaksStayInTheirPlaceAsBinsGrow) {
    Waveform waveform;
    std::vector<float> sound(3000000, 0.0f);
    sound[1234567] = 0.9f;
    sound[2999999] = -0.8f;
    Feed(waveform, sound, 4096);
    const auto& bins = waveform.Bins();
    const uint64_t size = waveform.FramesPerBin();
    EXPECT_LE(bins.size(), 16384u);
    EXPECT_EQ(bins[1234567 / size].highest, 0.9f);
    EXPECT_EQ(bins[2999999 / size].lowest, -0.8f);
    uint64_t samples = 0;
    for (const Waveform::Bin& bin : bins)
        samples += bin.samples;
    EXPECT_EQ(samples, sound.size());
    EXPECT_NEAR(bins[1234567 / size].Rms(), 0.9 / std::sqrt(static_cast<double>(size)), 1.0e-4);
}

std::string Labels(const std::vector<Tick>& ticks) {
    std::string text;
    for (const Tick& tick : ticks)
        text += (tick.label.empty() ? "." : tick.label) + " ";
    return text;
}

TEST(AxisTest, TicksAreRound) {
    EXPECT_EQ(Labels(Axis(0.0, 8.0).Ticks(10)), "0 1 2 3 4 5 6 7 8 ");
    EXPECT_EQ(Labels(Axis(0.0, 0.35).Ticks(4)), "0.0 0.1 0.2 0.3 ");
    EXPECT_EQ(Labels(Axis(-1.0, 1.0).Ticks(4)), "\u22121.0 \u22120.5 0.0 0.5 1.0 ");
    EXPECT_EQ(Labels(Axis(80.0, 2500.0, Axis::Scale::Logarithmic).Ticks(0)),
              ". . 100 200 . . 500 . . . . 1k 2k ");
    const Axis octaves(100.0, 1600.0, Axis::Scale::Logarithmic);
    EXPECT_NEAR(octaves.Place(400.0), 0.5, 1.0e-9);
}

TEST(TimeTicksTest, ClockAndBarsAreRound) {
    EXPECT_EQ(Labels(ClockTicks(0.0, 95.0, 4)), "0:00 0:30 1:00 1:30 ");
    EXPECT_EQ(Labels(ClockTicks(59.0, 61.0, 5)), "0:59.0 0:59.5 1:00.0 1:00.5 1:01.0 ");
    EXPECT_EQ(Labels(ClockTicks(3590.0, 3610.0, 2)), "59:50 1:00:00 1:00:10 ");
    // From the last beat of the bar ahead of the song; 120 BPM for a second, then 60.
    TempoMap song(1000.0, 120.0, -1.0);
    song.Change(1000, 60.0);
    const Meter waltz = Meter::Read("3/4").value();
    EXPECT_EQ(Labels(BarTicks(song, waltz, 0.0, 4.0, 20)), "0:3 1 1:2 1:3 2 2:2 ");
    EXPECT_EQ(Labels(BarTicks(song, waltz, 0.0, 14.0, 4)), "1 3 5 ");
    EXPECT_NEAR(BarTicks(song, waltz, 0.0, 14.0, 4)[1].value, 6.0, 1.0e-9);
}

}  // namespace
}  // namespace Quorvan::Tools
