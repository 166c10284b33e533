#include "tools/picture/SpectrogramPanel.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Quorvan::Tools {

namespace {

constexpr double kRange = 80.0;       // dB from the darkest colour to the lightest
constexpr double kLowestTop = -60.0;  // dB
constexpr size_t kLegendTicks = 9;
constexpr Canvas::Type kNumbers{13.0, false, Palette::kQuietInk};
constexpr Canvas::Type kNames{13.0, false, Palette::kInk};

/// The loudest level, rounded up to a ten.
double TopOf(const Spectrogram& spectrogram) {
    float loudest = -120.0f;
    for (size_t column = 0; column < spectrogram.Columns(); ++column) {
        for (size_t row = 0; row < spectrogram.Rows(); ++row)
            loudest = std::max(loudest, spectrogram.Level(column, row));
    }
    return std::max(kLowestTop, 10.0 * std::ceil(0.1 * static_cast<double>(loudest)));
}

uint32_t Pixel(const Colour& colour) {
    const auto byte = [](double share) {
        return static_cast<uint32_t>(std::lround(share * 255.0));
    };
    return byte(colour.red) << 16 | byte(colour.green) << 8 | byte(colour.blue);
}

}  // namespace

SpectrogramPanel::SpectrogramPanel(const Panel& frame, const Spectrogram& levels, double rate)
    : panel(frame),
      spectrogram(levels),
      sampleRate(rate),
      topDb(TopOf(levels)),
      floorDb(topDb - kRange) {}

float SpectrogramPanel::LevelAt(double fromSeconds, double toSeconds, double height) const {
    const double columnsPerSecond = sampleRate / static_cast<double>(spectrogram.FramesPerColumn());
    const double middle = 0.5 * (fromSeconds + toSeconds) * columnsPerSecond;
    const size_t most = spectrogram.Columns() - 1;
    const double row = height * static_cast<double>(spectrogram.Rows() - 1);
    const auto below = static_cast<size_t>(row);
    const size_t above = std::min(below + 1, spectrogram.Rows() - 1);
    const auto rowShare = static_cast<float>(row - static_cast<double>(below));
    const auto inColumn = [&](size_t column) {
        const float low = spectrogram.Level(column, below);
        return low + rowShare * (spectrogram.Level(column, above) - low);
    };
    // Many columns to a pixel: the loudest. Fewer: between two of them.
    const auto first = std::min(static_cast<size_t>(fromSeconds * columnsPerSecond), most);
    const auto last = std::min(static_cast<size_t>(toSeconds * columnsPerSecond), most);
    if (last > first + 1) {
        float loudest = inColumn(first);
        for (size_t column = first + 1; column < last; ++column)
            loudest = std::max(loudest, inColumn(column));
        return loudest;
    }
    const auto left = std::min(static_cast<size_t>(middle), most);
    const float share = static_cast<float>(middle - std::floor(middle));
    const float here = inColumn(left);
    return here + share * (inColumn(std::min(left + 1, most)) - here);
}

void SpectrogramPanel::DrawLevels() const {
    const Box& box = panel.Area();
    if (spectrogram.Columns() == 0)
        return;
    const auto width = static_cast<int>(box.width);
    const auto height = static_cast<int>(box.height);
    cairo_surface_t* const image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_surface_flush(image);
    unsigned char* const data = cairo_image_surface_get_data(image);
    const int stride = cairo_image_surface_get_stride(image);
    const double secondsPerPixel = (panel.Time().High() - panel.Time().Low()) / box.width;
    for (int y = 0; data != nullptr && y < height; ++y) {
        auto* const line = reinterpret_cast<uint32_t*>(data + static_cast<ptrdiff_t>(y) * stride);
        const double up = 1.0 - (y + 0.5) / height;
        for (int x = 0; x < width; ++x) {
            const float level = LevelAt(x * secondsPerPixel, (x + 1) * secondsPerPixel, up);
            line[x] = Pixel(HeatColour(Share(static_cast<double>(level))));
        }
    }
    cairo_surface_mark_dirty(image);
    cairo_set_source_surface(panel.Page().Context(), image, box.x, box.y);
    cairo_paint(panel.Page().Context());
    cairo_surface_destroy(image);
}

void SpectrogramPanel::Draw(const std::string& title) const {
    panel.Page().ClipTo(panel.Area());
    DrawLevels();
    panel.Page().ClipNothing();
    panel.DrawFrame(title, "Frequency (Hz)", 0, false);
}

void SpectrogramPanel::DrawLegend(double x) const {
    Canvas& page = panel.Page();
    const Box bar{x, panel.Area().y + 26.0, 18.0, panel.Area().height - 32.0};
    page.Text(x, panel.Area().y + 10.0, "Level (dB)", kNames);
    page.ColourBar(bar, HeatColour);
    const Axis levels(floorDb, topDb);
    for (const Tick& tick : levels.Ticks(kLegendTicks)) {
        const double y = bar.Bottom() - bar.height * levels.Place(tick.value);
        page.Line(bar.Right(), y, bar.Right() + 5.0, y, Palette::kFrame);
        page.Text(bar.Right() + 10.0, y + 4.5, tick.label, kNumbers);
    }
}

}  // namespace Quorvan::Tools
