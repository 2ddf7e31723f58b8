#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/desktop_window_server.h"
#include "platform/linux/x11/x11_connection.h"
#include "platform/linux/x11/x11_outputs.h"
#include "platform/linux/x11/x11_window.h"
#include "platform/result.h"

namespace skavlo {

class X11WindowServer final : public DesktopWindowServer {
  public:
    // An error when no server can be reached or it has no visual with an alpha channel.
    // `xWayland`: the server is one, whose windows a Wayland compositor shows.
    static Result<std::unique_ptr<X11WindowServer>> connect(AsioRunLoop& runLoop,
                                                            bool xWayland = false);

    std::unique_ptr<Window> createWindow(Rect frame, const WindowTraits& traits) override;
    // Any level that is asked for is above all others: X has no levels, so the window is kept on
    // top of the stack.
    void registerWindowWithContextID(std::uint32_t contextId, double level) override;

    [[nodiscard]] const Screen& screen() const override { return outputs_; }
    [[nodiscard]] const OutputLayout& layout() const override { return outputs_.layout(); }
    void addLayoutHandler(std::function<void()> handler) override {
        outputs_.addChangeHandler(std::move(handler));
    }
    void setTouchOutput(const std::string& name) override { outputs_.setTouchOutput(name); }
    void setLostHandler(std::function<void()> handler) override {
        connection_->setLostHandler(std::move(handler));
    }

  private:
    X11WindowServer(AsioRunLoop& runLoop, std::unique_ptr<X11Connection> connection);

    AsioRunLoop& runLoop_;
    std::unique_ptr<X11Connection> connection_;
    X11Outputs outputs_;
    X11Window* window_ = nullptr;
};

}  // namespace skavlo
