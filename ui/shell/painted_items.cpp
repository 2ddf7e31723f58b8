#include "ui/shell/painted_items.h"

#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <algorithm>

#include "ui/shell/signs.h"

namespace skavlo {
namespace {

constexpr double kSignSide = 24;
// Large enough for a crisp thumbnail or icon on any screen.
constexpr int kLongestImageSide = 720;
// What is larger is left to the decoder's process, which does not keep the screen waiting.
constexpr int kMostPixels = 4'000'000;

void paintSignIn(QPainter& painter, Glyph::Sign sign, const QColor& color, const QSizeF& size) {
    const double side = std::min(size.width(), size.height());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate((size.width() - side) / 2, (size.height() - side) / 2);
    painter.scale(side / kSignSide, side / kSignSide);
    paintSign(painter, sign, color);
}

void paintCheckers(QPainter& painter, const QRectF& area) {
    constexpr double kSide = 5;
    painter.fillRect(area, Qt::white);
    for (int row = 0; row * kSide < area.height(); ++row) {
        for (int column = row % 2; column * kSide < area.width(); column += 2) {
            painter.fillRect(QRectF(area.x() + column * kSide, area.y() + row * kSide, kSide, kSide)
                                 .intersected(area),
                             QColor(0xc7, 0xc7, 0xcc));
        }
    }
}

// Scaled down while it is read: a photo of fifty megapixels is not to be held for a thumbnail.
QImage readImage(const QString& path) {
    if (path.isEmpty()) return {};
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);  // a JPEG may be called .png
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    // Of the formats that Qt knows, JPEG alone is scaled while it is read.
    const bool scales = reader.supportsOption(QImageIOHandler::ScaledSize);
    if (!scales && size.width() > kMostPixels / std::max(size.height(), 1)) return {};
    if (std::max(size.width(), size.height()) > kLongestImageSide) {
        reader.setScaledSize(
            size.scaled(kLongestImageSide, kLongestImageSide, Qt::KeepAspectRatio));
    }
    QImage image = reader.read();
    image.setDevicePixelRatio(1);  // whatever "@3x" in a name says
    return image;
}

}  // namespace

Glyph::Glyph(QQuickItem* parent) : QQuickPaintedItem(parent) {
    connect(this, &Glyph::changed, this, [this] { update(); });
}

void Glyph::paint(QPainter* painter) {
    paintSignIn(*painter, sign_, color_, size());
}

RoundedImage::RoundedImage(QQuickItem* parent) : QQuickPaintedItem(parent) {
    connect(this, &RoundedImage::changed, this, [this] { update(); });
}

void RoundedImage::setPath(const QString& path) {
    path_ = path;
    if (isComponentComplete()) load();
}

// Only now are all properties set.
void RoundedImage::componentComplete() {
    QQuickPaintedItem::componentComplete();
    load();
}

void RoundedImage::load() {
    image_ = readImage(path_);
    emit changed();
    if (isLoaded() || path_.isEmpty() || !screen_) return;
    screen_->decodeImage(path_, [self = QPointer(this), path = path_](QImage image) {
        if (!self || self->path_ != path) return;
        self->image_ = std::move(image);
        emit self->changed();
    });
}

QRectF RoundedImage::imageRect() const {
    const QSizeF scaled =
        QSizeF(image_.size())
            .scaled(size(), aspectFill_ ? Qt::KeepAspectRatioByExpanding : Qt::KeepAspectRatio);
    return {QPointF((width() - scaled.width()) / 2, (height() - scaled.height()) / 2), scaled};
}

void RoundedImage::paint(QPainter* painter) {
    if (image_.isNull()) {
        return paintSignIn(*painter, Glyph::Sign::Application, tintColor_, size());
    }
    // As a brush, because a clip has no smooth edge.
    const QRectF target = imageRect();
    const QRectF visible = target.intersected(boundingRect());
    // Averaged at the device's size: a brush on its own drops pixels when it shrinks an image.
    const double ratio = painter->deviceTransform().m11();
    const QImage scaled = image_.scaled((target.size() * ratio).toSize().expandedTo({1, 1}),
                                        Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QBrush brush(scaled);
    brush.setTransform(
        QTransform::fromTranslate(target.x(), target.y())
            .scale(target.width() / scaled.width(), target.height() / scaled.height()));
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter->setPen(Qt::NoPen);
    painter->setBrush(brush);
    painter->drawRoundedRect(visible, cornerRadius_, cornerRadius_);
}

WellFace::WellFace(QQuickItem* parent) : QQuickPaintedItem(parent) {
    connect(this, &WellFace::changed, this, [this] { update(); });
}

void WellFace::paint(QPainter* painter) {
    constexpr double kRingWidth = 3.5;
    constexpr double kRingRadius = 12.5;
    constexpr double kFaceRadius = 9;
    const QPointF center(width() / 2, height() / 2);
    QConicalGradient hues(center, 90);
    for (int step = 0; step <= 12; ++step) {
        const double at = step / 12.0;
        hues.setColorAt(at, QColor::fromHsvF(static_cast<float>(step % 12) / 12.0F, 0.85F, 1.0F));
    }
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(QBrush(hues), kRingWidth));
    painter->drawEllipse(center, kRingRadius, kRingRadius);
    painter->setPen(Qt::NoPen);
    if (color_.alpha() < 255) {
        QPainterPath face;
        face.addEllipse(center, kFaceRadius, kFaceRadius);
        painter->save();
        painter->setClipPath(face);
        paintCheckers(*painter, face.boundingRect());
        painter->restore();
    }
    // A hair's breadth of grey, or white on white would show nothing.
    painter->setPen(QPen(QColor(128, 128, 128, 90), 0.75));
    painter->setBrush(color_);
    painter->drawEllipse(center, kFaceRadius, kFaceRadius);
}

Checkerboard::Checkerboard(QQuickItem* parent) : QQuickPaintedItem(parent) {
    connect(this, &Checkerboard::changed, this, [this] { update(); });
}

void Checkerboard::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    QPainterPath shape;
    shape.addRoundedRect(boundingRect(), cornerRadius_, cornerRadius_);
    painter->setClipPath(shape);
    paintCheckers(*painter, boundingRect());
}

}  // namespace skavlo
