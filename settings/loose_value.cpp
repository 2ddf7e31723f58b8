#include "settings/loose_value.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "settings/scan.h"

namespace skavlo {

namespace {

double scanReal(std::string_view text) {
    const bool negative = takeSign(text);
    // Leaves out what from_chars would take beyond decimal numbers: "inf", "nan".
    if (text.empty() || (!isDigit(text.front()) && text.front() != '.')) return 0;
    double result = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (error == std::errc::invalid_argument) return 0;
    if (error == std::errc::result_out_of_range) {
        // Too large or too small? A text this far out shows it by its exponent or its first digit.
        const bool tiny = text.find_first_of("eE") == std::string_view::npos
                              ? text.front() == '0' || text.front() == '.'
                              : text.find("e-") != text.npos || text.find("E-") != text.npos;
        result = tiny ? 0 : HUGE_VAL;
    }
    return negative ? -result : result;
}

bool scanBool(std::string_view text) {
    takeSign(text);
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    if (text.empty()) return false;
    const char c = text.front();
    return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

template <typename Integer>
Integer truncate(double value) {
    if (std::isnan(value)) return 0;
    // Both bounds as doubles: the upper one is the first value beyond the range.
    constexpr Integer kHalf = std::numeric_limits<Integer>::max() / 2 + 1;
    constexpr auto kBeyond = 2.0 * static_cast<double>(kHalf);
    if (value >= kBeyond) return std::numeric_limits<Integer>::max();
    if (value < -kBeyond) return std::numeric_limits<Integer>::min();
    return static_cast<Integer>(value);
}

template <typename Integer>
Integer looseInteger(const PropertyValue* value) {
    if (!value) return 0;
    if (const auto* flag = value->as<bool>()) return *flag ? 1 : 0;
    if (const auto* number = value->as<std::int64_t>()) return static_cast<Integer>(*number);
    if (const auto* real = value->as<double>()) return truncate<Integer>(*real);
    if (const auto* text = value->as<std::string>()) return scanInteger<Integer>(*text);
    return 0;
}

}  // namespace

bool boolValue(const PropertyValue* value) {
    if (!value) return false;
    if (const auto* flag = value->as<bool>()) return *flag;
    if (const auto* number = value->as<std::int64_t>()) return *number != 0;
    if (const auto* real = value->as<double>()) return *real != 0;
    if (const auto* text = value->as<std::string>()) return scanBool(*text);
    return false;
}

std::int32_t intValue(const PropertyValue* value) {
    return looseInteger<std::int32_t>(value);
}

std::int64_t integerValue(const PropertyValue* value) {
    return looseInteger<std::int64_t>(value);
}

float floatValue(const PropertyValue* value) {
    if (!value) return 0;
    if (const auto* flag = value->as<bool>()) return *flag ? 1.0F : 0.0F;
    if (const auto* number = value->as<std::int64_t>()) return static_cast<float>(*number);
    if (const auto* real = value->as<double>()) return static_cast<float>(*real);
    if (const auto* text = value->as<std::string>()) return static_cast<float>(scanReal(*text));
    return 0;
}

const PropertyValue* lookUp(const PropertyDictionary& dictionary, const char* key) {
    const auto it = dictionary.find(key);
    return it == dictionary.end() ? nullptr : &it->second;
}

}  // namespace skavlo
