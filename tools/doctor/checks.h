#pragma once

#include <functional>
#include <vector>

#include "platform/linux/output_layout.h"
#include "tools/doctor/finding.h"
#include "tools/doctor/surroundings.h"

namespace skavlo::doctor {

Findings checkDisplay(const Surroundings& surroundings);
Findings checkTouches(const Surroundings& surroundings);
Findings checkFolders(const Surroundings& surroundings);
Findings checkHelper(const Surroundings& surroundings);
Findings checkCapture(const Surroundings& surroundings);
Findings checkFonts(const Surroundings& surroundings);
Findings checkImages(const Surroundings& surroundings);

// Which output the overlay would lie on; nothing: there is none, or it has no name.
Findings judgeOutput(const OutputLayout& layout);

// Of outputs that show the same region, which counts as a capture; nothing: there are none.
Findings judgeMirroring(const OutputLayout& layout);

// Adds what it means when no source can know whether the screen is captured.
Findings withVerdict(Findings sources);

// Whether the overlay would run as root.
bool overlayIsRoot(const Surroundings& surroundings);

using Check = std::function<Findings(const Surroundings&)>;
// In the order in which they are reported.
const std::vector<Check>& allChecks();

}  // namespace skavlo::doctor
