// Asks KWin for a cast of its first output, prints the number of the node in PipeWire on a line,
// and holds the cast until it is killed.
#include <kwin_screencast.h>
#include <wayland-client.h>

#include <cstdint>
#include <cstdio>
#include <string_view>

namespace {

struct Globals {
    wl_output* output = nullptr;
    zkde_screencast_unstable_v1* casts = nullptr;
};

void addGlobal(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
               std::uint32_t /*version*/) {
    auto& globals = *static_cast<Globals*>(data);
    const auto bind = [&](const wl_interface& wanted) {
        return wl_registry_bind(registry, name, &wanted, 1);
    };
    if (!globals.output && interface == std::string_view(wl_output_interface.name))
        globals.output = static_cast<wl_output*>(bind(wl_output_interface));
    if (interface == std::string_view(zkde_screencast_unstable_v1_interface.name))
        globals.casts =
            static_cast<zkde_screencast_unstable_v1*>(bind(zkde_screencast_unstable_v1_interface));
}

void created(void* /*data*/, zkde_screencast_stream_unstable_v1* /*stream*/, std::uint32_t node) {
    std::printf("%u\n", node);
    std::fflush(stdout);
}

void failed(void* /*data*/, zkde_screencast_stream_unstable_v1* /*stream*/, const char* error) {
    std::fprintf(stderr, "%s\n", error);
}

}  // namespace

int main() {
    wl_display* display = wl_display_connect(nullptr);
    if (!display) return 1;
    Globals globals;
    static constexpr wl_registry_listener kListener{
        .global = &addGlobal, .global_remove = [](void*, wl_registry*, std::uint32_t) {}};
    wl_registry_add_listener(wl_display_get_registry(display), &kListener, &globals);
    wl_display_roundtrip(display);
    if (!globals.output || !globals.casts) {
        std::fputs("KWin offers no casts\n", stderr);
        return 1;
    }
    static constexpr zkde_screencast_stream_unstable_v1_listener kStreamListener{
        .closed = [](void*, zkde_screencast_stream_unstable_v1*) {},
        .created = &created,
        .failed = &failed};
    zkde_screencast_stream_unstable_v1_add_listener(
        zkde_screencast_unstable_v1_stream_output(globals.casts, globals.output,
                                                  ZKDE_SCREENCAST_UNSTABLE_V1_POINTER_HIDDEN),
        &kStreamListener, nullptr);
    while (wl_display_dispatch(display) >= 0) {
    }
    return 1;
}
