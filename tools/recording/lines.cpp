#include "tools/recording/lines.h"

#include <charconv>
#include <cmath>

namespace skavlo {

std::vector<std::string_view> words(std::string_view line) {
    constexpr std::string_view kBlanks = " \t\r";
    line = line.substr(0, line.find('#'));
    std::vector<std::string_view> result;
    for (auto start = line.find_first_not_of(kBlanks); start != std::string_view::npos;
         start = line.find_first_not_of(kBlanks)) {
        const auto end = std::min(line.find_first_of(kBlanks, start), line.size());
        result.push_back(line.substr(start, end - start));
        line.remove_prefix(end);
    }
    return result;
}

std::string_view takeLine(std::string_view& text) {
    const auto end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

std::optional<double> finiteNumber(std::string_view word) {
    double value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    const bool whole = error == std::errc() && end == word.data() + word.size();
    return whole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<int> integerNumber(std::string_view word, int base) {
    int value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value, base);
    const bool whole = error == std::errc() && end == word.data() + word.size();
    return whole ? std::optional(value) : std::nullopt;
}

Error lineError(const std::string& name, int line, const std::string& message) {
    return Error{name + ":" + std::to_string(line) + ": " + message};
}

}  // namespace skavlo
