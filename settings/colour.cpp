#include "settings/colour.h"

#include "settings/loose_value.h"

namespace skavlo {

Colour skv_colorFromValue(const PropertyValue* value, const Colour& defaultColor) {
    constexpr std::size_t kComponents = 4;
    const auto* array = value ? value->as<PropertyArray>() : nullptr;
    if (!array || array->size() != kComponents) return defaultColor;
    return {floatValue(&(*array)[0]), floatValue(&(*array)[1]), floatValue(&(*array)[2]),
            floatValue(&(*array)[3])};
}

PropertyArray skv_arrayFromColor(const Colour& color) {
    return {color.red, color.green, color.blue, color.alpha};
}

}  // namespace skavlo
