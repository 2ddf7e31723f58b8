#include "overlay/animation.h"

#include <array>
#include <cstddef>

#include "platform/timing_curve.h"

namespace skavlo {

namespace {

// A table, because thousands of trail copies ask for the curve in every frame. With linear
// interpolation its error is below 1e-6 (ease-out) and 2e-6 (ease-in-out).
constexpr std::size_t kSteps = 1024;
using Table = std::array<double, kSteps + 1>;

Table makeTable(const TimingCurve& curve) {
    Table table{};
    for (std::size_t i = 0; i <= kSteps; ++i) {
        table[i] = timingProgress(curve, static_cast<double>(i) / kSteps);
    }
    return table;
}

}  // namespace

double curveProgress(Curve curve, double fraction) {
    static const Table easeInOut = makeTable(kEaseInOut);
    static const Table easeOut = makeTable(kEaseOut);
    if (!(fraction > 0)) return 0;
    if (fraction >= 1) return 1;
    const Table& table = curve == Curve::easeOut ? easeOut : easeInOut;
    const double place = fraction * kSteps;
    const auto index = static_cast<std::size_t>(place);
    const double rest = place - static_cast<double>(index);
    return table[index] + (table[index + 1] - table[index]) * rest;
}

}  // namespace skavlo
