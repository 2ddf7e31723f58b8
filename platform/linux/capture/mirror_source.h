#pragma once

#include "platform/linux/capture/capture_source.h"
#include "platform/linux/output_layout.h"

namespace skavlo {

// Whether another output shows what the main one shows: two outputs of one RandR CRTC, or two that
// were given the same place and size. Without a main output: whether any two do.
bool isMirrored(const OutputLayout& layout);

class MirrorSource final : public CaptureSource {
  public:
    explicit MirrorSource(OutputLayoutProvider layout) : layout_(std::move(layout)) {
        layoutChanged();
    }
    void layoutChanged() { setCaptures(isMirrored(layout_())); }

  private:
    OutputLayoutProvider layout_;
};

}  // namespace skavlo
