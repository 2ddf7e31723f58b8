// A screen and a window that exist in memory only.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/geometry.h"
#include "platform/hid.h"
#include "platform/run_loop.h"
#include "platform/screen.h"
#include "platform/time.h"
#include "platform/window_server.h"

namespace skavlo {

class HeadlessScreen final : public Screen {
  public:
    HeadlessScreen(PixelSize pixels, double scale) : pixels_(pixels), scale_(scale) {}
    [[nodiscard]] Rect bounds() const override {
        return {{0, 0}, {pixels_.width / scale_, pixels_.height / scale_}};
    }
    [[nodiscard]] double scale() const override { return scale_; }
    [[nodiscard]] PixelSize pixels() const { return pixels_; }
    void setPixels(PixelSize pixels) { pixels_ = pixels; }

  private:
    PixelSize pixels_;
    double scale_;
};

class HeadlessCaptureState final : public CaptureState {
  public:
    [[nodiscard]] bool isCaptured() const override { return captured_; }
    void setDidChangeHandler(std::function<void()> handler) override {
        handler_ = std::move(handler);
    }
    void setCaptured(bool captured) {
        captured_ = captured;
        if (handler_) handler_();
    }

  private:
    bool captured_ = false;
    std::function<void()> handler_;
};

// Its one window refreshes when it is told to.
class HeadlessWindowServer final : public WindowServer {
  public:
    explicit HeadlessWindowServer(const HeadlessScreen& screen) : screen_(screen) {}

    std::unique_ptr<Window> createWindow(Rect frame, const WindowTraits& traits) override;
    void registerWindowWithContextID(std::uint32_t /*contextId*/, double /*level*/) override {}

    // What the display shows: premultiplied, rows without gaps.
    [[nodiscard]] const std::vector<std::uint32_t>& pixels() const { return pixels_; }
    [[nodiscard]] const std::vector<PixelRect>& lastDamage() const { return lastDamage_; }
    [[nodiscard]] int frames() const { return frames_; }
    [[nodiscard]] bool refreshRequested() const { return refreshRequested_; }
    // The display refreshes; nothing happens unless the window asked for it.
    void refresh();
    // As when a window server is slow: frames are not accepted until released.
    void holdFrames(bool hold);
    // The screen changed its size: the window follows and has lost its contents.
    void resize();

    [[nodiscard]] bool visible() const { return visible_; }

  private:
    class HeadlessWindow;

    const HeadlessScreen& screen_;
    PixelSize size_;
    std::vector<std::uint32_t> pixels_;
    std::vector<PixelRect> lastDamage_;
    FrameHandlers handlers_;
    int frames_ = 0;
    bool refreshRequested_ = false;
    bool held_ = false;
    bool visible_ = false;
};

// Delivers the events it is given to the registered callback.
class HeadlessHidClient final : public HidEventSystemClient {
  public:
    explicit HeadlessHidClient(const Clock& clock) : clock_(clock) {}
    void scheduleWithMainRunLoop() override { scheduled_ = true; }
    void registerEventCallback(HidEventCallback callback, void* target, void* refcon) override;
    void unregisterEventCallback(HidEventCallback callback, void* target, void* refcon) override;
    [[nodiscard]] MachTime mach_absolute_time() const override {
        return clock_.mach_absolute_time();
    }

    void deliver(const HidEvent& event);
    [[nodiscard]] bool registered() const { return callback_ != nullptr; }
    [[nodiscard]] bool scheduled() const { return scheduled_; }

  private:
    const Clock& clock_;
    HidEventCallback callback_ = nullptr;
    void* target_ = nullptr;
    void* refcon_ = nullptr;
    bool scheduled_ = false;
};

}  // namespace skavlo
