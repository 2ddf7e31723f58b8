#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/linux/output_layout.h"
#include "platform/linux/x11/x11_connection.h"
#include "platform/screen.h"

namespace skavlo {

// Outputs by RandR and the scale from Xft.dpi, kept up to date. Where no output shows anything, the
// whole root window is the main screen.
class X11Outputs final : public Screen {
  public:
    explicit X11Outputs(X11Connection& connection);

    [[nodiscard]] Rect bounds() const override;
    [[nodiscard]] double scale() const override { return layout_.scale; }

    [[nodiscard]] const OutputLayout& layout() const { return layout_; }
    // The main screen in pixels of the root window.
    [[nodiscard]] PixelRect mainRect() const;
    // See chooseMainOutput().
    void setTouchOutput(const std::string& name);
    void addChangeHandler(std::function<void()> handler) {
        changeHandlers_.push_back(std::move(handler));
    }

  private:
    void update();
    void readRandr(OutputLayout& layout);
    void handle(const xcb_generic_event_t& event);
    void announce();

    X11Connection& connection_;
    int randrEvent_ = -1;
    OutputLayout layout_;
    std::string touchOutput_;
    std::vector<std::function<void()>> changeHandlers_;
};

// Pixels per point from the resource database on the root window: Xft.dpi / 96, 1 without one or
// with one outside 48 to 960.
double scaleFromResources(const std::string& resources);

}  // namespace skavlo
