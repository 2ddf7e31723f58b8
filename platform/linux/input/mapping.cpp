#include "platform/linux/input/mapping.h"

#include <algorithm>
#include <cmath>

namespace skavlo {

namespace {

Affine normalisedToRect(const PixelRect& rect) {
    const double x = rect.x;
    const double y = rect.y;
    const double width = rect.width;
    const double height = rect.height;
    return {{width, 0, x, 0, height, y}};
}

PixelRect wholeDesktop(const OutputLayout& layout) {
    return {0, 0, layout.desktop.width, layout.desktop.height};
}

double usableScale(const OutputLayout& layout) {
    return layout.scale > 0 ? layout.scale : 1;
}

template <typename Predicate>
const OutputInfo* findOutput(const OutputLayout& layout, Predicate predicate) {
    const auto it = std::find_if(layout.outputs.begin(), layout.outputs.end(), predicate);
    return it == layout.outputs.end() ? nullptr : &*it;
}

// The picture turned on the panel turns the finger the other way.
Affine turnOf(Rotation rotation) {
    switch (rotation) {
        case Rotation::left:
            return {{0, -1, 1, 1, 0, 0}};
        case Rotation::inverted:
            return {{-1, 0, 1, 0, -1, 1}};
        case Rotation::right:
            return {{0, 1, 0, -1, 0, 1}};
        case Rotation::normal:
            break;
    }
    return {};
}

}  // namespace

Affine compose(const Affine& outer, const Affine& inner) {
    const auto& a = outer.m;
    const auto& b = inner.m;
    return {{a[0] * b[0] + a[1] * b[3], a[0] * b[1] + a[1] * b[4], a[0] * b[2] + a[1] * b[5] + a[2],
             a[3] * b[0] + a[4] * b[3], a[3] * b[1] + a[4] * b[4],
             a[3] * b[2] + a[4] * b[5] + a[5]}};
}

const OutputInfo* mainOutput(const OutputLayout& layout) {
    return layout.main < layout.outputs.size() ? &layout.outputs[layout.main] : nullptr;
}

const OutputInfo* outputOfDevice(const OutputLayout& layout, std::string_view outputName) {
    const OutputInfo* found =
        findOutput(layout, [&](const OutputInfo& o) { return o.name == outputName; });
    if (found) return found;  // a name that no output has counts as none
    found = findOutput(layout, [](const OutputInfo& o) { return o.internal; });
    if (found) return found;
    found = findOutput(layout, [](const OutputInfo& o) { return o.primary; });
    return found ? found : mainOutput(layout);
}

std::string mappedOutput(const OutputLayout& layout, const DevicePlacement& placement) {
    const auto named = findOutput(
        layout, [&](const OutputInfo& output) { return output.name == placement.outputName; });
    if (named) return named->name;
    if (!placement.desktopTransform) return {};
    // Corners that the transformation takes to opposite corners of an output, whatever its turn.
    constexpr double kTolerance = 2;  // tools that make such matrices round to whole units
    const Affine onDesktop =
        compose(normalisedToRect(wholeDesktop(layout)), *placement.desktopTransform);
    const Point a = onDesktop.apply({0, 0});
    const Point b = onDesktop.apply({1, 1});
    const auto near = [](double x, double y) { return std::abs(x - y) <= kTolerance; };
    const OutputInfo* output = findOutput(layout, [&](const OutputInfo& o) {
        return near(std::min(a.x, b.x), o.rect.x) && near(std::min(a.y, b.y), o.rect.y) &&
               near(std::max(a.x, b.x), o.rect.right()) &&
               near(std::max(a.y, b.y), o.rect.bottom());
    });
    return output ? output->name : std::string();
}

Size mainSizeInPoints(const OutputLayout& layout) {
    const OutputInfo* output = mainOutput(layout);
    const PixelRect rect = output ? output->rect : wholeDesktop(layout);
    const double scale = usableScale(layout);
    return {rect.width / scale, rect.height / scale};
}

Affine panelToPicture(const OutputInfo& output) {
    // The X server turns first and mirrors the turned picture.
    const Affine mirror{{output.reflectX ? -1.0 : 1.0, 0, output.reflectX ? 1.0 : 0.0, 0,
                         output.reflectY ? -1.0 : 1.0, output.reflectY ? 1.0 : 0.0}};
    return compose(mirror, turnOf(output.rotation));
}

Affine desktopPixelsToPoints(const OutputLayout& layout) {
    const OutputInfo* output = mainOutput(layout);
    const double perPixel = 1 / usableScale(layout);
    const double left = output ? output->rect.x : 0;
    const double top = output ? output->rect.y : 0;
    return {{perPixel, 0, -left * perPixel, 0, perPixel, -top * perPixel}};
}

Affine deviceToPoints(const OutputLayout& layout, const DevicePlacement& placement) {
    const Affine toPoints = desktopPixelsToPoints(layout);
    const Affine overDesktop = compose(toPoints, normalisedToRect(wholeDesktop(layout)));
    const bool named = findOutput(layout, [&](const OutputInfo& o) {
                           return o.name == placement.outputName;
                       }) != nullptr;
    if (!named && placement.desktopTransform)
        return compose(overDesktop, *placement.desktopTransform);
    const OutputInfo* output = outputOfDevice(layout, placement.outputName);
    if (!output) return overDesktop;
    return compose(compose(toPoints, normalisedToRect(output->rect)), panelToPicture(*output));
}

}  // namespace skavlo
