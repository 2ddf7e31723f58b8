#include "tools/rig/accessible_tree.h"

#include <atspi/atspi.h>

#include <algorithm>
#include <cstddef>

namespace skavlo::rig {

namespace {

struct ObjectDeleter {
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename T>
using Object = std::unique_ptr<T, ObjectDeleter>;

// Strings are the caller's; a failed call gives none.
std::string taken(char* text) {
    std::string result(text ? text : "");
    g_free(text);
    return result;
}

bool hasState(AtspiAccessible* accessible, AtspiStateType state) {
    const Object<AtspiStateSet> states(atspi_accessible_get_state_set(accessible));
    return states && atspi_state_set_contains(states.get(), state);
}

PixelRect extentsOf(AtspiAccessible* accessible) {
    const Object<AtspiComponent> component(atspi_accessible_get_component_iface(accessible));
    AtspiRect* rect =
        component ? atspi_component_get_extents(component.get(), ATSPI_COORD_TYPE_SCREEN, nullptr)
                  : nullptr;
    const PixelRect result =
        rect ? PixelRect{rect->x, rect->y, rect->width, rect->height} : PixelRect{};
    g_free(rect);
    return result;
}

void readValue(AtspiAccessible* accessible, AccessibleItem& item) {
    const Object<AtspiValue> value(atspi_accessible_get_value_iface(accessible));
    if (value) {
        item.value = atspi_value_get_current_value(value.get(), nullptr);
        item.minimum = atspi_value_get_minimum_value(value.get(), nullptr);
        item.maximum = atspi_value_get_maximum_value(value.get(), nullptr);
    }
}

std::string textOf(AtspiAccessible* accessible) {
    const Object<AtspiText> text(atspi_accessible_get_text_iface(accessible));
    return text ? taken(atspi_text_get_text(text.get(), 0, -1, nullptr)) : std::string();
}

std::vector<std::string> actionsOf(AtspiAccessible* accessible) {
    std::vector<std::string> result;
    const Object<AtspiAction> action(atspi_accessible_get_action_iface(accessible));
    const int count = action ? atspi_action_get_n_actions(action.get(), nullptr) : 0;
    result.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (int i = 0; i < count; ++i) {
        result.push_back(taken(atspi_action_get_action_name(action.get(), i, nullptr)));
    }
    return result;
}

AccessibleItem itemOf(AtspiAccessible* accessible) {
    AccessibleItem item{.role = taken(atspi_accessible_get_role_name(accessible, nullptr)),
                        .name = taken(atspi_accessible_get_name(accessible, nullptr)),
                        .description = taken(atspi_accessible_get_description(accessible, nullptr)),
                        .text = textOf(accessible),
                        .extents = extentsOf(accessible),
                        .actions = actionsOf(accessible),
                        .checked = hasState(accessible, ATSPI_STATE_CHECKED),
                        .enabled = hasState(accessible, ATSPI_STATE_ENABLED),
                        .focused = hasState(accessible, ATSPI_STATE_FOCUSED),
                        .focusable = hasState(accessible, ATSPI_STATE_FOCUSABLE),
                        .showing = hasState(accessible, ATSPI_STATE_SHOWING)};
    readValue(accessible, item);
    return item;
}

Object<AtspiAccessible> childOf(AtspiAccessible* parent, int index) {
    return Object<AtspiAccessible>(atspi_accessible_get_child_at_index(parent, index, nullptr));
}

// Null: there is none. Each question to the program takes its time, so only what tells them apart
// is asked for.
Object<AtspiAccessible> findBelow(AtspiAccessible* parent, const std::string& role,
                                  const std::string& name) {
    const int count = atspi_accessible_get_child_count(parent, nullptr);
    for (int i = 0; i < count; ++i) {
        auto child = childOf(parent, i);
        if (!child) {
            continue;
        }
        if (taken(atspi_accessible_get_name(child.get(), nullptr)) == name &&
            taken(atspi_accessible_get_role_name(child.get(), nullptr)) == role) {
            return child;
        }
        if (auto found = findBelow(child.get(), role, name)) {
            return found;
        }
    }
    return nullptr;
}

// What lies around the one that has the focus may say that it has it, too.
Object<AtspiAccessible> innermostFocused(AtspiAccessible* parent) {
    Object<AtspiAccessible> result;
    const int count = atspi_accessible_get_child_count(parent, nullptr);
    for (int i = 0; i < count && !result; ++i) {
        auto child = childOf(parent, i);
        if (!child) {
            continue;
        }
        result = innermostFocused(child.get());
        if (!result && hasState(child.get(), ATSPI_STATE_FOCUSED)) {
            result = std::move(child);
        }
    }
    return result;
}

// Null: no program of this name is there yet.
std::shared_ptr<void> findApplication(const std::string& name) {
    const Object<AtspiAccessible> desktop(atspi_get_desktop(0));
    // Nothing here runs a main loop, which would keep what is remembered up to date.
    atspi_accessible_set_cache_mask(desktop.get(), ATSPI_CACHE_NONE);
    const int count = atspi_accessible_get_child_count(desktop.get(), nullptr);
    for (int i = 0; i < count; ++i) {
        auto child = childOf(desktop.get(), i);
        if (child && taken(atspi_accessible_get_name(child.get(), nullptr)) == name) {
            atspi_accessible_set_cache_mask(child.get(), ATSPI_CACHE_NONE);
            return {child.release(), ObjectDeleter()};
        }
    }
    return nullptr;
}

}  // namespace

Result<AccessibleTree> AccessibleTree::open(const std::string& application,
                                            const Deadline& deadline) {
    // 0: started now; 1: was started before.
    if (atspi_init() > 1) {
        return Error{"the accessibility bus cannot be reached"};
    }
    while (!deadline.passed()) {
        if (auto found = findApplication(application)) {
            return AccessibleTree(std::move(found));
        }
        waitReadable({}, Deadline(std::chrono::milliseconds(20)));
    }
    return Error{"no program named " + application + " on the accessibility bus"};
}

std::optional<AccessibleItem> AccessibleTree::find(const std::string& role,
                                                   const std::string& name) const {
    const auto found = findBelow(static_cast<AtspiAccessible*>(application_.get()), role, name);
    return found ? std::optional(itemOf(found.get())) : std::nullopt;
}

std::optional<AccessibleItem> AccessibleTree::focused() const {
    const auto found = innermostFocused(static_cast<AtspiAccessible*>(application_.get()));
    return found ? std::optional(itemOf(found.get())) : std::nullopt;
}

bool AccessibleTree::press(const std::string& role, const std::string& name) const {
    const auto found = findBelow(static_cast<AtspiAccessible*>(application_.get()), role, name);
    if (!found) {
        return false;
    }
    const auto actions = actionsOf(found.get());
    const auto which = std::find(actions.begin(), actions.end(), kPressAction);
    const Object<AtspiAction> action(atspi_accessible_get_action_iface(found.get()));
    return which != actions.end() &&
           atspi_action_do_action(action.get(), static_cast<int>(which - actions.begin()), nullptr);
}

}  // namespace skavlo::rig
