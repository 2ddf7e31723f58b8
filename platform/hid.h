// Raw input events, and the client that delivers them.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/time.h"

namespace skavlo {

using HidEventType = std::uint32_t;
inline constexpr HidEventType kHidEventTypeDigitizer = 11;

using HidField = std::uint32_t;
inline constexpr HidField kHidFieldDigitizerX = 0xB0000;
inline constexpr HidField kHidFieldDigitizerY = 0xB0001;
inline constexpr HidField kHidFieldDigitizerIndex = 0xB0005;
inline constexpr HidField kHidFieldDigitizerIdentity = 0xB0006;
inline constexpr HidField kHidFieldDigitizerTouch = 0xB0009;

// A digitizer event carries one child per contact; every other type carries nothing.
struct HidEvent {
    HidEventType type = 0;
    MachTime timeStamp = 0;
    double x = 0;  // normalised or in points, see platform/digitizer/coordinates.h
    double y = 0;
    std::int64_t index = 0;
    std::int64_t identity = 0;
    std::int64_t touch = 0;          // 0: lifted (child) or nothing touches (parent)
    std::vector<HidEvent> children;  // empty: none

    // An unknown field reads as 0.
    [[nodiscard]] std::int64_t integerValue(HidField field) const;
    [[nodiscard]] double floatValue(HidField field) const;
};

using HidEventCallback = void (*)(void* target, void* refcon, void* sender, const HidEvent& event);

// Delivers every event of the machine to the registered callback, on the main thread.
class HidEventSystemClient {
  public:
    virtual ~HidEventSystemClient() = default;
    virtual void scheduleWithMainRunLoop() = 0;
    virtual void registerEventCallback(HidEventCallback callback, void* target, void* refcon) = 0;
    virtual void unregisterEventCallback(HidEventCallback callback, void* target, void* refcon) = 0;
    // The clock of the events' time stamps.
    [[nodiscard]] virtual MachTime mach_absolute_time() const = 0;
};

}  // namespace skavlo
