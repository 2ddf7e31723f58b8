#include "settings/scan.h"

#include <limits>

namespace skavlo {

namespace {

std::string_view skipSpace(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\n\v\f\r");
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

}  // namespace

bool takeSign(std::string_view& text) {
    text = skipSpace(text);
    if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
    const bool negative = text.front() == '-';
    text.remove_prefix(1);
    return negative;
}

template <typename Integer>
Integer scanInteger(std::string_view text) {
    constexpr auto kLowest = std::numeric_limits<Integer>::min();
    constexpr auto kLargest = std::numeric_limits<Integer>::max();
    const bool negative = takeSign(text);
    Integer result = 0;
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1)) {
        const auto digit = static_cast<Integer>(text.front() - '0');
        if (negative) {
            if (result < (kLowest + digit) / 10) return kLowest;
            result = static_cast<Integer>(result * 10 - digit);
        } else {
            if (result > (kLargest - digit) / 10) return kLargest;
            result = static_cast<Integer>(result * 10 + digit);
        }
    }
    return result;
}

template std::int32_t scanInteger<std::int32_t>(std::string_view text);
template std::int64_t scanInteger<std::int64_t>(std::string_view text);

}  // namespace skavlo
