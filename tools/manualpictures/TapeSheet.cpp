#include "tools/manualpictures/TapeSheet.h"

#include "tools/picture/GrainPanel.h"
#include "tools/picture/TimeTicks.h"
#include "tools/support/AtomicOutput.h"

namespace Quorvan::Tools {

namespace {

constexpr int kWidth = 860;  // pixels
constexpr double kLeft = 86.0;
constexpr double kAcross = 750.0;
constexpr double kTop = 40.0;
constexpr double kHeight = 150.0;  // of a panel
constexpr double kPitch = 190.0;   // from one to the next
constexpr double kFoot = 46.0;
constexpr Canvas::Type kNames{13.0, false, Palette::kInk};

}  // namespace

TapeSheet::TapeSheet(size_t rows, double seconds)
    : count(rows),
      time{Axis(0.0, seconds), ClockTicks(0.0, seconds, 8), {}},
      page(kWidth, static_cast<int>(kTop + kPitch * static_cast<double>(rows) - (kPitch - kHeight) +
                                    kFoot + 8.0)) {
    DrawKey();
}

void TapeSheet::DrawKey() {
    const double y = kTop - 13.0;
    const double right = kLeft + kAcross;
    page.Text(right, y + 4.5, "write head", kNames, Canvas::Align::Right);
    page.Line(right - 98.0, y, right - 78.0, y, Palette::kHead, 2.0);
    page.Text(right - 114.0, y + 4.5, "grain, start to end", kNames, Canvas::Align::Right);
    page.Line(right - 254.0, y + 5.0, right - 234.0, y - 5.0, Palette::kInk, 2.0);
    page.HalfDisc(right - 254.0, y + 5.0, 4.0, false, Palette::kInk);
    page.HalfDisc(right - 254.0, y + 5.0, 4.0, true, Palette::kInk);
}

Panel TapeSheet::Add(const std::string& title, const Take& take) {
    const Box place{kLeft, kTop + kPitch * static_cast<double>(next++), kAcross, kHeight};
    const Panel frame(page, place, time, Axis(0.0, GrainPanel::TapeSeconds(take.Data())));
    GrainPanel(frame, take.Data()).Draw(title);
    if (next < count)  // the time axis of the lowest does for all
        page.Fill({0.0, place.Bottom() + 7.0, kWidth, kPitch - kHeight + 9.0}, Palette::kPage);
    return frame;
}

void TapeSheet::Save(const std::string& file) const {
    AtomicOutput output(file, true);
    page.Save(output);
    output.Commit();
}

}  // namespace Quorvan::Tools
