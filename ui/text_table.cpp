#include "ui/text_table.h"

#include <array>

namespace skavlo {

namespace {

// In the order of the ids.
constexpr std::array kTexts = {
    Text{"应用介绍", "App Intro"},
    Text{"这是一个可以个性化显示屏幕触摸轨迹的应用。",
         "This is an application that can personalize the display of screen touch trajectories."},
    Text{"确定", "OK"},
    Text{"版本: %@\n作者: %@\n频道: %@\n支持: iOS14-17",
         "Version: %@\nAuthor: %@\nChannel: %@\nSupport: iOS14-17"},
    Text{"成功", "Success"},
    Text{"自定义图片已载入！", "Custom image loaded!"},
    Text{"启动设置", "Launch Settings"},
    Text{"触摸设置", "Touch Settings"},
    Text{"显示设置", "Display Settings"},
    Text{"开启 Skavlo", "Enable Skavlo"},
    Text{"仅录屏显示", "Show in Record Only"},
    Text{"多指显示", "Multi-Touch"},
    Text{"单指显示", "Single-Touch"},
    Text{"恢复设置", "Restore Settings"},
    Text{"以颜色显示", "Color Mode"},
    Text{"以图片显示", "Image Mode"},
    Text{"以表情显示", "Emoji Mode"},
    Text{"填充颜色", "Fill Color"},
    Text{"边框颜色", "Border Color"},
    Text{"跟随跟踪残影", "Trailing Effect"},
    Text{"透明度", "Opacity"},
    Text{"圆圈大小", "Circle Size"},
    Text{"边框宽度", "Border Width"},
    Text{"抬起缩放", "Lift Scale"},
    Text{"动画持续", "Duration"},
    Text{"选择自定义图片...", "Select Custom Image..."},
    Text{"图片大小", "Image Size"},
    Text{"设置表情", "Set Emoji"},
    Text{"颜色边框", "Color Border"},
    Text{"表情填充色", "Emoji Fill"},
    Text{"表情边框色", "Emoji Border"},
    Text{"表情大小", "Emoji Size"},
    Text{"填充透明度", "Fill Opacity"},
    Text{"边框透明度", "Border Opacity"},
    Text{"确定要将所有显示设置恢复为默认值吗？",
         "Are you sure you want to restore all display settings to default?"},
    Text{"取消", "Cancel"},
    Text{"恢复", "Restore"},
};
static_assert(kTexts.size() == kTextCount);
static_assert(static_cast<std::size_t>(TextId::restore) + 1 == kTextCount);

}  // namespace

const Text& textPair(TextId id) {
    return kTexts[static_cast<std::size_t>(id)];
}

std::string fillIn(std::string_view format, std::initializer_list<std::string_view> arguments) {
    constexpr std::string_view kPlace = "%@";
    std::string result;
    for (const std::string_view argument : arguments) {
        const auto place = format.find(kPlace);
        if (place == std::string_view::npos) break;
        result.append(format.substr(0, place)).append(argument);
        format.remove_prefix(place + kPlace.size());
    }
    return result.append(format);
}

}  // namespace skavlo
