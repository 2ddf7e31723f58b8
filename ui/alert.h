#pragma once

#include <functional>
#include <string>
#include <vector>

namespace skavlo {

enum class AlertActionStyle { standard = 0, cancel = 1, destructive = 2 };

struct AlertAction {
    std::string title;
    AlertActionStyle style = AlertActionStyle::standard;
    std::function<void()> handler = {};  // may be empty; runs when the action has been chosen
};

// A dialog with a title, a message and one or two buttons. Exactly one action is chosen; Escape
// chooses the one with the style `cancel`, or the only one.
struct Alert {
    std::string title;
    std::string message;
    std::vector<AlertAction> actions;
};

}  // namespace skavlo
