#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/linux/wayland/presentation.h"
#include "platform/linux/wayland/shm_buffers.h"
#include "platform/linux/wayland/wayland_connection.h"
#include "platform/linux/wayland/wayland_outputs.h"
#include "platform/window_server.h"

namespace skavlo {

// What the window needs of the compositor. The last three may be null.
struct WaylandGlobals {
    WaylandPointer<wl_compositor> compositor;
    WaylandPointer<wl_shm> shm;
    WaylandPointer<zwlr_layer_shell_v1> layerShell;
    WaylandPointer<wp_viewporter> viewporter;
    WaylandPointer<wp_fractional_scale_manager_v1> fractionalScale;
    WaylandPointer<wp_presentation> presentation;
};

// A surface in the overlay layer that covers the main output and takes no input. When the main
// output becomes another one or goes, it is made anew.
class WaylandWindow final : public Window {
  public:
    WaylandWindow(AsioRunLoop& runLoop, WaylandConnection& connection, WaylandGlobals& globals,
                  WaylandOutputs& outputs);
    ~WaylandWindow() override;
    WaylandWindow(const WaylandWindow&) = delete;
    WaylandWindow& operator=(const WaylandWindow&) = delete;

    [[nodiscard]] std::uint32_t contextId() const override;
    void setHidden(bool hidden) override;
    void makeKeyAndVisible() override;
    [[nodiscard]] bool readyForFrame() const override;
    Frame beginFrame() override;
    void commitFrame(std::span<const PixelRect> damage) override;
    void requestRefresh() override;
    [[nodiscard]] MachTime presentationTime(MachTime now) const override;
    void setFrameHandlers(FrameHandlers handlers) override;

    // Does what the events so far ask for. To be called after each batch of them: a compositor
    // sends several configures in a row, and all that it has to say of an output first.
    void settle();
    void outputsChanged() { ++outputChanges_; }
    // Until then the compositor's time stamps are of a clock that is not ours.
    void setPresentationIsMonotonic() { presentationIsMonotonic_ = true; }

  private:
    // Destroyed from the last to the first.
    struct Surface {
        std::uint32_t output = 0;  // the number of its output's global
        WaylandPointer<wl_surface> surface;
        WaylandPointer<wp_viewport> viewport;
        WaylandPointer<wp_fractional_scale_v1> fractionalScale;
        WaylandPointer<zwlr_layer_surface_v1> layer;
        std::optional<std::uint32_t> serial;  // of a configure that is not yet answered
        PixelSize points;                     // empty before the first configure
        bool closed = false;                  // by the compositor
        WaylandPointer<wl_callback> frame;
        WaylandPointer<struct wp_presentation_feedback> feedback;
    };

    void create();
    void createLayer(Surface& surface);
    void listenScale(Surface& surface);
    void drop();
    void adapt();
    void askForFrame();
    void askForFeedback();
    void refreshed();

    AsioRunLoop& runLoop_;
    WaylandConnection& connection_;
    WaylandGlobals& globals_;
    WaylandOutputs& outputs_;
    FrameHandlers handlers_;
    bool visible_ = false;
    std::unique_ptr<Surface> surface_;
    std::uint64_t outputChanges_ = 1;
    std::uint64_t closedAtChange_ = 0;  // a surface that was closed is made again after a change
    std::uint32_t closedOnOutput_ = 0;  // or when another output is the main one
    double scale_ = 0;
    std::unique_ptr<ShmBuffers> buffers_;
    PixelSize committedSize_;
    bool refreshWanted_ = false;
    bool uncommitted_ = false;
    bool presentationIsMonotonic_ = false;
    Presented presented_;
    // What is still posted when the window is gone finds this expired.
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace skavlo
