#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>

#include "effects/NoteValues.h"
#include "effects/TankLengths.h"
#include "plugins/ui/panels/EffectViews.h"

namespace Quorvan::Ui {

namespace {

constexpr Type kSmallDim{Theme::kSmall, Theme::kDim};
constexpr size_t kMostEchoes = 24;
constexpr double kFaint = 0.04;          // level of the last echo that is drawn
constexpr double kLongestSynced = 4.0;   // seconds
constexpr double kTapeLoopGain = 0.915;  // at an intensity of 100 %
constexpr double kTapeWidest = 0.2;      // of the time, at full offset
constexpr double kTapeShortest = 0.01;   // seconds of a synced tape
constexpr double kLateVoice = 5.0;       // milliseconds of each voice behind the one before

struct Echo {
    double seconds = 0.0;
    double left = 0.0, right = 0.0;  ///< levels
    double semitones = 0.0;
};

double NoteSeconds(uint32_t note, double tempo) {
    return 240.0 / std::max(tempo, 1.0) *
           static_cast<double>(
               dsp::kNoteValues[std::min<size_t>(note, dsp::kNoteValues.size() - 1)]);
}

double TypeFactor(uint32_t type) { return type == 2 ? 2.0 / 3.0 : type == 3 ? 1.5 : 1.0; }

/// Notes that last too long give way to shorter ones.
double EchoSeconds(uint32_t type, double value, double tempo) {
    if (type == 0)
        return 0.001 * value;
    auto note = static_cast<uint32_t>(value);
    while (note > 0 && NoteSeconds(note, tempo) * TypeFactor(type) > kLongestSynced)
        --note;
    return NoteSeconds(note, tempo) * TypeFactor(type);
}

double TapeSeconds(uint32_t type, double value, double tempo) {
    if (type == 0)
        return 0.001 * value;
    return std::clamp(NoteSeconds(static_cast<uint32_t>(value), tempo), kTapeShortest,
                      kLongestSynced) *
           TypeFactor(type);
}

/// The next of 1, 2, 5, 10 ... of a unit.
double RoundSpan(double least) {
    const double unit = std::pow(10.0, std::floor(std::log10(std::max(least, 1e-3))));
    for (const double step : {1.0, 2.0, 3.0, 5.0})
        if (least <= step * unit * 1.0001)
            return step * unit;
    return 10.0 * unit;
}

std::string SpanText(double seconds) {
    char text[24];
    if (seconds < 1.0)
        std::snprintf(text, sizeof text, "%.0f ms", 1000.0 * seconds);
    else
        std::snprintf(text, sizeof text, "%.0f s", seconds);
    return text;
}

void DrawSpan(Painter& painter, const Rect& inner, double span) {
    painter.Text({inner.Right() - 60.0, inner.Bottom() - 11.0, 60.0, 13.0}, SpanText(span),
                 kSmallDim, Align::Right);
}

double SpanOf(const std::vector<Echo>& echoes) {
    double last = 0.01;
    for (const Echo& echo : echoes)
        if (std::max(echo.left, echo.right) >= kFaint)
            last = std::max(last, echo.seconds);
    return RoundSpan(1.05 * last);
}

void DrawEchoes(Painter& painter, const Rect& inner, const std::vector<Echo>& echoes) {
    const double span = SpanOf(echoes), middle = inner.Centre().y;
    const double reach = 0.5 * inner.height - 1.0;
    painter.Fill({inner.x, painter.Snap(middle), inner.width, 1.0}, Theme::kLine);
    painter.Fill({inner.x, middle - reach, 2.0, 2.0 * reach}, Theme::kDim.Faded(0.6));
    for (const Echo& echo : echoes) {
        const double x = inner.x + inner.width * echo.seconds / span;
        if (x > inner.Right())
            continue;
        const double up = reach * std::min(1.0, echo.left),
                     down = reach * std::min(1.0, echo.right);
        painter.Fill({x - 1.0, middle - up, 2.5, up}, Theme::kOn);
        painter.Fill({x - 1.0, middle + 1.0, 2.5, down}, Theme::kOn.Faded(0.7));
    }
    DrawSpan(painter, inner, span);
}

/// Each side goes round by itself.
std::vector<Echo> SideBySide(double seconds, double later, double feedback) {
    std::vector<Echo> echoes;
    double level = 1.0;
    for (size_t i = 1; i <= kMostEchoes && level >= kFaint; ++i, level *= feedback) {
        echoes.push_back({seconds * static_cast<double>(i), level, 0.0});
        echoes.push_back({seconds * later * static_cast<double>(i), 0.0, level});
    }
    return echoes;
}

/// Half of both sides' sum goes to the left line, from there to the right one, and back.
std::vector<Echo> ToAndFro(double seconds, double apart, double feedback) {
    std::vector<Echo> echoes;
    const double own = 0.5 + 0.5 * apart, other = 0.5 - 0.5 * apart;
    double level = 1.0;
    for (size_t i = 0; i < kMostEchoes / 2 && level >= kFaint; ++i, level *= feedback) {
        const double first = seconds * (2.0 * static_cast<double>(i) + 1.0);
        echoes.push_back({first, own * level, other * level});
        echoes.push_back({first + seconds, other * level, own * level});
    }
    return echoes;
}

/// Delays of voices over one round of their sway.
void DrawVoices(Painter& painter, const Rect& inner, double delay, double depth, uint32_t voices,
                bool stereo, bool triangle) {
    constexpr size_t kPoints = 65;
    depth = std::clamp(depth, 0.0, delay);
    const double longest =
        RoundSpan(0.001 * std::max(1.0, delay + depth + kLateVoice * (voices - 1))) * 1000.0;
    const auto swing = [triangle](double turns) {
        turns -= std::floor(turns);
        return triangle ? (turns < 0.25   ? 4.0 * turns
                           : turns < 0.75 ? 2.0 - 4.0 * turns
                                          : 4.0 * turns - 4.0)
                        : std::sin(2.0 * std::numbers::pi * turns);
    };
    painter.Fill({inner.x, painter.Snap(inner.Bottom()), inner.width, 1.0}, Theme::kLine);
    for (uint32_t voice = 0; voice < voices; ++voice)
        for (const uint32_t side : {1u, 0u}) {
            if (side == 1 && !stereo)
                continue;
            std::vector<Point> line;
            for (size_t i = 0; i < kPoints; ++i) {
                const double round = static_cast<double>(i) / (kPoints - 1);
                const double phase = round + static_cast<double>(voice) / voices + 0.25 * side;
                const double ms = delay + depth * swing(phase) + kLateVoice * voice;
                line.push_back(
                    {inner.x + inner.width * round, inner.Bottom() - inner.height * ms / longest});
            }
            painter.Path(line, Theme::kOn.Faded(side == 0 ? 1.0 : 0.45), side == 0 ? 2.0 : 1.5);
        }
    painter.Text({inner.Right() - 60.0, inner.y - 2.0, 60.0, 13.0}, SpanText(0.001 * longest),
                 kSmallDim, Align::Right);
}

}  // namespace

void DrawDelay(const EffectNow& now, Painter& painter, const Rect& inner) {
    const double seconds = std::clamp(
        EchoSeconds(now.Choice(0), now.values[1], now.tempo) + 0.001 * now.values[2], 0.002, 4.0);
    const double feedback = 0.01 * now.values[3];
    DrawEchoes(painter, inner,
               now.Choice(4) == 0 ? SideBySide(seconds, 1.0 + 0.01 * now.values[5], feedback)
                                  : ToAndFro(seconds, 0.01 * now.values[6], feedback));
}

void DrawTapeEcho(const EffectNow& now, Painter& painter, const Rect& inner) {
    const double seconds = std::max(
        0.001, TapeSeconds(now.Choice(0), now.values[1], now.tempo) + 0.001 * now.values[2]);
    const double feedback = kTapeLoopGain * 0.01 * now.values[3];
    DrawEchoes(painter, inner,
               now.Choice(4) == 0
                   ? SideBySide(seconds, 1.0 + kTapeWidest * 0.01 * now.values[5], feedback)
                   : ToAndFro(seconds, 0.01 * now.values[6], feedback));
}

/// In the octave modes a second shifter makes up every other echo to the octave.
void DrawOctaver(const EffectNow& now, Painter& painter, const Rect& inner) {
    const double seconds = std::max(0.001, EchoSeconds(now.Choice(0), now.values[1], now.tempo));
    const double shift = now.values[3] + 0.01 * now.values[5];
    const double octave = now.Choice(4) == 1 ? 12.0 : -12.0;
    std::vector<Echo> echoes;
    double level = 1.0;
    for (uint32_t i = 1; i <= kMostEchoes && level >= kFaint; ++i, level *= 0.01 * now.values[2]) {
        const uint32_t pairs = i / 2;
        const double pitch =
            now.Choice(4) == 0 ? shift * i : octave * pairs + (i % 2 == 1 ? shift : 0.0);
        echoes.push_back({seconds * i, level, level, pitch});
    }
    const double span = SpanOf(echoes), base = inner.Bottom() - 14.0;
    painter.Fill({inner.x, painter.Snap(base), inner.width, 1.0}, Theme::kLine);
    double written = inner.x - 40.0;
    for (const Echo& echo : echoes) {
        const double x = inner.x + inner.width * echo.seconds / span;
        const double height = (base - inner.y) * std::min(1.0, echo.left);
        painter.Fill({x - 1.5, base - height, 3.0, height}, Theme::Pitch(echo.semitones));
        if (x - written < 30.0 || x + 15.0 > inner.Right() - 36.0)
            continue;
        written = x;
        char text[16];
        std::snprintf(text, sizeof text, "%+.0f", echo.semitones);
        painter.Text({x - 15.0, base + 2.0, 30.0, 13.0}, text, kSmallDim, Align::Centre);
    }
    DrawSpan(painter, inner, span);
}

void DrawSway(const EffectNow& now, Painter& painter, const Rect& inner) {
    DrawVoices(painter, inner, now.values[0], now.values[1], std::max(1u, now.Choice(2)),
               now.Choice(3) != 0, now.Choice(4) == 1);
}

/// The delay that is set is the shortest one.
void DrawComb(const EffectNow& now, Painter& painter, const Rect& inner) {
    DrawVoices(painter, inner, now.values[0] + now.values[1], now.values[1],
               std::max(1u, now.Choice(2)), now.Choice(3) != 0, false);
}

/// Half a round of the tank keeps the share of the decay; its low-pass takes treble besides.
void DrawReverb(const EffectNow& now, Painter& painter, const Rect& inner) {
    constexpr double kRange = 60.0, kTreble = 5000.0;  // decibels, hertz
    using Tank = dsp::TankLengths;
    const double rate = static_cast<double>(Tank::kReferenceRate);
    const auto length = [rate](size_t place) {
        return static_cast<double>(Tank::kBase[place]) / rate;
    };
    const double half = (length(4) + length(5) + length(8) + length(9)) * now.values[1];
    const double keep = std::clamp(0.01 * now.values[0], 1e-3, 0.9999);
    const double damp = 0.01 * now.values[3];
    const double treble =
        (1.0 - damp) / std::abs(1.0 - std::polar(damp, -2.0 * std::numbers::pi * kTreble / rate));
    const bool frozen = now.Choice(4) != 0;
    const double fall = frozen ? 0.0 : 20.0 * std::log10(keep) / half;  // decibels a second
    const double fallAbove = frozen ? 0.0 : 20.0 * std::log10(std::max(keep * treble, 1e-4)) / half;
    const double lasts = frozen ? 10.0 : now.values[2] - kRange / fall;
    const double span = RoundSpan(std::max(0.1, lasts));
    const auto at = [&](double seconds, double decibels) {
        return Point{inner.x + inner.width * seconds / span,
                     inner.y + inner.height * std::clamp(-decibels / kRange, 0.0, 1.0)};
    };
    const auto end = [&](double slope) {
        return slope == 0.0 ? span : now.values[2] - kRange / slope;
    };
    const std::vector<Point> line{at(now.values[2], 0.0),
                                  at(end(fall), fall == 0.0 ? 0.0 : -kRange)};
    painter.Area(line, inner.Bottom(), Theme::kOn.Faded(0.15));
    painter.Path(line, Theme::kOn, 2.0);
    painter.Line(line.front(), at(end(fallAbove), fallAbove == 0.0 ? 0.0 : -kRange),
                 Theme::kOn.Faded(0.6));
    if (now.Choice(5) != 0)
        for (const double place : {0.0, 592.0, 1054.0, 1232.0, 2059.0, 2649.0})
            painter.Fill({at(0.01 * now.values[6] * place / rate, 0.0).x, inner.y + 4.0, 1.0,
                          inner.height - 4.0},
                         Theme::kDim);
    DrawSpan(painter, inner.Shifted(0.0, -inner.height + 12.0), span);
    if (frozen)
        painter.Text({inner.x, inner.Bottom() - 13.0, 60.0, 13.0}, "frozen", kSmallDim);
}

}  // namespace Quorvan::Ui
