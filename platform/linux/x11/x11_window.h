#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/linux/x11/cutout.h"
#include "platform/linux/x11/refresh_clock.h"
#include "platform/linux/x11/x11_buffer.h"
#include "platform/linux/x11/x11_connection.h"
#include "platform/linux/x11/x11_outputs.h"
#include "platform/window_server.h"

namespace skavlo {

// A window with an alpha channel over the main screen that the window manager does not manage and
// that takes no input. Where no compositor runs it is cut to the shape of what it shows.
class X11Window final : public Window {
  public:
    X11Window(AsioRunLoop& runLoop, X11Connection& connection, X11Outputs& outputs);
    ~X11Window() override;
    X11Window(const X11Window&) = delete;
    X11Window& operator=(const X11Window&) = delete;

    [[nodiscard]] std::uint32_t contextId() const override { return window_; }
    void setHidden(bool hidden) override;
    void makeKeyAndVisible() override;
    [[nodiscard]] bool readyForFrame() const override;
    Frame beginFrame() override;
    void commitFrame(std::span<const PixelRect> damage) override;
    void requestRefresh() override;
    void setFrameHandlers(FrameHandlers handlers) override;

    // Above everything, now and whenever another window comes or is raised.
    void keepOnTop();

  private:
    void create();
    void describe();
    void makeClickThrough();
    void windowManagerChanged();
    void renewInputShape();
    void changeInputShape();
    void changeInputShapeLater(int step);
    void handle(const xcb_generic_event_t& event);
    void exposed(const xcb_expose_event_t& event);
    void handleStacking(const xcb_generic_event_t& event, int type);
    void raise();
    void mainScreenChanged();
    void compositorChanged();
    [[nodiscard]] bool compositorRuns() const;
    void becomeReady();
    [[nodiscard]] std::size_t freeSlot() const;
    void resetSlots();
    void refresh();
    void show(std::span<const PixelRect> damage);
    void cut();
    void showAll();

    AsioRunLoop& runLoop_;
    X11Connection& connection_;
    X11Outputs& outputs_;
    FrameHandlers handlers_;
    xcb_window_t window_ = 0;
    xcb_colormap_t colormap_ = 0;
    xcb_gcontext_t gc_ = 0;
    xcb_atom_t compositorSelection_ = 0;
    int fixesEvent_ = -1;
    xcb_atom_t windowManagerCheck_ = 0;
    bool inputShapeIsForgotten_ = false;  // see forgetsInputShapes()
    int inputShape_ = 0;  // the pixel that is its only one counts from 1; 0: it is empty
    std::unique_ptr<Timer> inputShapeTimer_;
    bool composited_ = false;
    bool onTop_ = false;
    bool raiseScheduled_ = false;
    std::unique_ptr<Timer> raiseTimer_;
    PixelRect rect_;
    std::optional<RefreshClock> refreshClock_;
    // Usually the first serves alone: the server copies from it, so it holds the last frame. The
    // second is made when a frame is wanted while the server still reads the first.
    struct Slot {
        std::unique_ptr<X11Buffer> buffer;
        std::uint64_t frame = 0;  // the one it holds; 0 is the empty screen
    };
    std::array<Slot, 2> slots_;
    std::size_t latest_ = 0;   // slot of the last committed frame
    std::size_t drawing_ = 0;  // slot of the frame that was begun
    std::uint64_t frames_ = 0;
    bool anythingShown_ = false;
    // Only while no compositor runs.
    std::unique_ptr<Cutout> cutout_;
    std::unique_ptr<X11Buffer> opaque_;
    bool settling_ = false;      // the display is about to refresh
    std::uint16_t cutting_ = 0;  // sequence of the last request that cut the window
};

}  // namespace skavlo
