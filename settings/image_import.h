// What an imported image has to fit into.
#pragma once

#include <cstdint>
#include <vector>

namespace skavlo {

// Bytes; an image of at most that many is kept as it is.
inline constexpr std::uint64_t kCustomImageByteLimit = 1'048'576;

// Parts of its own size at which a larger image is tried, largest first: 0.9 and on by repeated
// subtraction of 0.1, whose drift adds a ninth one just above 0.1.
std::vector<double> shrinkFactors();

}  // namespace skavlo
