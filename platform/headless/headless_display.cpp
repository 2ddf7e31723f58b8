#include "platform/headless/headless_display.h"

#include <utility>

namespace skavlo {

class HeadlessWindowServer::HeadlessWindow final : public Window {
  public:
    explicit HeadlessWindow(HeadlessWindowServer& server) : server_(server) {}
    ~HeadlessWindow() override { server_.handlers_ = {}; }
    HeadlessWindow(const HeadlessWindow&) = delete;
    HeadlessWindow& operator=(const HeadlessWindow&) = delete;

    [[nodiscard]] std::uint32_t contextId() const override { return kContextId; }
    void setHidden(bool hidden) override {
        if (hidden) server_.visible_ = false;
    }
    void makeKeyAndVisible() override { server_.visible_ = true; }
    [[nodiscard]] bool readyForFrame() const override { return !server_.held_; }
    Frame beginFrame() override {
        return {server_.pixels_.data(), server_.size_.width, server_.size_, 1};
    }
    void commitFrame(std::span<const PixelRect> damage) override {
        server_.lastDamage_.assign(damage.begin(), damage.end());
        ++server_.frames_;
    }
    void requestRefresh() override { server_.refreshRequested_ = true; }
    void setFrameHandlers(FrameHandlers handlers) override {
        server_.handlers_ = std::move(handlers);
    }

  private:
    static constexpr std::uint32_t kContextId = 1;
    HeadlessWindowServer& server_;
};

std::unique_ptr<Window> HeadlessWindowServer::createWindow(Rect /*frame*/,
                                                           const WindowTraits& /*traits*/) {
    resize();
    return std::make_unique<HeadlessWindow>(*this);
}

void HeadlessWindowServer::refresh() {
    if (std::exchange(refreshRequested_, false) && handlers_.refresh) handlers_.refresh();
}

void HeadlessWindowServer::holdFrames(bool hold) {
    held_ = hold;
    if (!held_ && handlers_.ready) handlers_.ready();
}

void HeadlessWindowServer::resize() {
    size_ = screen_.pixels();
    pixels_.assign(static_cast<std::size_t>(size_.width) * static_cast<std::size_t>(size_.height),
                   0);
    if (handlers_.invalidated) handlers_.invalidated();
}

void HeadlessHidClient::registerEventCallback(HidEventCallback callback, void* target,
                                              void* refcon) {
    callback_ = callback;
    target_ = target;
    refcon_ = refcon;
}

void HeadlessHidClient::unregisterEventCallback(HidEventCallback callback, void* /*target*/,
                                                void* /*refcon*/) {
    if (callback_ == callback) callback_ = nullptr;
}

void HeadlessHidClient::deliver(const HidEvent& event) {
    if (callback_) callback_(target_, refcon_, this, event);
}

}  // namespace skavlo
