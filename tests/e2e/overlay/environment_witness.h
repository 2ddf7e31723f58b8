#pragma once

namespace skavlo {

inline constexpr const char* kWitnessedVariable = "CI_USE_SOFTWARE_RENDERER";
inline constexpr const char* kWitnessedEnd = "the end";  // in the place of a module's name

}  // namespace skavlo
