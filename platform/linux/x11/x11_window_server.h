#pragma once

#include <functional>
#include <memory>

#include "platform/linux/x11/x11_connection.h"
#include "platform/linux/x11/x11_outputs.h"
#include "platform/linux/x11/x11_window.h"
#include "platform/result.h"
#include "platform/window_server.h"

namespace skavlo {

class X11WindowServer final : public WindowServer {
  public:
    // An error when no server can be reached or it has no visual with an alpha channel.
    static Result<std::unique_ptr<X11WindowServer>> connect(AsioRunLoop& runLoop);

    std::unique_ptr<Window> createWindow(Rect frame, const WindowTraits& traits) override;
    // Any level that is asked for is above all others: X has no levels, so the window is kept on
    // top of the stack.
    void registerWindowWithContextID(std::uint32_t contextId, double level) override;

    [[nodiscard]] X11Outputs& outputs() { return outputs_; }
    [[nodiscard]] const xcb_connection_t* connection() const { return connection_->get(); }
    void setLostHandler(std::function<void()> handler) {
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
