// touch_injector SOCKET X Y DESCRIPTOR: touches the place in KWin's desktop for a moment for every
// byte from the descriptor. A program of its own, for KWin lets only those do so whose file it can
// see, so not root's.
#include <fake_input.h>
#include <unistd.h>
#include <wayland-client.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    wl_display* display = wl_display_connect(argv[1]);
    if (!display) return 1;
    org_kde_kwin_fake_input* input = nullptr;
    static constexpr wl_registry_listener kListener{
        .global =
            [](void* data, wl_registry* registry, std::uint32_t name, const char* interface,
               std::uint32_t) {
                if (std::string_view(interface) != org_kde_kwin_fake_input_interface.name) return;
                *static_cast<void**>(data) =
                    wl_registry_bind(registry, name, &org_kde_kwin_fake_input_interface, 2);
            },
        .global_remove = [](void*, wl_registry*, std::uint32_t) {}};
    wl_registry* registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &kListener, &input);
    wl_display_roundtrip(display);
    if (!input) return 3;
    org_kde_kwin_fake_input_authenticate(input, "tests", "touches");
    wl_display_roundtrip(display);
    const wl_fixed_t x = wl_fixed_from_int(std::atoi(argv[2]));
    const wl_fixed_t y = wl_fixed_from_int(std::atoi(argv[3]));
    const int orders = std::atoi(argv[4]);
    char byte = 0;
    while (read(orders, &byte, 1) == 1) {
        org_kde_kwin_fake_input_touch_down(input, 0, x, y);
        org_kde_kwin_fake_input_touch_frame(input);
        wl_display_roundtrip(display);
        org_kde_kwin_fake_input_touch_up(input, 0);
        org_kde_kwin_fake_input_touch_frame(input);
        if (wl_display_roundtrip(display) < 0) return 1;
    }
    return 0;
}
