#include "ui/shell/texts.h"

namespace skavlo {

Texts textsIn(const std::function<const char*(const char* zh, const char* en)>& choose) {
    const auto text = [&choose](const char* zh, const char* en) {
        return QString::fromUtf8(choose(zh, en));
    };
    Texts texts;
    texts.cancel = text("取消", "Cancel");
    texts.done = text("完成", "Done");
    texts.red = text("红", "Red");
    texts.green = text("绿", "Green");
    texts.blue = text("蓝", "Blue");
    texts.opacity = text("不透明度", "Opacity");
    texts.hue = text("色相", "Hue");
    texts.spectrum = text("饱和度与亮度", "Saturation and Brightness");
    texts.hex = text("十六进制颜色", "Hex Color");
    texts.chooseEmoji = text("选择表情", "Choose Emoji");
    texts.chooseImage = text("选择图片", "Choose Image");
    texts.noImages = text("此文件夹中没有图片", "No images in this folder");
    texts.parentFolder = text("上级文件夹", "Parent Folder");
    texts.language = text("语言", "Language");
    texts.info = text("应用介绍", "App Intro");
    texts.decrease = text("减小", "Decrease");
    texts.increase = text("增大", "Increase");
    texts.busy = text("正在处理", "In Progress");
    texts.images = text("图片", "Images");
    return texts;
}

}  // namespace skavlo
