#pragma once

#include <QPainter>

#include "ui/shell/painted_items.h"

namespace skavlo {

// Paints the sign into (0, 0) to (24, 24).
void paintSign(QPainter& painter, Glyph::Sign sign, const QColor& color);

}  // namespace skavlo
