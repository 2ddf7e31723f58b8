#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/desktop_window_server.h"
#include "platform/linux/wayland/wayland_connection.h"
#include "platform/linux/wayland/wayland_outputs.h"
#include "platform/linux/wayland/wayland_window.h"

namespace skavlo {

// A compositor with layer shell.
class WaylandWindowServer final : public DesktopWindowServer {
  public:
    // Whether the compositor has all that is needed.
    static bool serves(const WaylandConnection& connection);
    // Of a connection that it serves.
    WaylandWindowServer(AsioRunLoop& runLoop, std::unique_ptr<WaylandConnection> connection);
    ~WaylandWindowServer() override;
    WaylandWindowServer(const WaylandWindowServer&) = delete;
    WaylandWindowServer& operator=(const WaylandWindowServer&) = delete;

    // There is one at a time, and it is gone before the server.
    std::unique_ptr<Window> createWindow(Rect frame, const WindowTraits& traits) override;
    // The window is in the topmost layer from the start.
    void registerWindowWithContextID(std::uint32_t /*contextId*/, double /*level*/) override {}

    [[nodiscard]] const Screen& screen() const override { return outputs_; }
    [[nodiscard]] const OutputLayout& layout() const override { return outputs_.layout(); }
    void addLayoutHandler(std::function<void()> handler) override {
        outputs_.addChangeHandler(std::move(handler));
    }
    void setTouchOutput(const std::string& name) override;
    void setLostHandler(std::function<void()> handler) override {
        connection_->setLostHandler(std::move(handler));
    }

  private:
    void listenPresentation();

    AsioRunLoop& runLoop_;
    std::unique_ptr<WaylandConnection> connection_;
    WaylandGlobals globals_;
    WaylandOutputs outputs_;
    bool presentationIsMonotonic_ = false;
    WaylandWindow* window_ = nullptr;
};

}  // namespace skavlo
