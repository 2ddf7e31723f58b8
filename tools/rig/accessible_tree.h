// A program's user interface as assistive technology sees it: what is there, where, and in which
// state.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/result.h"
#include "tools/rig/wait.h"

namespace skavlo::rig {

inline constexpr const char* kPressAction = "Press";

struct AccessibleItem {
    std::string role;  // "push button", "slider", "check box" ...
    std::string name;
    std::string description;
    std::string text;   // of a text field
    PixelRect extents;  // on the screen
    std::optional<double> value = {};
    double minimum = 0;  // of the value
    double maximum = 0;
    std::vector<std::string> actions;
    bool checked = false;
    bool enabled = false;
    bool focused = false;
    bool focusable = false;
    bool showing = false;

    [[nodiscard]] PixelPoint center() const {
        return {extents.x + extents.width / 2, extents.y + extents.height / 2};
    }
};

// Uses the message bus of this process's environment, which must not change afterwards.
class AccessibleTree {
  public:
    // Waits until the program with this name is there.
    static Result<AccessibleTree> open(const std::string& application, const Deadline& deadline);

    // The first one with this role and name, parents before children; asked for afresh each time.
    [[nodiscard]] std::optional<AccessibleItem> find(const std::string& role,
                                                     const std::string& name) const;
    // The innermost one that has the keyboard's focus.
    [[nodiscard]] std::optional<AccessibleItem> focused() const;
    // Has it do what a click on it would do; false: it is not there or offers no such thing.
    [[nodiscard]] bool press(const std::string& role, const std::string& name) const;

  private:
    explicit AccessibleTree(std::shared_ptr<void> application)
        : application_(std::move(application)) {}

    std::shared_ptr<void> application_;
};

}  // namespace skavlo::rig
