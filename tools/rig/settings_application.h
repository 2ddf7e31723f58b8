// The settings application on a private X server, worked as a person does: found by what assistive
// technology reads, clicked and dragged with the mouse.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/result.h"
#include "tools/rig/accessible_tree.h"
#include "tools/rig/child.h"
#include "tools/rig/pointer.h"
#include "tools/rig/session_bus.h"
#include "tools/rig/x_server.h"

namespace skavlo::rig {

// How assistive technology calls the kinds of controls.
inline constexpr const char* kButtonRole = "push button";
inline constexpr const char* kSliderRole = "slider";
inline constexpr const char* kSwitchRole = "check box";

class SettingsApplication {
  public:
    // Returns once the splash is over. One in a process's life, because the accessibility bus is
    // chosen once. The display, which outlives this, is of the same server. More variables for it
    // alone: NAME=VALUE.
    static Result<SettingsApplication> start(const XServer& server, const Display& display,
                                             const std::string& executable,
                                             const std::vector<std::string>& more = {});

    [[nodiscard]] Child& process() { return process_; }
    [[nodiscard]] Pointer& pointer() { return pointer_; }
    [[nodiscard]] const AccessibleTree& tree() const { return tree_; }

    // It may have to be scrolled to. None: it did not come before the deadline.
    [[nodiscard]] std::optional<AccessibleItem> waitFor(const std::string& role,
                                                        const std::string& name,
                                                        const Deadline& deadline) const;
    // Turns the wheel until the control can be clicked and rests.
    std::optional<AccessibleItem> scrollTo(const std::string& role, const std::string& name,
                                           const Deadline& deadline);
    bool click(const std::string& role, const std::string& name, const Deadline& deadline);
    // Drags the slider's thumb to this share of its range, 0 to 1.
    bool dragSlider(const std::string& name, double share, const Deadline& deadline);

  private:
    SettingsApplication(SessionBus bus, Child process, AccessibleTree tree, const Display& display)
        : bus_(std::move(bus)),
          process_(std::move(process)),
          tree_(std::move(tree)),
          pointer_(display),
          screen_(display.rootSize()) {}

    // Where it is next; none: it rests.
    [[nodiscard]] std::optional<AccessibleItem> waitForMove(const std::string& role,
                                                            const std::string& name,
                                                            const AccessibleItem& from) const;

    SessionBus bus_;
    Child process_;
    AccessibleTree tree_;
    Pointer pointer_;
    PixelSize screen_;
};

}  // namespace skavlo::rig
