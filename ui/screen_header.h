#pragma once

#include <optional>
#include <string>

namespace skavlo {

// What the about text says of the program. The version is the bundle's, if it names one.
struct AboutInfo {
    std::optional<std::string> version;
    std::string author;
    std::string channel;  // a web address
};

// The texts of the header; its title is the product's name in every language.
struct ScreenHeader {
    std::string languageButtonTitle;
    std::string aboutText;  // four lines; `channel` in it is a link
    std::string channel;
};

}  // namespace skavlo
