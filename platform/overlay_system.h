#pragma once

#include <functional>
#include <optional>

#include "platform/files.h"
#include "platform/hid.h"
#include "platform/notifications.h"
#include "platform/process.h"

namespace skavlo {

// What the overlay's start-up asks of the system, under the names of the platform it was conceived
// for, in the order in which it asks. A platform without a counterpart leaves a call empty.
class OverlaySystem {
  public:
    virtual ~OverlaySystem() = default;
    [[nodiscard]] virtual Files& files() = 0;
    [[nodiscard]] virtual Process& process() = 0;
    [[nodiscard]] virtual Notifications& notifications() = 0;

    // Makes the main screen known; false when there is no window server to reach.
    virtual bool UIScreen_initialize() = 0;
    virtual void CFRunLoopGetCurrent() {}
    virtual void GSInitialize() {}
    virtual void BKSDisplayServicesStart() {}
    virtual void UIApplicationInitialize() {}
    virtual void UIApplicationInstantiateSingleton() {}
    // Makes the overlay's delegate and keeps it where the input callback finds it.
    virtual void setNewDelegate() = 0;
    [[nodiscard]] virtual bool respondsToAccessibilityInit() const { return false; }
    virtual void accessibilityInit() {}
    // Null: the overlay goes on without touch input. Lives as long as the system.
    virtual HidEventSystemClient* IOHIDEventSystemClientCreate() = 0;
    virtual void NSRunLoop_currentRunLoop() {}
    [[nodiscard]] virtual std::optional<int> operatingSystemMajorVersion() const = 0;
    virtual void GSEventInitialize(bool /*registerPurple*/) {}
    virtual void GSEventPushRunLoopMode() {}
    // Finishes the launch: calls the delegate.
    virtual void completeAndRunAsPlugin() = 0;
    // Returns the process's exit status.
    virtual int CFRunLoopRun() = 0;
    // Ends the process with this status.
    virtual void exit(int status) = 0;
};

}  // namespace skavlo
