// kwin_output NAME 0|1: switches an output of KWin off or on; fails where KWin refuses.
#include <kwin_outputs.h>
#include <wayland-client.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace {

struct State {
    std::string_view wanted;
    kde_output_device_v2* output = nullptr;
    kde_output_management_v2* management = nullptr;
    std::optional<bool> applied = std::nullopt;
};

void takeIfWanted(void* data, kde_output_device_v2* output, const char* name) {
    auto& state = *static_cast<State*>(data);
    if (name == state.wanted) state.output = output;
}

// Of all that KWin tells of an output only its name matters.
void listen(State& state, kde_output_device_v2* output) {
    static constexpr kde_output_device_v2_listener kListener{
        .geometry = [](void*, kde_output_device_v2*, std::int32_t, std::int32_t, std::int32_t,
                       std::int32_t, std::int32_t, const char*, const char*, std::int32_t) {},
        .current_mode = [](void*, kde_output_device_v2*, kde_output_device_mode_v2*) {},
        .mode = [](void*, kde_output_device_v2*, kde_output_device_mode_v2*) {},
        .done = [](void*, kde_output_device_v2*) {},
        .scale = [](void*, kde_output_device_v2*, wl_fixed_t) {},
        .edid = [](void*, kde_output_device_v2*, const char*) {},
        .enabled = [](void*, kde_output_device_v2*, std::int32_t) {},
        .uuid = [](void*, kde_output_device_v2*, const char*) {},
        .serial_number = [](void*, kde_output_device_v2*, const char*) {},
        .eisa_id = [](void*, kde_output_device_v2*, const char*) {},
        .capabilities = [](void*, kde_output_device_v2*, std::uint32_t) {},
        .overscan = [](void*, kde_output_device_v2*, std::uint32_t) {},
        .vrr_policy = [](void*, kde_output_device_v2*, std::uint32_t) {},
        .rgb_range = [](void*, kde_output_device_v2*, std::uint32_t) {},
        .name = &takeIfWanted};
    kde_output_device_v2_add_listener(output, &kListener, &state);
}

void addGlobal(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
               std::uint32_t /*version*/) {
    auto& state = *static_cast<State*>(data);
    const auto bind = [&](const wl_interface& wanted) {
        return interface == std::string_view(wanted.name)
                   ? wl_registry_bind(registry, name, &wanted, 2)
                   : nullptr;
    };
    if (void* output = bind(kde_output_device_v2_interface))
        listen(state, static_cast<kde_output_device_v2*>(output));
    if (void* management = bind(kde_output_management_v2_interface))
        state.management = static_cast<kde_output_management_v2*>(management);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) return 2;
    wl_display* display = wl_display_connect(nullptr);
    if (!display) return 1;
    State state{.wanted = arguments[1]};
    static constexpr wl_registry_listener kListener{
        .global = &addGlobal, .global_remove = [](void*, wl_registry*, std::uint32_t) {}};
    wl_registry_add_listener(wl_display_get_registry(display), &kListener, &state);
    wl_display_roundtrip(display);
    wl_display_roundtrip(display);
    if (!state.output || !state.management) return 3;
    static constexpr kde_output_configuration_v2_listener kAnswer{
        .applied = [](void* data,
                      kde_output_configuration_v2*) { static_cast<State*>(data)->applied = true; },
        .failed = [](void* data,
                     kde_output_configuration_v2*) { static_cast<State*>(data)->applied = false; }};
    auto* configuration = kde_output_management_v2_create_configuration(state.management);
    kde_output_configuration_v2_add_listener(configuration, &kAnswer, &state);
    kde_output_configuration_v2_enable(configuration, state.output, std::atoi(arguments[2]));
    kde_output_configuration_v2_apply(configuration);
    while (!state.applied && wl_display_dispatch(display) >= 0) {
    }
    return state.applied.value_or(false) ? 0 : 4;
}
