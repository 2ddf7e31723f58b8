#pragma once

#include <asio/signal_set.hpp>
#include <memory>
#include <string>

#include "platform/linux/capture/capture_monitor.h"
#include "platform/linux/image/raster_client.h"
#include "platform/linux/input/input_selector.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/notify/socket_notifications.h"
#include "platform/linux/plist/plist_property_lists.h"
#include "platform/linux/posix/posix_files.h"
#include "platform/linux/posix/posix_process.h"
#include "platform/linux/window_servers/open.h"
#include "platform/overlay_system.h"
#include "settings/settings_directory.h"

namespace skavlo {

// The overlay on Linux: every part of the platform, and how the process ends.
class LinuxOverlaySystem final : public OverlaySystem {
  public:
    LinuxOverlaySystem(SettingsDirectory directory, const std::string& runDirectory,
                       const std::string& rasterProgram);
    ~LinuxOverlaySystem() override;
    LinuxOverlaySystem(const LinuxOverlaySystem&) = delete;
    LinuxOverlaySystem& operator=(const LinuxOverlaySystem&) = delete;

    [[nodiscard]] Files& files() override { return files_; }
    [[nodiscard]] Process& process() override { return process_; }
    [[nodiscard]] Notifications& notifications() override { return notifications_; }
    bool UIScreen_initialize() override;
    void setNewDelegate() override;
    HidEventSystemClient* IOHIDEventSystemClientCreate() override;
    [[nodiscard]] std::optional<int> operatingSystemMajorVersion() const override;
    void completeAndRunAsPlugin() override;
    int CFRunLoopRun() override;
    void exit(int status) override;

  private:
    void end(int status);
    void watchCapture();
    void layoutChanged();
    void sayWithoutInput() const;

    SettingsDirectory directory_;
    AsioRunLoop runLoop_;
    MonotonicClock clock_;
    PosixFiles files_;
    PosixProcess process_;
    PlistPropertyLists propertyLists_;
    SocketNotifications notifications_;
    CaptureMonitor captureState_;
    RasterClient rasterizer_;
    asio::signal_set signals_;
    std::unique_ptr<DesktopWindowServer> windowServer_;
    WindowServerKind windowServerKind_ = WindowServerKind::none;
    OutputLayout shownLayout_;  // that the markers were placed on
    std::unique_ptr<InputSelector> input_;
};

}  // namespace skavlo
