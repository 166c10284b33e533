#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Quorvan::Ui {

/// What reaches a control besides its user.
struct Influence {
    struct Route {
        uint32_t source = 0;
        float amount = 0.0f;  ///< -1..1 of the control's travel
    };
    std::array<Route, 7> routes{};
    uint32_t count = 0;
    float present = 0.0f;  ///< position with all that on top; where count is 0, the control's own

    bool operator==(const Influence& other) const {
        if (count != other.count || present != other.present)
            return false;
        for (uint32_t i = 0; i < count; ++i)
            if (routes[i].source != other.routes[i].source ||
                routes[i].amount != other.routes[i].amount)
                return false;
        return true;
    }
};

/// Something that a widget shows and moves, in positions 0..1.
class Control {
public:
    virtual ~Control() = default;

    virtual float Position() const = 0;
    virtual float Default() const { return 0.0f; }
    /// Number of settings; 0 where they are continuous.
    virtual uint32_t Steps() const { return 0; }
    virtual std::span<const std::string> Choices() const { return {}; }
    virtual std::string Name() const = 0;
    /// The position as people read it.
    virtual std::string Text() const = 0;
    /// What it does, in a sentence.
    virtual std::string Help() const { return {}; }

    /// A gesture: Move between these two is one step for hosts and undo.
    virtual void Begin() {}
    virtual void Move(float position) = 0;
    virtual void End() {}
    /// Takes a text; answers a sentence where it means nothing here.
    virtual std::string Type(std::string_view text) = 0;

    /// Row of the modulation that reaches it.
    virtual std::optional<uint32_t> Row() const { return {}; }
    virtual Influence Influences() const { return {}; }
    virtual void Route(uint32_t /*source*/, float /*amount*/) {}
    /// Around the moves of an amount that are one step.
    virtual void BeginRoute(uint32_t /*source*/) {}
    virtual void EndRoute() {}
    virtual void Unroute(uint32_t /*source*/) {}
    /// Index of the parameter behind it, for MIDI and free controls.
    virtual std::optional<uint32_t> Index() const { return {}; }

    /// Position of a choice.
    float PositionOfChoice(uint32_t choice) const {
        const uint32_t steps = Steps();
        return steps > 1 ? static_cast<float>(choice) / static_cast<float>(steps - 1) : 0.0f;
    }
    /// The nearest position that it can take.
    float Held(double position) const {
        const double highest = Steps() > 1 ? Steps() - 1.0 : 0.0;
        position = std::clamp(position, 0.0, 1.0);
        return static_cast<float>(highest > 0.0 ? std::round(position * highest) / highest
                                                : position);
    }
    /// Where a share of the travel leads, with fine a tenth of it; to the next choice where it has
    /// some.
    float Nudged(double share, bool fine) const {
        const uint32_t steps = Steps();
        const double step =
            steps > 1 ? std::copysign(1.0 / (steps - 1), share) : share * (fine ? 0.1 : 1.0);
        return Held(static_cast<double>(Position()) + step);
    }
    void MoveOnce(float position) {
        Begin();
        Move(position);
        End();
    }
    uint32_t Choice() const {
        const uint32_t steps = Steps();
        if (steps < 2)
            return 0;
        // As the processor reads it: equal shares of the travel.
        const auto step = static_cast<uint32_t>(Position() * static_cast<float>(steps));
        return step < steps ? step : steps - 1;
    }
};

}  // namespace Quorvan::Ui
