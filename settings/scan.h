// Scanning of numbers at the start of a text; kept apart because the probe needs no more than this.
#pragma once

#include <cstdint>
#include <string_view>

namespace skavlo {

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Skips white space and one sign; true when the number is negative.
bool takeSign(std::string_view& text);

// White space, a sign, decimal digits; no digits: 0; saturates at the type's bounds.
template <typename Integer>
Integer scanInteger(std::string_view text);
extern template std::int32_t scanInteger<std::int32_t>(std::string_view text);
extern template std::int64_t scanInteger<std::int64_t>(std::string_view text);

}  // namespace skavlo
