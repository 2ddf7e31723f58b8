#pragma once

#include "platform/linux/output_layout.h"

namespace skavlo {

// Where contacts come from. Sources hand them to one tracker, in points of the main output.
class TouchSource {
  public:
    virtual ~TouchSource() = default;  // what it began is its owner's to end
    virtual void setLayout(const OutputLayout& layout) = 0;
};

}  // namespace skavlo
