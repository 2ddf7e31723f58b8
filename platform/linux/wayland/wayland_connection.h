#pragma once

#include <asio/posix/stream_descriptor.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/wayland/wayland_pointer.h"
#include "platform/result.h"

namespace skavlo {

// One connection to a compositor, read by the run loop.
class WaylandConnection {
  public:
    struct Global {
        std::uint32_t name;
        std::string interface;
        std::uint32_t version;
    };
    using GlobalHandler = std::function<void(const Global&)>;

    // Connects to what WAYLAND_DISPLAY names, relative to XDG_RUNTIME_DIR or as an absolute path,
    // and asks what is offered there. Unset or empty it names nothing: an error.
    static Result<std::unique_ptr<WaylandConnection>> open(AsioRunLoop& runLoop);
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    [[nodiscard]] wl_display* get() const { return display_; }
    [[nodiscard]] bool offers(const wl_interface& interface) const;
    // Null: not offered in this version or a later one.
    template <typename T>
    WaylandPointer<T> bind(const wl_interface& interface, std::uint32_t least, std::uint32_t most) {
        const Global* global = find(interface);
        return WaylandPointer<T>(global ? static_cast<T*>(bind(*global, interface, least, most))
                                        : nullptr);
    }
    // Null: the global is too old.
    void* bind(const Global& global, const wl_interface& interface, std::uint32_t least,
               std::uint32_t most);
    [[nodiscard]] const std::vector<Global>& globals() const { return globals_; }

    // Of globals that come and go after open().
    void setGlobalHandlers(GlobalHandler added, GlobalHandler removed);
    // Called once when the compositor is gone.
    void setLostHandler(std::function<void()> handler) { lost_ = std::move(handler); }
    // Called after each batch of events, before the loop sleeps again.
    void setIdleHandler(std::function<void()> handler) { idle_ = std::move(handler); }

    // Waits until the compositor has carried out every request so far; before start() only.
    void roundTrip() { wl_display_roundtrip(display_); }
    void start();
    void flush();

  private:
    WaylandConnection(AsioRunLoop& runLoop, wl_display* display);
    void listen();
    [[nodiscard]] const Global* find(const wl_interface& interface) const;
    void wait();
    void pump();
    void endOnError();

    AsioRunLoop& runLoop_;
    wl_display* display_;
    asio::posix::stream_descriptor descriptor_;
    WaylandPointer<wl_registry> registry_;
    std::vector<Global> globals_;
    GlobalHandler added_;
    GlobalHandler removed_;
    std::function<void()> lost_;
    std::function<void()> idle_;
    bool waitsToWrite_ = false;
};

}  // namespace skavlo
