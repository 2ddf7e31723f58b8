// The canvas as a reader of the settings file.
#include "overlay/touch_canvas_view_controller.h"
#include "settings/loose_value.h"

namespace skavlo {

namespace {

// A stored number is narrowed to single precision; the fallback for a missing one is not.
double number(const PropertyDictionary& settings, const char* key, double fallback) {
    const PropertyValue* value = lookUp(settings, key);
    return value ? static_cast<double>(floatValue(value)) : fallback;
}

bool flag(const PropertyDictionary& settings, const char* key, bool fallback) {
    const PropertyValue* value = lookUp(settings, key);
    return value ? boolValue(value) : fallback;
}

}  // namespace

PropertyDictionary TouchCanvasViewController::readSettings() const {
    const auto bytes = services_.files.read(services_.directory.settingsFile());
    if (!bytes) return {};
    return services_.propertyLists.parse(*bytes).value_or(PropertyDictionary());
}

void TouchCanvasViewController::skv_reloadSettings() {
    const PropertyDictionary settings = readSettings();
    skv_singleFingerMode = flag(settings, "singleFingerMode", false);
    skv_displayMode = DisplayMode{integerValue(lookUp(settings, "displayMode"))};
    readColorMode(settings);
    readImageMode(settings);
    readCustomImage(settings);
    readEmojiMode(settings);
    prepareLooks();
    decideVisibility(settings);
    applyVisibility();
}

void TouchCanvasViewController::readColorMode(const PropertyDictionary& settings) {
    skv_fillColor = skv_colorFromValue(lookUp(settings, "fillColor"), kLightGrayColor);
    skv_borderColor = skv_colorFromValue(lookUp(settings, "borderColor"), kWhiteColor);
    skv_colorAlpha = number(settings, "colorAlpha", 0.55);
    skv_colorSize = number(settings, "colorSize", 55.0);
    skv_colorBorderWidth = number(settings, "colorBorderWidth", 5.0);
    skv_colorLiftScale = number(settings, "colorLiftScale", 2.0);
    skv_colorAnimDuration = number(settings, "colorAnimDuration", 0.5);
    skv_colorTracking = flag(settings, "colorTracking", true);
}

void TouchCanvasViewController::readImageMode(const PropertyDictionary& settings) {
    skv_imageAlpha = number(settings, "imageAlpha", 0.55);
    skv_imageSize = number(settings, "imageSize", 80.0);
    skv_imageLiftScale = number(settings, "imageLiftScale", 2.0);
    skv_imageAnimDuration = number(settings, "imageAnimDuration", 0.5);
    skv_imageTracking = flag(settings, "imageTracking", true);
}

// Without a path, or with one where no file is, the image stays what it was: deleting the file
// does not take a loaded image off the markers.
void TouchCanvasViewController::readCustomImage(const PropertyDictionary& settings) {
    const PropertyValue* value = lookUp(settings, "imagePath");
    const auto* path = value ? value->as<std::string>() : nullptr;
    if (!path || !services_.files.fileExistsAtPath(*path)) return;
    const int box = pictureSide(skv_imageSize, skv_imageLiftScale);
    const std::string key =
        *path + '\n' + services_.files.versionOf(*path) + '\n' + std::to_string(box);
    imageSource_.request(
        key,
        [this, path = *path, box](Rasterizer::Completion completion) {
            services_.rasterizer.rasterizeImageFile(path, box, std::move(completion));
        },
        [this](std::shared_ptr<const Bitmap> image) {
            skv_customImage = std::move(image);
            prepareImageLook();
        });
}

void TouchCanvasViewController::readEmojiMode(const PropertyDictionary& settings) {
    const PropertyValue* text = lookUp(settings, "emojiString");
    skv_emojiString = text ? *text : PropertyValue("🍎");
    skv_emojiAlpha = number(settings, "emojiAlpha", 0.8);
    skv_emojiSize = number(settings, "emojiSize", 60.0);
    skv_emojiLiftScale = number(settings, "emojiLiftScale", 2.0);
    skv_emojiAnimDuration = number(settings, "emojiAnimDuration", 0.5);
    skv_emojiTracking = flag(settings, "emojiTracking", true);
    skv_emojiShowBorder = flag(settings, "emojiShowBorder", false);
    skv_emojiBorderAlpha = number(settings, "emojiBorderAlpha", 0.5);
    skv_emojiFillAlpha = number(settings, "emojiFillAlpha", 0.5);
    skv_emojiBorderWidth = number(settings, "emojiBorderWidth", 5.0);
    skv_emojiFillColor = skv_colorFromValue(lookUp(settings, "emojiFillColor"), kLightGrayColor);
    skv_emojiBorderColor = skv_colorFromValue(lookUp(settings, "emojiBorderColor"), kWhiteColor);
}

}  // namespace skavlo
