#include "tools/picture/GrainDensity.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "tools/picture/GrainPath.h"

namespace Quorvan::Tools {

namespace {

constexpr double kLineWidth = 1.6;  // pixels, of a grain drawn by itself

/// A pixel as cairo holds it: premultiplied by its opacity.
uint32_t Pixel(const Colour& colour, double opacity) {
    const auto byte = [](double share) {
        return static_cast<uint32_t>(std::lround(share * 255.0));
    };
    return byte(opacity) << 24 | byte(colour.red * opacity) << 16 |
           byte(colour.green * opacity) << 8 | byte(colour.blue * opacity);
}

}  // namespace

GrainDensity::GrainDensity(const Panel& frame, double rate, double pitchRange)
    : panel(frame),
      sampleRate(rate),
      range(pitchRange),
      width(static_cast<size_t>(frame.Area().width)),
      height(static_cast<size_t>(frame.Area().height)),
      cells(width * height) {}

double GrainDensity::Crowd(const std::vector<Host::GrainStart>& grains, double rate,
                           const Panel& panel) {
    double length = 0.0;
    for (const Host::GrainStart& grain : grains)
        ForEachStroke(grain, rate, [&](double s0, double p0, double s1, double p1) {
            length += std::hypot(panel.X(s1) - panel.X(s0), panel.Y(p1) - panel.Y(p0));
        });
    return length * kLineWidth / (panel.Area().width * panel.Area().height);
}

double GrainDensity::Strength(double share) {
    // Logarithmic, so that few grains still show beside many.
    constexpr double kDepth = 30.0;
    return std::log1p(kDepth * std::clamp(share, 0.0, 1.0)) / std::log1p(kDepth);
}

void GrainDensity::Add(const Host::GrainStart& grain) {
    const auto weight = static_cast<float>(std::max(0.05, SideLevel(grain)));
    const Box& box = panel.Area();
    ForEachStroke(grain, sampleRate, [&](double s0, double p0, double s1, double p1) {
        AddStroke(panel.X(s0) - box.x, panel.Y(p0) - box.y, panel.X(s1) - box.x,
                  panel.Y(p1) - box.y, weight, grain.semitones);
    });
}

void GrainDensity::AddStroke(double x0, double y0, double x1, double y1, float weight,
                             float pitch) {
    const double length = std::hypot(x1 - x0, y1 - y0);
    const double most = 4.0 * static_cast<double>(width + height);
    const auto steps = static_cast<uint32_t>(std::clamp(std::ceil(length), 1.0, most));
    // A piece shorter than a pixel weighs less than a whole one.
    const auto share = static_cast<float>(std::min(1.0, length / steps));
    for (uint32_t n = 0; n < steps; ++n)
        Put(x0 + (x1 - x0) * (n + 0.5) / steps, y0 + (y1 - y0) * (n + 0.5) / steps, weight * share,
            pitch);
}

/// Over the four pixels around the point, by their nearness, so that no steps show.
void GrainDensity::Put(double x, double y, float weight, float pitch) {
    const double left = std::floor(x - 0.5), top = std::floor(y - 0.5);
    for (const double column : {left, left + 1.0}) {
        for (const double row : {top, top + 1.0}) {
            if (column < 0.0 || row < 0.0 || column >= static_cast<double>(width) ||
                row >= static_cast<double>(height))
                continue;
            const double near =
                (1.0 - std::abs(x - 0.5 - column)) * (1.0 - std::abs(y - 0.5 - row));
            Cell& cell = cells[static_cast<size_t>(row) * width + static_cast<size_t>(column)];
            const float part = weight * static_cast<float>(near);
            cell.weight += part;
            cell.pitch += part * pitch;
        }
    }
}

/// All but the densest thousandth, so that a single spot leaves the rest its colour.
float GrainDensity::Densest() const {
    std::vector<float> weights;
    for (const Cell& cell : cells)
        if (cell.weight > 0.0f)
            weights.push_back(cell.weight);
    if (weights.empty())
        return 1.0f;
    const auto place = static_cast<std::ptrdiff_t>((weights.size() - 1) * 999 / 1000);
    std::nth_element(weights.begin(), weights.begin() + place, weights.end());
    return weights[static_cast<size_t>(place)];
}

void GrainDensity::Draw() const {
    cairo_surface_t* const image = cairo_image_surface_create(
        CAIRO_FORMAT_ARGB32, static_cast<int>(width), static_cast<int>(height));
    cairo_surface_flush(image);
    unsigned char* const data = cairo_image_surface_get_data(image);
    const int stride = cairo_image_surface_get_stride(image);
    const auto densest = static_cast<double>(Densest());
    for (size_t y = 0; data != nullptr && y < height; ++y) {
        auto* const line = reinterpret_cast<uint32_t*>(data + static_cast<ptrdiff_t>(y) * stride);
        for (size_t x = 0; x < width; ++x) {
            const Cell& cell = cells[y * width + x];
            const double pitch =
                cell.weight > 0.0f ? static_cast<double>(cell.pitch / cell.weight) : 0.0;
            line[x] = Pixel(PitchColour(pitch, range),
                            Strength(static_cast<double>(cell.weight) / densest));
        }
    }
    cairo_surface_mark_dirty(image);
    cairo_t* const context = panel.Page().Context();
    cairo_set_source_surface(context, image, panel.Area().x, panel.Area().y);
    cairo_paint(context);
    cairo_surface_destroy(image);
}

}  // namespace Quorvan::Tools
