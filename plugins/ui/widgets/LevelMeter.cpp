#include "plugins/ui/widgets/LevelMeter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace Quorvan::Ui {

namespace {

constexpr double kBottom = -60.0, kTop = 6.0;
constexpr double kFall = 30.0;  ///< decibels a second

double ShareOf(float level) {
    const double decibels = 20.0 * std::log10(std::max(1e-5, static_cast<double>(level)));
    return std::clamp((decibels - kBottom) / (kTop - kBottom), 0.0, 1.0);
}

constexpr double kZero = -kBottom / (kTop - kBottom);

}  // namespace

LevelMeter::LevelMeter(const Rect& place, std::string itsLabel,
                       std::function<std::array<float, 2>()> levelsNow)
    : Widget(place), label(std::move(itsLabel)), levels(std::move(levelsNow)) {}

bool LevelMeter::Tick(double seconds) {
    const double fall = kFall / (kTop - kBottom) * std::clamp(seconds - last, 0.0, 1.0);
    last = seconds;
    const std::array<float, 2> now = levels();
    std::array<int, 4> next{};
    for (size_t side = 0; side < 2; ++side) {
        shares[side] = std::max(ShareOf(now[side]), shares[side] - fall);
        if (shares[side] >= held[side] || seconds - heldSince[side] > 2.0) {
            held[side] = shares[side];
            heldSince[side] = seconds;
        }
        next[side] = static_cast<int>(shares[side] * box.width * 2.0);
        next[side + 2] = static_cast<int>(std::lround(10.0 * (kTop - kBottom) * held[side]));
    }
    return std::exchange(drawn, next) != next;
}

void LevelMeter::Draw(Painter& painter) {
    painter.Text({box.x, box.y, 0.5 * box.width, 14.0}, label, {Theme::kSmall, Theme::kDim});
    const double highest = std::max(held[0], held[1]);
    if (highest > 0.0) {
        char text[32];
        std::snprintf(text, sizeof text, "%.1f dB", kBottom + (kTop - kBottom) * highest);
        painter.Text({box.x + 0.5 * box.width, box.y, 0.5 * box.width, 14.0}, text,
                     {Theme::kSmall, highest > kZero ? Theme::kAlarm : Theme::kText}, Align::Right);
    }
    for (size_t side = 0; side < 2; ++side) {
        const Rect bar{box.x, box.y + 17.0 + 5.0 * static_cast<double>(side), box.width, 4.0};
        painter.Fill(bar, Theme::kWell);
        const double share = shares[side];
        painter.Fill({bar.x, bar.y, bar.width * std::min(share, kZero), bar.height},
                     Theme::kOn.Faded(0.85));
        if (share > kZero)
            painter.Fill(
                {bar.x + bar.width * kZero, bar.y, bar.width * (share - kZero), bar.height},
                Theme::kAlarm);
        painter.Fill({bar.x + std::max(0.0, bar.width * held[side] - 1.5), bar.y, 1.5, bar.height},
                     held[side] > kZero ? Theme::kAlarm : Theme::kText);
    }
    const double zero = painter.Snap(box.x + box.width * kZero);
    painter.Fill({zero, box.y + 16.0, 1.0, 11.0}, Theme::kDim.Faded(0.6));
}

}  // namespace Quorvan::Ui
