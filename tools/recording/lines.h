// Taking text files apart.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"

namespace skavlo {

// The words of a line up to a comment.
std::vector<std::string_view> words(std::string_view line);

// Takes the first line off the text, without its line end.
std::string_view takeLine(std::string_view& text);

// The whole word as a number; none: it is not one, or not a finite one.
std::optional<double> finiteNumber(std::string_view word);
std::optional<int> integerNumber(std::string_view word, int base = 10);

Error lineError(const std::string& name, int line, const std::string& message);

}  // namespace skavlo
