// What the overlay needs of a desktop's window server beyond a window.
#pragma once

#include <functional>
#include <string>

#include "platform/linux/output_layout.h"
#include "platform/screen.h"
#include "platform/window_server.h"

namespace skavlo {

class DesktopWindowServer : public WindowServer {
  public:
    // The main screen; lives as long as the server.
    [[nodiscard]] virtual const Screen& screen() const = 0;
    [[nodiscard]] virtual const OutputLayout& layout() const = 0;
    // Called after each change of the layout, the choice of its main output included.
    virtual void addLayoutHandler(std::function<void()> handler) = 0;
    // The output that the touchscreen is mapped to; empty: to none in particular.
    virtual void setTouchOutput(const std::string& name) = 0;
    // Called once when the server is gone.
    virtual void setLostHandler(std::function<void()> handler) = 0;
};

}  // namespace skavlo
