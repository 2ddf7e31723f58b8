// An ordinary client of a compositor: one full-screen window, and what input reaches it.
#pragma once

#include <wayland-client.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/result.h"
#include "tests/e2e/overlay/window_touch.h"
#include "tools/rig/wait.h"

namespace skavlo {

class WaylandClient {
  public:
    static Result<std::unique_ptr<WaylandClient>> connect(const std::string& socket);
    ~WaylandClient();
    WaylandClient(const WaylandClient&) = delete;
    WaylandClient& operator=(const WaylandClient&) = delete;

    [[nodiscard]] bool offers(const std::string& interface) const;
    // How many there are.
    [[nodiscard]] std::size_t outputs() const;

    // Returns once the compositor has taken the window's first picture. `colour`: 0xffRRGGBB.
    bool showFullScreen(std::uint32_t colour, const rig::Deadline& deadline);
    [[nodiscard]] PixelSize windowSize() const;

    // What reached the window so far, in its own points.
    [[nodiscard]] const std::vector<Point>& presses() const;
    [[nodiscard]] const std::vector<WindowTouch>& touches() const;

    // Whether the pointer has come over the window.
    [[nodiscard]] bool pointerEntered() const;
    // Whether the compositor offers touches.
    [[nodiscard]] bool hasTouch() const;

    // Of a pointer that this client moves; `place` in points of the whole desktop, which is as
    // large as `extent`. False: the compositor lets it not.
    bool click(PixelPoint place, PixelSize extent);

    // Reads events until the condition holds; false: it does not at the deadline, or the
    // connection broke.
    bool waitUntil(const std::function<bool()>& condition, const rig::Deadline& deadline);
    // What has arrived already.
    void roundTrip();

  private:
    struct State;
    explicit WaylandClient(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}  // namespace skavlo
