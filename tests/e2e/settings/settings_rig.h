// The real settings application beside the real overlay on a private X server, worked by mouse and
// keyboard and read through the accessibility bus.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/overlay/overlay_rig.h"
#include "tools/rig/settings_application.h"

namespace skavlo {

class SettingsRig : public OverlayRig {
  protected:
    static constexpr PixelSize kDesktop{1280, 900};

    SettingsRig();
    ~SettingsRig() override;

    // Server, compositor, message bus, settings application; returns once the splash is over.
    void open();
    // With a copy of the program in another directory, for example, or with variables over the own.
    void open(const std::string& executable, const std::vector<std::string>& environment = {});
    // On a server and a compositor that run already.
    void launch(const std::string& executable, const std::vector<std::string>& environment = {});
    // Ends the application as closing its window does.
    void close();

    // Asks again and again; no event tells of every kind of change that tests wait for.
    static bool becomesTrue(const std::function<bool()>& condition);

    rig::SettingsApplication& application() { return *application_; }

    // Waits until the control is there; a failure when it does not come.
    rig::AccessibleItem item(const std::string& role, const std::string& name);
    void click(const std::string& role, const std::string& name);
    // Waits until it is not to be seen any more.
    bool goes(const std::string& role, const std::string& name);
    // Waits for the switch to be so.
    bool switchBecomes(const std::string& name, bool on);

    static std::string customImage();
    // What the file holds now; empty when it cannot be read.
    static PropertyDictionary settings();
    bool settingBecomes(const std::string& key, const PropertyValue& value);

    // The process named in the file, if it lives.
    static std::optional<pid_t> overlayPid();
    bool overlayComes();
    bool overlayGoes();
    // Waits for so many probes, seen by their reading the process-id file; needs that file.
    static bool probesPass(int count);
    // Processes of this build in the overlay's role.
    static int overlayProcesses();

    std::filesystem::path home_;  // of whoever uses the application; empty at first
    std::optional<rig::SettingsApplication> application_;
};

}  // namespace skavlo
