// Outputs and touches as the overlay would see them if it started now.
#pragma once

#include <optional>

#include "platform/linux/input/input_selector.h"
#include "platform/linux/output_layout.h"
#include "tools/doctor/surroundings.h"

namespace skavlo::doctor {

struct OverlayView {
    OutputLayout layout;  // with the output that it would lie on as the main one
    InputSourceKind source = InputSourceKind::none;
};

// None: it would not start, for there is no window server.
std::optional<OverlayView> overlayView(const Surroundings& surroundings);

}  // namespace skavlo::doctor
