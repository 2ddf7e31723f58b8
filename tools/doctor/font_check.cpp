#include <fontconfig/fontconfig.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tools/doctor/checks.h"

namespace skavlo::doctor {

namespace {

struct Release {
    void operator()(FcConfig* config) const { FcConfigDestroy(config); }
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
    void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};

bool suits(FcPattern* font, std::uint32_t character, bool colour) {
    FcCharSet* characters = nullptr;
    FcBool isColoured = FcFalse;
    FcPatternGetBool(font, FC_COLOR, 0, &isColoured);
    return FcPatternGetCharSet(font, FC_CHARSET, 0, &characters) == FcResultMatch &&
           FcCharSetHasChar(characters, character) && (!colour || isColoured);
}

// The family that the system prefers for this character, in colour if asked for.
std::optional<std::string> fontWith(FcConfig* config, std::uint32_t character, bool colour) {
    const std::unique_ptr<FcPattern, Release> pattern(FcPatternCreate());
    FcConfigSubstitute(config, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    FcResult result = FcResultMatch;
    const std::unique_ptr<FcFontSet, Release> fonts(
        FcFontSort(config, pattern.get(), FcFalse, nullptr, &result));
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        FcChar8* family = nullptr;
        if (suits(fonts->fonts[i], character, colour) &&
            FcPatternGetString(fonts->fonts[i], FC_FAMILY, 0, &family) == FcResultMatch) {
            return reinterpret_cast<const char*>(family);
        }
    }
    return std::nullopt;
}

struct Wanted {
    std::uint32_t character;
    bool colour;
    Text name;
    const char* package;
};

Finding judge(const Wanted& wanted, const std::optional<std::string>& font) {
    if (font) {
        return {"fonts", Level::ok, {wanted.name.zh + "：" + *font, wanted.name.en + ": " + *font}};
    }
    return {"fonts",
            Level::warn,
            {"没有" + wanted.name.zh, "no " + wanted.name.en},
            {std::string("安装 ") + wanted.package, std::string("install ") + wanted.package}};
}

}  // namespace

Findings checkFonts(const Surroundings& /*surroundings*/) {
    const Wanted wanted[] = {
        {'A', false, {"文字字体", "font for text"}, "fonts-dejavu-core"},
        {0x1F44D, true, {"彩色表情字体", "font for colour emoji"}, "fonts-noto-color-emoji"},
        {0x6C49,
         false,
         {"中日韩字体", "font for Chinese, Japanese and Korean"},
         "fonts-wqy-microhei"}};
    const std::unique_ptr<FcConfig, Release> config(FcInitLoadConfigAndFonts());
    Findings findings;
    for (const Wanted& one : wanted) {
        findings.push_back(
            judge(one, config ? fontWith(config.get(), one.character, one.colour) : std::nullopt));
    }
    return findings;
}

}  // namespace skavlo::doctor
