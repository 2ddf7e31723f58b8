// Recordings made with evemu-record from a multi-touch device with slots (kernel protocol B).
#pragma once

#include <string>
#include <string_view>

#include "platform/result.h"
#include "tools/recording/recording.h"

namespace skavlo {

// Whether the text is such a recording rather than one of our own.
bool isEvemuRecording(std::string_view text);

// One contact per slot; the screen is as large in points as the axes have values. Times count from
// the first event. After SYN_DROPPED events are missing: every contact ends there, as what its slot
// holds is unknown, and one that reports a place later begins anew.
Result<TouchRecording> parseEvemuRecording(std::string_view text, const std::string& name);

}  // namespace skavlo
