// A client's connection to an X server.
#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "platform/geometry.h"
#include "platform/result.h"
#include "tools/rig/wait.h"

namespace skavlo::rig {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }  // NOLINT: malloc'ed by xcb
};

// Replies and events, which the caller owns.
template <typename T>
using XcbPointer = std::unique_ptr<T, FreeDeleter>;

class Display {
  public:
    // `cookie` is the secret of MIT-MAGIC-COOKIE-1; empty: what the environment offers.
    static Result<Display> connect(const std::string& name, const std::string& cookie = {});

    [[nodiscard]] xcb_connection_t* get() const { return connection_.get(); }
    [[nodiscard]] const xcb_screen_t& screen() const;
    [[nodiscard]] xcb_window_t root() const { return screen().root; }
    // Of this moment, not of the connection's first.
    [[nodiscard]] PixelSize rootSize() const;
    [[nodiscard]] xcb_atom_t atom(const std::string& name) const;

    // Adds to the events of the root window that are delivered to this connection.
    void selectRootEvents(std::uint32_t mask) const;
    // The next event; null: the deadline passed, the connection broke or, when some are given,
    // one of the descriptors became readable.
    XcbPointer<xcb_generic_event_t> waitForEvent(const Deadline& deadline,
                                                 const std::vector<int>& interruptions = {}) const;
    // Returns once the server has carried out every request so far; false: the connection broke.
    bool sync() const;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    explicit Display(xcb_connection_t* connection) : connection_(connection) {}

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
};

}  // namespace skavlo::rig
