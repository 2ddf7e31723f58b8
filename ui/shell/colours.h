#pragma once

#include <QColor>
#include <QString>
#include <optional>

#include "settings/colour.h"

namespace skavlo {

// Components beyond 0 to 1, which a settings file may hold, are cut off.
QColor toQColor(const Colour& color);

// "#RRGGBB", with two more digits behind when the colour is not opaque.
QString hexText(const Colour& color);

// Three, six or eight digits with or without "#"; the alpha given stands for the missing one.
std::optional<Colour> colourFromHex(const QString& text, double alpha);

}  // namespace skavlo
