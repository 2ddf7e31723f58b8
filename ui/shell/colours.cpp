#include "ui/shell/colours.h"

#include <QRegularExpression>
#include <algorithm>
#include <cmath>

namespace skavlo {
namespace {

// Also for what is not a number.
float within(double component) {
    return static_cast<float>(component > 0 ? std::min(component, 1.0) : 0.0);
}

int byte(double component) {
    return static_cast<int>(std::lround(within(component) * 255.0F));
}

}  // namespace

QColor toQColor(const Colour& color) {
    return QColor::fromRgbF(within(color.red), within(color.green), within(color.blue),
                            within(color.alpha));
}

QString hexText(const Colour& color) {
    const auto digits = [](double component) {
        return QStringLiteral("%1").arg(byte(component), 2, 16, QLatin1Char('0')).toUpper();
    };
    QString text = u'#' + digits(color.red) + digits(color.green) + digits(color.blue);
    if (byte(color.alpha) < 255) text += digits(color.alpha);
    return text;
}

std::optional<Colour> colourFromHex(const QString& text, double alpha) {
    static const QRegularExpression form(
        QStringLiteral("^\\s*#?([0-9a-fA-F]{3}|[0-9a-fA-F]{6}|[0-9a-fA-F]{8})\\s*$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch()) return std::nullopt;
    QString digits = match.captured(1);
    if (digits.size() == 3) {
        digits = QString::fromLatin1("%1%1%2%2%3%3").arg(digits[0]).arg(digits[1]).arg(digits[2]);
    }
    const auto component = [&digits](qsizetype at) {
        return digits.mid(at, 2).toInt(nullptr, 16) / 255.0;
    };
    return Colour{component(0), component(2), component(4),
                  digits.size() == 8 ? component(6) : alpha};
}

}  // namespace skavlo
