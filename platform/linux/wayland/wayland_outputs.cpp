#include "platform/linux/wayland/wayland_outputs.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace skavlo {

WaylandOutputs::WaylandOutputs(WaylandConnection& connection) : connection_(connection) {
    constexpr std::uint32_t kExtendedVersion = 3;
    manager_ = connection_.bind<zxdg_output_manager_v1>(zxdg_output_manager_v1_interface, 1,
                                                        kExtendedVersion);
    for (const auto& global : connection_.globals()) add(global);
    connection_.setGlobalHandlers([this](const auto& global) { add(global); },
                                  [this](const auto& global) { remove(global); });
}

WaylandOutputs::~WaylandOutputs() {
    connection_.setGlobalHandlers({}, {});
}

void WaylandOutputs::add(const WaylandConnection::Global& global) {
    constexpr std::uint32_t kFirstWithDone = 2;
    constexpr std::uint32_t kNewest = 4;
    if (global.interface != wl_output_interface.name) return;
    auto* bound = static_cast<wl_output*>(
        connection_.bind(global, wl_output_interface, kFirstWithDone, kNewest));
    if (!bound) return;
    // NOLINTNEXTLINE(modernize-make-unique): it takes no aggregate with every compiler
    outputs_.push_back(std::unique_ptr<Output>(
        new Output{*this, global.name, WaylandPointer<wl_output>(bound), {}, {}, {}}));
    Output& output = *outputs_.back();
    listen(output);
    if (!manager_) return;
    output.extended.reset(zxdg_output_manager_v1_get_xdg_output(manager_.get(), bound));
    listenExtended(output);
}

void WaylandOutputs::remove(const WaylandConnection::Global& global) {
    if (std::erase_if(outputs_, [&](const auto& o) { return o->global == global.name; }) > 0) {
        changed();
    }
}

void WaylandOutputs::listen(Output& output) {
    static constexpr wl_output_listener kListener{
        .geometry =
            [](void* data, wl_output*, std::int32_t x, std::int32_t y, std::int32_t, std::int32_t,
               std::int32_t, const char*, const char*, std::int32_t transform) {
                Output& self = *static_cast<Output*>(data);
                self.pending.size.transform = transform;
                if (!self.positionFromExtended) self.pending.position = {x, y};
            },
        .mode =
            [](void* data, wl_output*, std::uint32_t flags, std::int32_t width, std::int32_t height,
               std::int32_t) {
                if ((flags & WL_OUTPUT_MODE_CURRENT) == 0) return;
                static_cast<Output*>(data)->pending.size.mode = {width, height};
            },
        .done = [](void* data, wl_output*) { done(*static_cast<Output*>(data)); },
        .scale =
            [](void* data, wl_output*, std::int32_t factor) {
                static_cast<Output*>(data)->pending.size.integerScale = factor;
            },
        .name = [](void* data, wl_output*,
                   const char* name) { static_cast<Output*>(data)->pending.name = name; },
        .description = [](void*, wl_output*, const char*) {}};
    wl_output_add_listener(output.output.get(), &kListener, &output);
}

void WaylandOutputs::listenExtended(Output& output) {
    static constexpr zxdg_output_v1_listener kListener{
        .logical_position =
            [](void* data, zxdg_output_v1*, std::int32_t x, std::int32_t y) {
                Output& self = *static_cast<Output*>(data);
                self.positionFromExtended = true;
                self.pending.position = {x, y};
            },
        .logical_size =
            [](void* data, zxdg_output_v1*, std::int32_t width, std::int32_t height) {
                static_cast<Output*>(data)->pending.size.logical = {width, height};
            },
        // Before version 3; later ones leave it to the output's own.
        .done = [](void* data, zxdg_output_v1*) { done(*static_cast<Output*>(data)); },
        .name = [](void* data, zxdg_output_v1*,
                   const char* name) { static_cast<Output*>(data)->pending.name = name; },
        .description = [](void*, zxdg_output_v1*, const char*) {}};
    zxdg_output_v1_add_listener(output.extended.get(), &kListener, &output);
}

void WaylandOutputs::done(Output& output) {
    if (output.current == output.pending || output.pending.size.mode == PixelSize{}) return;
    output.current = output.pending;
    output.outputs.changed();
}

void WaylandOutputs::changed() {
    OutputLayout layout;
    inLayout_.clear();
    for (const auto& output : outputs_) {
        if (!output->current) continue;
        const State& state = *output->current;
        const OutputTurn turn = turnOfTransform(state.size.transform);
        const PixelSize size = logicalSize(state.size);
        const PixelRect rect{state.position.x, state.position.y, size.width, size.height};
        layout.outputs.push_back({.name = state.name,
                                  .rect = rect,
                                  .rotation = turn.rotation,
                                  .reflectX = turn.reflectX,
                                  .internal = isInternalConnector(state.name)});
        layout.desktop.width = std::max(layout.desktop.width, rect.right());
        layout.desktop.height = std::max(layout.desktop.height, rect.bottom());
        inLayout_.push_back(output.get());
    }
    layout.main = chooseMainOutput(layout.outputs, touchOutput_);
    layout_ = std::move(layout);
    for (const auto& handler : changeHandlers_) handler();
}

void WaylandOutputs::setTouchOutput(const std::string& name) {
    touchOutput_ = name;
    if (chooseMainOutput(layout_.outputs, touchOutput_) != layout_.main) changed();
}

const WaylandOutputs::Output* WaylandOutputs::mainOutput() const {
    return layout_.main < inLayout_.size() ? inLayout_[layout_.main] : nullptr;
}

wl_output* WaylandOutputs::main() const {
    const Output* output = mainOutput();
    return output ? output->output.get() : nullptr;
}

std::uint32_t WaylandOutputs::mainName() const {
    const Output* output = mainOutput();
    return output ? output->global : 0;
}

void WaylandOutputs::setPreferredScale(std::optional<std::uint32_t> scale) {
    preferredScale_ = scale;
}

Rect WaylandOutputs::bounds() const {
    if (!mainOutput()) return {};
    const PixelRect& rect = layout_.outputs[layout_.main].rect;
    return {{0, 0}, {static_cast<double>(rect.width), static_cast<double>(rect.height)}};
}

double WaylandOutputs::scale() const {
    const Output* output = mainOutput();
    return output ? surfaceScale(output->current->size, preferredScale_, hasViewports_) : 1;
}

}  // namespace skavlo
