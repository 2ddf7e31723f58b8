// From raw digitizer events to batches of fingers, and from there to the canvas.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "overlay/touch_canvas_view_controller.h"
#include "platform/hid.h"

namespace skavlo {

// The process's client of input events, or null. Main thread only, as everything here.
extern HidEventSystemClient* g_skv_hidClient;
// The callback is registered with the client.
extern bool g_skv_hidRegistered;
// When it was last registered; events stamped earlier are dropped.
extern MachTime g_skv_hidEnableTime;
// Drops every event, registered or not.
extern bool g_skv_hardware_suppressed;

// What one digitizer event says.
struct TouchBatch {
    std::vector<FingerId> activeIds;      // in the order of the event's children
    std::map<FingerId, Point> positions;  // points of the main screen, of every active id
    std::vector<FingerId> liftedIds;
    std::int64_t parentTouch = 0;  // 0: nothing touches any more
};

// The finger a child stands for: its index if 0 to 20, else its identity; a number below 1 is
// replaced by the child's position, counted from 1.
FingerId fingerId(const HidEvent& child, std::size_t position);

// Coordinates up to 2 in both directions are normalised, x by the screen's shorter side and y by
// its longer one; anything else is in points as it stands.
Point screenPoint(double x, double y, Size screen);

TouchBatch makeTouchBatch(const HidEvent& event, Size screen);

void skv_enable_hid_callback();
void skv_disable_hid_callback();
void skv_hid_event_callback(void* target, void* refcon, void* sender, const HidEvent& event);

}  // namespace skavlo
