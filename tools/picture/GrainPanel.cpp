#include "tools/picture/GrainPanel.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "tools/picture/GrainDensity.h"
#include "tools/picture/GrainPath.h"
#include "tools/support/Numbers.h"

namespace Quorvan::Tools {

namespace {

constexpr size_t kTapeTicks = 6;
constexpr double kCrowd = 1.5;        // lines over each other from which on density shows
constexpr double kFewGrains = 300.0;  // up to so many are drawn at full strength
constexpr double kThickest = 2.6;     // pixels, of a grain at full level
constexpr double kThinnest = 0.6;
constexpr Canvas::Type kNumbers{13.0, false, Palette::kQuietInk};
constexpr Canvas::Type kNames{13.0, false, Palette::kInk};

/// The smallest of a few round ranges that holds every pitch.
double PitchRange(const std::vector<Host::GrainStart>& grains) {
    double widest = 0.0;
    for (const Host::GrainStart& grain : grains)
        widest = std::max(widest, std::abs(static_cast<double>(grain.semitones)));
    constexpr double kTolerance = 0.02;  // a share of the range: detuned octaves are octaves
    for (const double range : {0.3, 1.5, 3.0, 6.0, 12.0, 24.0}) {
        if (widest <= range * (1.0 + kTolerance))
            return range;
    }
    return 36.0;
}

/// "+12", "0", with a true minus sign "-12". Narrow ranges have a decimal.
std::string PitchLabel(double semitones, double range) {
    if (std::abs(semitones) < 1.0e-6)
        return "0";
    const std::string sign = semitones > 0.0 ? "+" : "\xe2\x88\x92";
    return sign + Fixed(std::abs(semitones), range < 3.0 ? 1 : 0);
}

}  // namespace

double GrainPanel::TapeSeconds(const PictureData& data) {
    uint64_t longest = 0;
    for (const PictureData::Head& head : data.heads)
        longest = std::max(longest, head.tapeLength);
    return longest == 0 ? 1.0 : static_cast<double>(longest) / data.rate;
}

GrainPanel::GrainPanel(const Panel& frame, const PictureData& gathered)
    : panel(frame),
      data(gathered),
      isDense(GrainDensity::Crowd(gathered.grains.Kept(), gathered.rate, frame) *
                  static_cast<double>(gathered.grains.Stride()) >
              kCrowd),
      pitchRange(PitchRange(gathered.grains.Kept())) {
    const auto count = static_cast<double>(data.grains.Kept().size());
    const double crowd = std::max(1.0, count / kFewGrains);
    opacity = std::max(0.18, 0.9 / std::pow(crowd, 0.4));
    markSize = std::max(1.6, 4.5 / std::pow(crowd, 0.3));
}

void GrainPanel::DrawHead() const {
    // One piece of a course: place on the tape against time, both in frames.
    const auto stroke = [this](double frame0, double place0, double frame1, double place1) {
        panel.Page().Line(panel.X(frame0 / data.rate), panel.Y(place0 / data.rate),
                          panel.X(frame1 / data.rate), panel.Y(place1 / data.rate),
                          Palette::kHead.Faded(0.8), 1.6);
    };
    for (size_t i = 1; i < data.heads.size(); ++i) {
        const auto frame0 = static_cast<double>(data.heads[i - 1].frame);
        const auto frame1 = static_cast<double>(data.heads[i].frame);
        const auto place0 = static_cast<double>(data.heads[i - 1].writePosition);
        const auto place1 = static_cast<double>(data.heads[i].writePosition);
        const auto tape = static_cast<double>(data.heads[i].tapeLength);
        if (place1 >= place0) {
            stroke(frame0, place0, frame1, place1);
        } else if (tape - place0 < frame1 - frame0) {
            // Over the end of the tape and on from its start. Other ways back are jumps.
            stroke(frame0, place0, frame0 + tape - place0, tape);
            stroke(frame1 - place1, 0.0, frame1, place1);
        }
    }
}

void GrainPanel::DrawPath(const Host::GrainStart& grain, const Colour& colour, double width) const {
    ForEachStroke(grain, data.rate, [&](double s0, double p0, double s1, double p1) {
        panel.Page().Line(panel.X(s0), panel.Y(p0), panel.X(s1), panel.Y(p1), colour, width);
    });
}

double GrainPanel::MarkRadius(const Host::GrainStart& grain) const {
    return markSize * std::sqrt(SideLevel(grain));
}

void GrainPanel::DrawGrain(const Host::GrainStart& grain) const {
    const Colour colour =
        PitchColour(static_cast<double>(grain.semitones), pitchRange).Faded(opacity);
    const double level = SideLevel(grain);
    DrawPath(grain, colour, kThinnest + level * (kThickest - kThinnest));
    panel.Page().HalfDisc(panel.X(static_cast<double>(grain.frame) / data.rate),
                          panel.Y(static_cast<double>(grain.tapePosition) / data.rate),
                          MarkRadius(grain), grain.right, colour);
}

void GrainPanel::DrawGrains() const {
    const std::vector<Host::GrainStart>& grains = data.grains.Kept();
    if (!isDense) {
        for (const Host::GrainStart& grain : grains)
            DrawGrain(grain);
        return;
    }
    GrainDensity density(panel, data.rate, pitchRange);
    for (const Host::GrainStart& grain : grains)
        density.Add(grain);
    density.Draw();
}

void GrainPanel::Draw(const std::string& title) const {
    panel.DrawGrid(kTapeTicks);
    panel.Page().ClipTo(panel.Area());
    DrawGrains();
    DrawHead();
    panel.Page().ClipNothing();
    panel.DrawFrame(title, "Place on the tape (s)", kTapeTicks, true);
}

double GrainPanel::DrawPitchBar(double x, double y, double height) const {
    Canvas& page = panel.Page();
    page.Text(x, y, "Pitch (semitones)", kNames);
    const Box bar{x, y + 14.0, 18.0, height};
    page.ColourBar(bar, [](double share) { return PitchColour(2.0 * share - 1.0, 1.0); });
    for (const double share : {-1.0, -2.0 / 3.0, -1.0 / 3.0, 0.0, 1.0 / 3.0, 2.0 / 3.0, 1.0}) {
        const double at = bar.y + 0.5 * bar.height * (1.0 - share);
        page.Line(bar.Right(), at, bar.Right() + 5.0, at, Palette::kFrame);
        page.Text(bar.Right() + 10.0, at + 4.5, PitchLabel(share * pitchRange, pitchRange),
                  kNumbers);
    }
    return bar.Bottom() + 30.0;
}

void GrainPanel::DrawMarkLegend(double x, double y) const {
    Canvas& page = panel.Page();
    constexpr double kRadius = 7.0;
    const auto row = [&](int number) { return y + 23.0 * number; };
    const auto name = [&](int number, const std::string& text) {
        page.Text(x + 62.0, row(number) + 4.5, text, kNames);
    };
    page.Line(x + 6.0, row(0) + 5.0, x + 44.0, row(0) - 5.0, Palette::kInk, 1.8);
    name(0, "grain, start to end");
    page.Line(x + 6.0, row(1), x + 24.0, row(1), Palette::kInk, kThinnest);
    page.Line(x + 26.0, row(1), x + 44.0, row(1), Palette::kInk, kThickest);
    name(1, "quiet, loud");
    const auto pan = [&](double at, double left, double right) {
        page.HalfDisc(at, row(2), kRadius * std::sqrt(left), false, Palette::kInk);
        page.HalfDisc(at, row(2), kRadius * std::sqrt(right), true, Palette::kInk);
    };
    pan(x + 7.0, 1.0, 0.12);
    pan(x + 26.0, 1.0, 1.0);
    pan(x + 44.0, 0.12, 1.0);
    name(2, "pan left, centre, right");
    page.Line(x + 6.0, row(3), x + 44.0, row(3), Palette::kHead, 1.6);
    name(3, "write head");
    if (data.grains.Stride() > 1)
        page.Text(x, row(4) + 4.5, "1 pair in " + std::to_string(data.grains.Stride()) + " drawn",
                  kNumbers);
}

void GrainPanel::DrawDensityLegend(double x, double y) const {
    Canvas& page = panel.Page();
    page.Text(x, y + 4.5, "Grains at once", kNames);
    constexpr int kSteps = 130;
    for (int i = 0; i < kSteps; ++i)
        page.Fill({x + i, y + 15.0, 1.0, 14.0},
                  Palette::kInk.Faded(GrainDensity::Strength((i + 0.5) / kSteps)));
    page.Outline({x, y + 15.0, kSteps, 14.0}, Palette::kFrame);
    page.Text(x, y + 45.0, "few", kNumbers);
    page.Text(x + kSteps, y + 45.0, "many", kNumbers, Canvas::Align::Right);
    page.Line(x + 6.0, y + 69.0, x + 44.0, y + 69.0, Palette::kHead, 1.6);
    page.Text(x + 62.0, y + 73.5, "write head", kNames);
    if (data.grains.Stride() > 1)
        page.Text(x, y + 98.0, "1 pair in " + std::to_string(data.grains.Stride()) + " counted",
                  kNumbers);
}

void GrainPanel::DrawLegend(double x) const {
    const double y = panel.Area().y + 10.0;
    const double marks = DrawPitchBar(x, y, panel.Area().height - 165.0);
    isDense ? DrawDensityLegend(x, marks) : DrawMarkLegend(x, marks);
}

}  // namespace Quorvan::Tools
