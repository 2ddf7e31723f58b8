#pragma once

namespace skavlo::test {

// "TERMINAL=DEVICE;" for each mocked device, the latest first: the number of the terminal that
// stands in for it, and its own.
inline constexpr const char* kTerminalsVariable = "SKAVLO_MOCK_TERMINALS";

}  // namespace skavlo::test
