#include "overlay/hid_input.h"

#include <algorithm>
#include <utility>

#include "overlay/overlay_app_delegate.h"

namespace skavlo {

HidEventSystemClient* g_skv_hidClient = nullptr;
bool g_skv_hidRegistered = false;
MachTime g_skv_hidEnableTime = 0;
bool g_skv_hardware_suppressed = false;

void skv_enable_hid_callback() {
    if (!g_skv_hidClient || g_skv_hidRegistered) return;
    g_skv_hidEnableTime = g_skv_hidClient->mach_absolute_time();
    g_skv_hidClient->registerEventCallback(skv_hid_event_callback, nullptr, nullptr);
    g_skv_hidRegistered = true;
}

void skv_disable_hid_callback() {
    if (!g_skv_hidClient || !g_skv_hidRegistered) return;
    g_skv_hidClient->unregisterEventCallback(skv_hid_event_callback, nullptr, nullptr);
    g_skv_hidRegistered = false;
}

FingerId fingerId(const HidEvent& child, std::size_t position) {
    constexpr std::uint32_t kFirstIndexTooLarge = 21;
    auto id = child.integerValue(kHidFieldDigitizerIndex);
    if (static_cast<std::uint32_t>(id) >= kFirstIndexTooLarge) {
        id = child.integerValue(kHidFieldDigitizerIdentity);
    }
    const auto narrow = static_cast<std::int32_t>(id);
    return narrow < 1 ? static_cast<FingerId>(position) + 1 : narrow;
}

Point screenPoint(double x, double y, Size screen) {
    // Larger than 1 on purpose: up to twice the screen counts as normalised.
    constexpr double kLargestNormalised = 2.0;
    const bool normalised = x >= 0 && x <= kLargestNormalised && y >= 0 && y <= kLargestNormalised;
    if (!normalised) return {x, y};
    return {x * std::min(screen.width, screen.height), y * std::max(screen.width, screen.height)};
}

TouchBatch makeTouchBatch(const HidEvent& event, Size screen) {
    TouchBatch batch;
    batch.parentTouch = event.integerValue(kHidFieldDigitizerTouch);
    for (std::size_t i = 0; i < event.children.size(); ++i) {
        const HidEvent& child = event.children[i];
        if (child.type != kHidEventTypeDigitizer) continue;
        const FingerId id = fingerId(child, i);
        if (child.integerValue(kHidFieldDigitizerTouch) == 0) {
            batch.liftedIds.push_back(id);
            continue;
        }
        batch.activeIds.push_back(id);
        batch.positions[id] = screenPoint(child.floatValue(kHidFieldDigitizerX),
                                          child.floatValue(kHidFieldDigitizerY), screen);
    }
    return batch;
}

namespace {

TouchCanvasViewController* canvas() {
    return g_skv_overlayAppDelegate ? g_skv_overlayAppDelegate->canvasVC.get() : nullptr;
}

// The canvas is looked up afresh for every call, for it may be gone by now.
void deliver(const TouchBatch& batch) {
    for (const FingerId id : batch.activeIds) {
        if (auto* target = canvas()) target->skv_handleTouch(id, batch.positions.at(id));
    }
    for (const FingerId id : batch.liftedIds) {
        if (auto* target = canvas()) target->skv_liftTouch(id);
    }
    if (batch.parentTouch != 0) return;
    if (auto* target = canvas()) target->skv_liftAllTouches();
}

}  // namespace

// Called for every event of the machine: the first two tests come before anything is made.
void skv_hid_event_callback(void* /*target*/, void* /*refcon*/, void* /*sender*/,
                            const HidEvent& event) {
    if (g_skv_hardware_suppressed) return;
    if (event.timeStamp < g_skv_hidEnableTime) return;
    if (!canvas() || event.type != kHidEventTypeDigitizer) return;
    const bool nothingToSay =
        event.children.empty() && event.integerValue(kHidFieldDigitizerTouch) != 0;
    if (nothingToSay) return;
    const OverlayServices& services = g_skv_overlayAppDelegate->services();
    services.runLoop.async(
        [batch = makeTouchBatch(event, services.screen.bounds().size)] { deliver(batch); });
}

}  // namespace skavlo
