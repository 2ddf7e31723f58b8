#include "ui/shell/signs.h"

#include <QPainterPath>

namespace skavlo {
namespace {

constexpr QPointF kCenter(12, 12);

void paintCheckmark(QPainter& painter) {
    painter.drawPolyline(QPolygonF({{4.5, 12.8}, {9.8, 18}, {19.5, 6.2}}));
}

void paintQuestionmark(QPainter& painter) {
    painter.drawEllipse(kCenter, 10, 10);
    QPainterPath hook(QPointF(8.9, 9.4));
    hook.cubicTo(9.1, 5.6, 15.3, 5.8, 15.1, 9.5);
    hook.cubicTo(15, 11.6, 12.1, 11.7, 12, 14.1);
    painter.drawPath(hook);
    painter.setBrush(painter.pen().color());
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(QPointF(12, 17.2), 1.15, 1.15);
}

// A touch: a dot and the rings that spread from it.
void paintApplication(QPainter& painter) {
    painter.drawEllipse(kCenter, 10, 10);
    painter.drawEllipse(kCenter, 6.6, 6.6);
    painter.setBrush(painter.pen().color());
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(kCenter, 3.2, 3.2);
}

void paintSmile(QPainter& painter) {
    painter.drawEllipse(kCenter, 9.5, 9.5);
    painter.drawArc(QRectF(7.2, 7.4, 9.6, 9.6), 200 * 16, 140 * 16);
    painter.setBrush(painter.pen().color());
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(QPointF(8.8, 9.6), 1.2, 1.2);
    painter.drawEllipse(QPointF(15.2, 9.6), 1.2, 1.2);
}

void paintFolder(QPainter& painter) {
    QPainterPath folder(QPointF(3, 18.5));
    folder.lineTo(3, 5.5);
    folder.lineTo(9, 5.5);
    folder.lineTo(11, 8);
    folder.lineTo(21, 8);
    folder.lineTo(21, 18.5);
    folder.closeSubpath();
    painter.drawPath(folder);
}

void paintPicture(QPainter& painter) {
    painter.drawRoundedRect(QRectF(3, 4.5, 18, 15), 2, 2);
    painter.drawPolyline(QPolygonF({{3.5, 17}, {9, 11}, {13, 15}, {16, 12.5}, {20.5, 16.5}}));
    painter.drawEllipse(QPointF(15.8, 8.7), 1.4, 1.4);
}

void paintUp(QPainter& painter) {
    painter.drawLine(QPointF(12, 19), QPointF(12, 5));
    painter.drawPolyline(QPolygonF({{6, 11}, {12, 5}, {18, 11}}));
}

// Of an activity indicator: each a little paler than the one before.
void paintSpokes(QPainter& painter) {
    constexpr int kSpokes = 8;
    QPen pen = painter.pen();
    pen.setWidthF(2.6);
    painter.translate(kCenter);
    for (int spoke = 0; spoke < kSpokes; ++spoke) {
        QColor color = pen.color();
        color.setAlphaF(1.0F - 0.11F * static_cast<float>(spoke));
        pen.setColor(color);
        painter.setPen(pen);
        painter.drawLine(QPointF(0, -5), QPointF(0, -10));
        pen.setColor(QColor(color.red(), color.green(), color.blue()));
        painter.rotate(-360.0 / kSpokes);
    }
}

}  // namespace

void paintSign(QPainter& painter, Glyph::Sign sign, const QColor& color) {
    painter.setPen(QPen(color, sign == Glyph::Sign::Checkmark ? 2.8 : 1.7, Qt::SolidLine,
                        Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    switch (sign) {
        case Glyph::Sign::Checkmark:
            return paintCheckmark(painter);
        case Glyph::Sign::Questionmark:
            return paintQuestionmark(painter);
        case Glyph::Sign::Application:
            return paintApplication(painter);
        case Glyph::Sign::Smile:
            return paintSmile(painter);
        case Glyph::Sign::Folder:
            return paintFolder(painter);
        case Glyph::Sign::Picture:
            return paintPicture(painter);
        case Glyph::Sign::Up:
            return paintUp(painter);
        case Glyph::Sign::Spokes:
            return paintSpokes(painter);
    }
}

}  // namespace skavlo
