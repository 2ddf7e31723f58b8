// Runs a loop until something was seen, and keeps the digitizer events that came.
#pragma once

#include <asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <vector>

#include "platform/hid.h"

namespace skavlo::test {

inline constexpr std::chrono::seconds kDeadline{10};

// False when the deadline passed first.
inline bool runUntil(asio::io_context& context, const std::function<bool()>& seen,
                     std::chrono::steady_clock::duration limit = kDeadline) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!seen()) {
        if (context.stopped()) context.restart();
        if (context.run_one_until(deadline) == 0 && std::chrono::steady_clock::now() >= deadline)
            return seen();
    }
    return true;
}

struct EventLog {
    std::vector<HidEvent> events;

    static void callback(void* target, void*, void*, const HidEvent& event) {
        static_cast<EventLog*>(target)->events.push_back(event);
    }
    [[nodiscard]] const HidEvent& last() const { return events.back(); }
    // Contacts touching after the last event.
    [[nodiscard]] std::size_t touching() const {
        std::size_t count = 0;
        if (!events.empty())
            for (const HidEvent& child : last().children) count += child.touch != 0 ? 1 : 0;
        return count;
    }
    // Children of all events that end a contact.
    [[nodiscard]] std::size_t ended() const {
        std::size_t count = 0;
        for (const HidEvent& event : events)
            for (const HidEvent& child : event.children) count += child.touch == 0 ? 1 : 0;
        return count;
    }
};

}  // namespace skavlo::test
