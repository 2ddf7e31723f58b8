#include "tools/doctor/report.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace skavlo::doctor {

namespace {

constexpr std::size_t kLevelWidth = 6;
constexpr std::size_t kCheckWidth = 10;

std::string padded(std::string text, std::size_t width) {
    if (text.size() < width) text.append(width - text.size(), ' ');
    return text;
}

const std::string& in(Language language, const Text& text) {
    return language == Language::chinese ? text.zh : text.en;
}

// The length of the well-formed UTF-8 character at the start; 0: there is none.
std::size_t characterLength(std::string_view text) {
    const auto at = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t first = at(0);
    if (first < 0x80) return 1;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xc0) != 0x80) return 0;
    }
    const bool overlong = (first == 0xe0 && at(1) < 0xa0) || (first == 0xf0 && at(1) < 0x90);
    const bool outside = (first == 0xed && at(1) > 0x9f) || (first == 0xf4 && at(1) > 0x8f);
    return overlong || outside ? 0 : length;
}

std::string quoted(std::string_view text) {
    constexpr std::string_view kReplacement = "\xef\xbf\xbd";
    std::string result = "\"";
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const char first = text.front();
        if (length == 0) {
            result += kReplacement;
        } else if (first == '"' || first == '\\') {
            result += {'\\', first};
        } else if (static_cast<unsigned char>(first) < ' ') {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(first));
            result += escape.data();
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result + "\"";
}

// What a device calls itself must not move the cursor.
std::string printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](char character) {
            return static_cast<unsigned char>(character) < ' ' || character == '\x7f';
        },
        ' ');
    return text;
}

Level worst(const Findings& findings) {
    Level level = Level::ok;
    for (const Finding& finding : findings) level = std::max(level, finding.level);
    return level;
}

}  // namespace

const char* name(Level level) {
    switch (level) {
        case Level::ok:
            return "ok";
        case Level::warn:
            return "warn";
        case Level::fail:
            break;
    }
    return "fail";
}

Language languageOf(const char* all, const char* messages, const char* lang) {
    for (const char* value : {all, messages, lang}) {
        if (!value || *value == '\0') continue;
        const bool chinese = std::string_view(value).starts_with("zh");
        return chinese ? Language::chinese : Language::english;
    }
    return Language::english;
}

std::string asText(const Findings& findings, Language language) {
    std::string text;
    for (const Finding& finding : findings) {
        std::string line = padded(name(finding.level), kLevelWidth) +
                           padded(finding.check, kCheckWidth) + in(language, finding.what);
        const std::string& advice = in(language, finding.advice);
        if (!advice.empty()) line += " → " + advice;
        text += printable(line) + "\n";
    }
    return text;
}

std::string asJson(const Findings& findings, Language language) {
    std::string json =
        R"({"status": ")" + std::string(name(worst(findings))) + R"(", "findings": [)";
    const char* separator = "\n";
    for (const Finding& finding : findings) {
        json += separator;
        json += R"(  {"check": )" + quoted(finding.check) + R"(, "level": ")" +
                name(finding.level) + R"(", "text": )" + quoted(in(language, finding.what));
        const std::string& advice = in(language, finding.advice);
        if (!advice.empty()) json += R"(, "advice": )" + quoted(advice);
        json += "}";
        separator = ",\n";
    }
    return json + "\n]}\n";
}

int exitStatus(const Findings& findings) {
    return worst(findings) == Level::fail ? kExitFail : 0;
}

}  // namespace skavlo::doctor
