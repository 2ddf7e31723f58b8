// The looks of new markers, and the pictures they need.
#include <algorithm>
#include <cmath>
#include <utility>

#include "overlay/touch_canvas_view_controller.h"

namespace skavlo {

namespace {

constexpr double kEmojiFontShare = 0.8;  // of the marker's size
constexpr double kLargestLiftAll = 1.5;  // lifting all scales to this at least
constexpr double kFinestPicture = 1024;  // pixels; a chain of smaller ones adds a third

double component(double value) {
    return value > 0 ? std::min(value, 1.0) : 0.0;
}

Colour withAlpha(const Colour& colour, double alpha) {
    return {component(colour.red), component(colour.green), component(colour.blue),
            component(alpha)};
}

}  // namespace

// Pixels of a picture's side that stays sharp at the largest scale the marker will reach.
int TouchCanvasViewController::pictureSide(double size, double liftScale) const {
    const double largest = std::max(kLargestLiftAll, std::isfinite(liftScale) ? liftScale : 1.0);
    const double side = std::ceil(size * services_.screen.scale() * largest);
    if (!(side >= 1)) return 1;
    return static_cast<int>(std::min(side, kFinestPicture));
}

std::shared_ptr<const Look> TouchCanvasViewController::circleLook() const {
    return std::make_shared<Look>(
        Look{skv_colorSize, 1,
             CircleLook{withAlpha(skv_fillColor, skv_colorAlpha),
                        withAlpha(skv_borderColor, skv_colorAlpha), skv_colorBorderWidth}});
}

std::shared_ptr<const Look> TouchCanvasViewController::currentLook() {
    if (skv_displayMode == DisplayMode::image) return imageLook_;
    if (skv_displayMode == DisplayMode::emoji) return emojiLook_;
    return circleLook();
}

void TouchCanvasViewController::prepareLooks() {
    imageLook_.reset();
    emojiLook_.reset();
    if (skv_displayMode == DisplayMode::image) prepareImageLook();
    if (skv_displayMode == DisplayMode::emoji) prepareEmojiLook();
}

// A look that already has its picture is left to the markers that wear it.
void TouchCanvasViewController::setSprite(std::shared_ptr<Look>& look, double size, double opacity,
                                          std::shared_ptr<const Bitmap> picture) {
    const bool stillEmpty = look && !std::get<PictureLook>(look->shape).sprite;
    if (!stillEmpty) look = std::make_shared<Look>(Look{size, component(opacity), PictureLook{}});
    if (picture) {
        std::get<PictureLook>(look->shape).sprite =
            std::make_shared<Sprite>(std::move(picture), size * services_.screen.scale());
        needsDisplay_();
    }
}

void TouchCanvasViewController::prepareImageLook() {
    if (skv_displayMode != DisplayMode::image) return;
    auto picture = skv_customImage;
    if (!picture && !imageSource_.busy()) {
        picture = starBitmap(pictureSide(skv_imageSize, skv_imageLiftScale));
    }
    setSprite(imageLook_, skv_imageSize, skv_imageAlpha, std::move(picture));
}

void TouchCanvasViewController::prepareEmojiLook() {
    const auto* stored = skv_emojiString.as<std::string>();
    const std::string text = stored && !stored->empty() ? *stored : "🍎";
    if (text != emojiLabelText_) emojiLabel_.reset();
    emojiLabelText_ = text;
    composeEmojiLook();
    const int side = pictureSide(skv_emojiSize, skv_emojiLiftScale);
    emojiSource_.request(
        text + '\n' + std::to_string(side),
        [this, text, side](Rasterizer::Completion completion) {
            services_.rasterizer.rasterizeText(text, side, side * kEmojiFontShare,
                                               std::move(completion));
        },
        [this, side](std::shared_ptr<const Bitmap> label) {
            const auto pixels = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
            emojiLabel_ = label ? std::move(label)
                                : std::make_shared<Bitmap>(
                                      Bitmap{{side, side}, std::vector<std::uint32_t>(pixels)});
            composeEmojiLook();
        });
}

void TouchCanvasViewController::composeEmojiLook() {
    if (skv_displayMode != DisplayMode::emoji) return;
    const EmojiDisc disc{withAlpha(skv_emojiFillColor, skv_emojiFillAlpha),
                         withAlpha(skv_emojiBorderColor, skv_emojiBorderAlpha),
                         skv_emojiSize > 0 ? skv_emojiBorderWidth / skv_emojiSize : 0};
    setSprite(emojiLook_, skv_emojiSize, 1,
              emojiLabel_ ? composeEmoji(*emojiLabel_, component(skv_emojiAlpha),
                                         skv_emojiShowBorder ? &disc : nullptr)
                          : nullptr);
}

}  // namespace skavlo
