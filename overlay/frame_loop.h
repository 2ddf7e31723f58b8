// When a frame is drawn: at once after a touch, otherwise with the display.
#pragma once

#include <memory>

#include "overlay/marker_scene.h"
#include "overlay/scene_painter.h"
#include "platform/run_loop.h"
#include "platform/screen.h"
#include "platform/time.h"
#include "platform/window_server.h"

namespace skavlo {

// A touch is shown as soon as the window server has read the frame before. Animations advance only
// with the display's refresh: between two refreshes a touch redraws no more than what it changed.
class FrameLoop {
  public:
    FrameLoop(RunLoop& runLoop, const Clock& clock, const Screen& screen);

    // The window outlives the loop.
    void attach(MarkerScene& scene, Window& window);
    // Several calls before the main queue gets to it make one frame.
    void setNeedsDisplay();

  private:
    void displayIfNeeded();
    void refresh();
    [[nodiscard]] MachTime presentationTime() const;

    RunLoop& runLoop_;
    const Clock& clock_;
    const Screen& screen_;
    MarkerScene* scene_ = nullptr;
    Window* window_ = nullptr;
    ScenePainter painter_;
    MachTime animationTime_ = 0;
    bool needsDisplay_ = false;
    bool displayPosted_ = false;
    bool refreshRequested_ = false;
    // What is still posted when the loop is gone finds this expired.
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace skavlo
