// Where grains' heads go in one block, in the vectors of one instruction set. Included once for
// each set.
#if defined(QUORVAN_GRAIN_COURSES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVAN_GRAIN_COURSES_INL_H
#undef QUORVAN_GRAIN_COURSES_INL_H
#else
#define QUORVAN_GRAIN_COURSES_INL_H
#endif

#include <cstddef>
#include <cstdint>

#include "granular/GrainVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp {
namespace HWY_NAMESPACE {

/// How fast a head is, as far as it decides on the reader. At Any others cannot hold its places.
enum Pace : int32_t { kUnit, kSlow, kFaster, kFast, kFastest, kAny, kPaces };

/// Binary digits that fixed-point places have below 1: those of single precision. What a position
/// has beyond them stays with its lane, as long as the step of a whole vector has nothing there, so
/// that the sum of both is the position's fraction, rounded once.
constexpr int kDigits = 24;
constexpr double kOne = 0x1p24;
/// Keeps the places of a first vector above 0.
constexpr double kBias = 64.0;
/// As far as a vector's step may go, so that a byte holds the places of its lanes.
constexpr double kReach = 64.0;
/// Positions behind this have 46 digits below 1 at most, and windows find room before them.
constexpr double kNear = 128.0;

/// Up to this speed heads are read by windows, where there are any.
#if HWY_TARGET <= HWY_AVX2
constexpr double kWindows = 4.0;
#else
constexpr double kWindows = 0.0;
#endif

/// The courses of some heads, a property of all side by side. What cannot be held is for kAny.
struct Courses {
    // A head's places are tape + whole - kBias + fixed / 2^kDigits.
    HWY_ALIGN double from[GrainKernels::kVoices];  ///< first fixed one of the first lane
    HWY_ALIGN double step[GrainKernels::kVoices];  ///< its change a sample
    /// The same of the lane that windows are laid by, truncated. It is the first one, but of slow
    /// reversed heads the last, so that it is the lowest.
    HWY_ALIGN int32_t base[GrainKernels::kVoices];
    HWY_ALIGN int32_t move[GrainKernels::kVoices];  ///< change a vector
    HWY_ALIGN int32_t whole[GrainKernels::kVoices];
    HWY_ALIGN int32_t pace[GrainKernels::kVoices];  ///< a Pace
};

HWY_INLINE Doubles OneWhere(hn::Mask<DoubleTag> mask) {
    return hn::IfThenElseZero(mask, hn::Set(DoubleTag(), 1.0));
}

/// The courses of the heads of one vector from that number on, over frames samples each. Without
/// branches, as chance says how fast a head is.
HWY_INLINE void FillCourses(const double* position, const double* increment, const uint32_t* frames,
                            size_t at, Courses& courses) {
    const DoubleTag d;
    const HalfIntTag di;
    const auto constant = [](double x) HWY_ATTR { return hn::Set(DoubleTag(), x); };
    const auto lanes = static_cast<double>(hn::Lanes(FloatTag()));
    const Doubles start = hn::LoadU(d, position + at);
    const Doubles step = hn::LoadU(d, increment + at);
    const Doubles speed = hn::Abs(step);
    const auto count = hn::LoadU(hn::RebindToUnsigned<HalfIntTag>(), frames + at);
    const Doubles steps = hn::Sub(hn::PromoteTo(d, hn::BitCast(di, count)), constant(1.0));
    const Doubles way = hn::Mul(step, steps);
    const Doubles lowest = hn::Min(start, hn::Add(start, way));
    const auto whole = hn::DemoteTo(di, start);
    const Doubles fraction = hn::Sub(start, hn::PromoteTo(d, whole));
    const Doubles from = hn::Mul(hn::Add(fraction, constant(kBias)), constant(kOne));
    const Doubles fixedStep = hn::Mul(step, constant(kOne));
    const auto back = hn::And(hn::Lt(step, hn::Zero(d)), hn::Le(speed, constant(kWindows)));
    const Doubles last = hn::IfThenElseZero(back, constant(lanes - 1.0));
    hn::Store(from, d, courses.from + at);
    hn::Store(fixedStep, d, courses.step + at);
    hn::Store(hn::DemoteTo(di, hn::Add(from, hn::Mul(last, fixedStep))), di, courses.base + at);
    hn::Store(hn::DemoteTo(di, hn::Mul(fixedStep, constant(lanes))), di, courses.move + at);
    hn::Store(whole, di, courses.whole + at);

    const Doubles far = hn::Mul(speed, constant(lanes));
    const auto isHeld = hn::And(hn::And(hn::Ge(far, constant(0.5)), hn::Le(far, constant(kReach))),
                                hn::Ge(lowest, hn::Add(hn::Abs(way), constant(kNear))));
    const Doubles faster =
        hn::Add(OneWhere(hn::Gt(speed, constant(1.0))), OneWhere(hn::Gt(speed, constant(2.0))));
    const Doubles fastest = OneWhere(hn::Gt(speed, constant(4.0)));
    const Doubles pace = hn::Add(constant(kSlow), hn::Add(faster, fastest));
    const Doubles held = hn::IfThenElse(isHeld, pace, constant(kAny));
    const auto isUnit = hn::Eq(step, constant(1.0));
    hn::Store(hn::DemoteTo(di, hn::IfThenElse(isUnit, constant(kUnit), held)), di,
              courses.pace + at);
}

/// What a head's number in courses says, for a reader.
struct Course {
    const Courses& all;
    size_t number;
};

#if HWY_TARGET != HWY_SCALAR
/// The places of one head, a vector after the other.
class FixedPlaces {
public:
    HWY_INLINE FixedPlaces(const float* round, const Course& course)
        : tape(round), move(course.all.move[course.number]) {
        const DoubleTag d;
        const size_t n = course.number;
        const int64_t origin = course.all.whole[n] - static_cast<int64_t>(kBias);
        base = (origin << kDigits) + course.all.base[n];
        const Doubles start = hn::Set(d, course.all.from[n]);
        const Doubles increment = hn::Set(d, course.all.step[n]);
        const Doubles first = hn::Add(start, hn::Mul(hn::Iota(d, 0.0), increment));
        const auto half = static_cast<double>(hn::Lanes(d));
        const Doubles second = hn::Add(start, hn::Mul(hn::Iota(d, half), increment));
        const Places places = PlacesOf(first, second);
        position = places.whole;
        rest = places.fraction;
        step = hn::Set(IntTag(), static_cast<int32_t>(move));
    }

    /// The tape at the place of the lane that windows are laid by.
    HWY_INLINE const float* Window() const { return tape + (base >> kDigits); }
    /// The places' lowest bytes.
    HWY_INLINE Ints Bytes() const { return hn::ShiftRight<kDigits>(position); }
    /// How far behind the first lane's place each is.
    HWY_INLINE Ints BehindFirst() const {
        const Ints whole = hn::Set(IntTag(), ~kMask);
        return hn::ShiftRight<kDigits>(hn::Sub(position, hn::And(FirstLane(position), whole)));
    }
    HWY_INLINE Floats Fractions() const {
        const IntTag di;
        const Ints below = hn::And(position, hn::Set(di, kMask));
        const Floats scaled = hn::Add(hn::ConvertTo(FloatTag(), below), rest);
        return hn::Mul(scaled, Constant(static_cast<float>(1.0 / kOne)));
    }
    HWY_INLINE void GoOn() {
        position = hn::Add(position, step);
        base += move;
    }

private:
    static constexpr int32_t kMask = (1 << kDigits) - 1;

    Ints position, step;
    Floats rest;
    const float* tape;
    int64_t base, move;
};
#endif

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
