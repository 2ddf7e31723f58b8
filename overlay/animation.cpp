#include "overlay/animation.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace skavlo {

namespace {

// A table, because thousands of trail copies ask for the curve in every frame. With linear
// interpolation its error is below 1e-6 (ease-out) and 2e-6 (ease-in-out).
constexpr std::size_t kSteps = 1024;
using Table = std::array<double, kSteps + 1>;

double bezier(double first, double second, double t) {
    const double u = 1 - t;
    return 3 * u * u * t * first + 3 * u * t * t * second + t * t * t;
}

// Solves x(t) = fraction by bisection; x is monotonic for control points within 0 to 1.
double solve(double x1, double y1, double x2, double y2, double fraction) {
    constexpr int kHalvings = 60;
    double low = 0;
    double high = 1;
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = (low + high) / 2;
        (bezier(x1, x2, middle) < fraction ? low : high) = middle;
    }
    return bezier(y1, y2, (low + high) / 2);
}

Table makeTable(double x1, double y1, double x2, double y2) {
    Table table{};
    for (std::size_t i = 0; i <= kSteps; ++i) {
        table[i] = solve(x1, y1, x2, y2, static_cast<double>(i) / kSteps);
    }
    table.back() = 1;
    return table;
}

}  // namespace

double curveProgress(Curve curve, double fraction) {
    static const Table easeInOut = makeTable(0.42, 0, 0.58, 1);
    static const Table easeOut = makeTable(0, 0, 0.58, 1);
    if (!(fraction > 0)) return 0;
    if (fraction >= 1) return 1;
    const Table& table = curve == Curve::easeOut ? easeOut : easeInOut;
    const double place = fraction * kSteps;
    const auto index = static_cast<std::size_t>(place);
    const double rest = place - static_cast<double>(index);
    return table[index] + (table[index + 1] - table[index]) * rest;
}

}  // namespace skavlo
