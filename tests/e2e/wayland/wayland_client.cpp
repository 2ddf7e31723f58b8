#include "tests/e2e/wayland/wayland_client.h"

#include <linux/input-event-codes.h>
#include <sys/mman.h>
#include <unistd.h>
#include <virtual_pointer.h>
#include <xdg-shell.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace skavlo {

struct WaylandClient::State {
    wl_display* display = nullptr;
    wl_registry* registry = nullptr;
    std::map<std::string, std::pair<std::uint32_t, std::uint32_t>> globals;  // number, version
    std::set<std::uint32_t> outputs;                                         // numbers
    wl_compositor* compositor = nullptr;
    wl_shm* shm = nullptr;
    wl_seat* seat = nullptr;
    wl_pointer* pointer = nullptr;
    wl_touch* touch = nullptr;
    xdg_wm_base* shell = nullptr;
    zwlr_virtual_pointer_v1* virtualPointer = nullptr;
    wl_surface* surface = nullptr;
    PixelSize size;
    std::uint32_t colour = 0;
    bool shown = false;
    bool entered = false;
    Point pointerPlace;
    std::vector<Point> presses;
    std::map<std::int32_t, Point> fingers;
    std::vector<WindowTouch> touches;

    template <typename T>
    T* bind(const wl_interface& interface, std::uint32_t most) {
        const auto it = globals.find(interface.name);
        if (it == globals.end()) return nullptr;
        return static_cast<T*>(wl_registry_bind(registry, it->second.first, &interface,
                                                std::min(it->second.second, most)));
    }
    void draw();
    void listenSeat();
    void listenPointer();
    void listenTouch();
    void noteTouch(WindowTouch::Kind kind, std::int32_t finger, wl_fixed_t x, wl_fixed_t y);
};

void WaylandClient::State::draw() {
    const std::size_t pixels =
        static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    const std::size_t bytes = pixels * 4;
    const rig::FileDescriptor memory(memfd_create("window", MFD_CLOEXEC));
    if (ftruncate(memory.get(), static_cast<off_t>(bytes)) != 0) return;
    void* address = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, memory.get(), 0);
    if (address == MAP_FAILED) return;
    std::fill_n(static_cast<std::uint32_t*>(address), pixels, colour);
    munmap(address, bytes);
    wl_shm_pool* pool = wl_shm_create_pool(shm, memory.get(), static_cast<std::int32_t>(bytes));
    wl_buffer* buffer = wl_shm_pool_create_buffer(pool, 0, size.width, size.height, size.width * 4,
                                                  WL_SHM_FORMAT_XRGB8888);
    wl_shm_pool_destroy(pool);
    wl_surface_attach(surface, buffer, 0, 0);
    wl_surface_damage(surface, 0, 0, size.width, size.height);
    wl_surface_commit(surface);
    shown = true;
}

void WaylandClient::State::listenPointer() {
    static constexpr wl_pointer_listener kListener{
        .enter =
            [](void* data, wl_pointer*, std::uint32_t, wl_surface*, wl_fixed_t x, wl_fixed_t y) {
                auto& self = *static_cast<State*>(data);
                self.entered = true;
                self.pointerPlace = {wl_fixed_to_double(x), wl_fixed_to_double(y)};
            },
        .leave = [](void*, wl_pointer*, std::uint32_t, wl_surface*) {},
        .motion =
            [](void* data, wl_pointer*, std::uint32_t, wl_fixed_t x, wl_fixed_t y) {
                static_cast<State*>(data)->pointerPlace = {wl_fixed_to_double(x),
                                                           wl_fixed_to_double(y)};
            },
        .button =
            [](void* data, wl_pointer*, std::uint32_t, std::uint32_t, std::uint32_t,
               std::uint32_t state) {
                auto& self = *static_cast<State*>(data);
                if (state == WL_POINTER_BUTTON_STATE_PRESSED) {
                    self.presses.push_back(self.pointerPlace);
                }
            },
        .axis = [](void*, wl_pointer*, std::uint32_t, std::uint32_t, wl_fixed_t) {},
        .frame = [](void*, wl_pointer*) {},
        .axis_source = [](void*, wl_pointer*, std::uint32_t) {},
        .axis_stop = [](void*, wl_pointer*, std::uint32_t, std::uint32_t) {},
        .axis_discrete = [](void*, wl_pointer*, std::uint32_t, std::int32_t) {},
        .axis_value120 = [](void*, wl_pointer*, std::uint32_t, std::int32_t) {}};
    wl_pointer_add_listener(pointer, &kListener, this);
}

void WaylandClient::State::noteTouch(WindowTouch::Kind kind, std::int32_t finger, wl_fixed_t x,
                                     wl_fixed_t y) {
    fingers[finger] = {wl_fixed_to_double(x), wl_fixed_to_double(y)};
    touches.push_back({kind, fingers[finger]});
}

void WaylandClient::State::listenTouch() {
    static constexpr wl_touch_listener kListener{
        .down =
            [](void* data, wl_touch*, std::uint32_t, std::uint32_t, wl_surface*,
               std::int32_t finger, wl_fixed_t x, wl_fixed_t y) {
                static_cast<State*>(data)->noteTouch(WindowTouch::Kind::down, finger, x, y);
            },
        .up =
            [](void* data, wl_touch*, std::uint32_t, std::uint32_t, std::int32_t finger) {
                auto& self = *static_cast<State*>(data);
                self.touches.push_back({WindowTouch::Kind::up, self.fingers[finger]});
            },
        .motion =
            [](void* data, wl_touch*, std::uint32_t, std::int32_t finger, wl_fixed_t x,
               wl_fixed_t y) {
                static_cast<State*>(data)->noteTouch(WindowTouch::Kind::motion, finger, x, y);
            },
        .frame = [](void*, wl_touch*) {},
        .cancel = [](void*, wl_touch*) {},
        .shape = [](void*, wl_touch*, std::int32_t, wl_fixed_t, wl_fixed_t) {},
        .orientation = [](void*, wl_touch*, std::int32_t, wl_fixed_t) {}};
    wl_touch_add_listener(touch, &kListener, this);
}

void WaylandClient::State::listenSeat() {
    static constexpr wl_seat_listener kListener{
        .capabilities =
            [](void* data, wl_seat* from, std::uint32_t capabilities) {
                auto& self = *static_cast<State*>(data);
                if ((capabilities & WL_SEAT_CAPABILITY_POINTER) != 0 && !self.pointer) {
                    self.pointer = wl_seat_get_pointer(from);
                    self.listenPointer();
                }
                const bool offered = (capabilities & WL_SEAT_CAPABILITY_TOUCH) != 0;
                if (offered && !self.touch) {
                    self.touch = wl_seat_get_touch(from);
                    self.listenTouch();
                } else if (!offered && self.touch) {
                    wl_touch_release(std::exchange(self.touch, nullptr));
                }
            },
        .name = [](void*, wl_seat*, const char*) {}};
    wl_seat_add_listener(seat, &kListener, this);
}

Result<std::unique_ptr<WaylandClient>> WaylandClient::connect(const std::string& socket) {
    auto state = std::make_unique<State>();
    state->display = wl_display_connect(socket.c_str());
    if (!state->display) return Error{"no compositor at " + socket};
    static constexpr wl_registry_listener kListener{
        .global =
            [](void* data, wl_registry*, std::uint32_t name, const char* interface,
               std::uint32_t version) {
                auto& self = *static_cast<State*>(data);
                self.globals[interface] = {name, version};
                if (interface == std::string_view(wl_output_interface.name)) {
                    self.outputs.insert(name);
                }
                // Some compositors have a seat only once there is a device.
                if (!self.seat && interface == std::string_view(wl_seat_interface.name)) {
                    constexpr std::uint32_t kSeatVersion = 4;
                    self.seat = self.bind<wl_seat>(wl_seat_interface, kSeatVersion);
                    self.listenSeat();
                }
            },
        .global_remove =
            [](void* data, wl_registry*, std::uint32_t name) {
                static_cast<State*>(data)->outputs.erase(name);
            }};
    state->registry = wl_display_get_registry(state->display);
    wl_registry_add_listener(state->registry, &kListener, state.get());
    wl_display_roundtrip(state->display);
    constexpr std::uint32_t kVersion = 4;
    state->compositor = state->bind<wl_compositor>(wl_compositor_interface, kVersion);
    state->shm = state->bind<wl_shm>(wl_shm_interface, 1);
    state->shell = state->bind<xdg_wm_base>(xdg_wm_base_interface, 1);
    if (!state->compositor || !state->shm || !state->shell) {
        return Error{"the compositor lacks what an ordinary client needs"};
    }
    static constexpr xdg_wm_base_listener kShellListener{
        .ping = [](void*, xdg_wm_base* shell, std::uint32_t serial) {
            xdg_wm_base_pong(shell, serial);
        }};
    xdg_wm_base_add_listener(state->shell, &kShellListener, state.get());
    wl_display_roundtrip(state->display);
    return std::unique_ptr<WaylandClient>(new WaylandClient(std::move(state)));
}

WaylandClient::WaylandClient(std::unique_ptr<State> state) : state_(std::move(state)) {}

WaylandClient::~WaylandClient() {
    wl_display_disconnect(state_->display);
}

bool WaylandClient::offers(const std::string& interface) const {
    return state_->globals.contains(interface);
}

std::size_t WaylandClient::outputs() const {
    return state_->outputs.size();
}

PixelSize WaylandClient::windowSize() const {
    return state_->size;
}
const std::vector<Point>& WaylandClient::presses() const {
    return state_->presses;
}
const std::vector<WindowTouch>& WaylandClient::touches() const {
    return state_->touches;
}

bool WaylandClient::showFullScreen(std::uint32_t colour, const rig::Deadline& deadline) {
    static constexpr xdg_surface_listener kSurfaceListener{
        .configure = [](void* data, xdg_surface* surface, std::uint32_t serial) {
            xdg_surface_ack_configure(surface, serial);
            static_cast<State*>(data)->draw();
        }};
    static constexpr xdg_toplevel_listener kTopListener{
        .configure =
            [](void* data, xdg_toplevel*, std::int32_t width, std::int32_t height, wl_array*) {
                auto& self = *static_cast<State*>(data);
                if (width > 0 && height > 0) self.size = {width, height};
            },
        .close = [](void*, xdg_toplevel*) {},
        .configure_bounds = [](void*, xdg_toplevel*, std::int32_t, std::int32_t) {},
        .wm_capabilities = [](void*, xdg_toplevel*, wl_array*) {}};
    State& state = *state_;
    state.colour = colour;
    state.size = {640, 480};
    state.surface = wl_compositor_create_surface(state.compositor);
    xdg_surface* surface = xdg_wm_base_get_xdg_surface(state.shell, state.surface);
    xdg_surface_add_listener(surface, &kSurfaceListener, &state);
    xdg_toplevel* top = xdg_surface_get_toplevel(surface);
    xdg_toplevel_add_listener(top, &kTopListener, &state);
    xdg_toplevel_set_fullscreen(top, nullptr);
    wl_surface_commit(state.surface);
    if (!waitUntil([&] { return state.shown; }, deadline)) return false;
    roundTrip();
    return true;
}

bool WaylandClient::click(PixelPoint place, PixelSize extent) {
    State& state = *state_;
    if (!state.virtualPointer) {
        auto* manager = state.bind<zwlr_virtual_pointer_manager_v1>(
            zwlr_virtual_pointer_manager_v1_interface, 1);
        if (!manager) return false;
        state.virtualPointer =
            zwlr_virtual_pointer_manager_v1_create_virtual_pointer(manager, state.seat);
        // Only now the seat has a pointer that this client can ask for.
        if (!waitUntil([&] { return state.pointer != nullptr; },
                       rig::Deadline(std::chrono::seconds(10)))) {
            return false;
        }
    }
    auto* pointer = state.virtualPointer;
    zwlr_virtual_pointer_v1_motion_absolute(
        pointer, 0, static_cast<std::uint32_t>(place.x), static_cast<std::uint32_t>(place.y),
        static_cast<std::uint32_t>(extent.width), static_cast<std::uint32_t>(extent.height));
    zwlr_virtual_pointer_v1_frame(pointer);
    for (const std::uint32_t pressed : {1U, 0U}) {
        zwlr_virtual_pointer_v1_button(pointer, 0, BTN_LEFT, pressed);
        zwlr_virtual_pointer_v1_frame(pointer);
    }
    roundTrip();
    return true;
}

bool WaylandClient::pointerEntered() const {
    return state_->entered;
}

bool WaylandClient::hasTouch() const {
    return state_->touch != nullptr;
}

void WaylandClient::roundTrip() {
    wl_display_roundtrip(state_->display);
}

bool WaylandClient::waitUntil(const std::function<bool()>& condition,
                              const rig::Deadline& deadline) {
    wl_display* display = state_->display;
    while (true) {
        while (wl_display_prepare_read(display) != 0) wl_display_dispatch_pending(display);
        wl_display_flush(display);
        if (condition() || !rig::waitReadable({wl_display_get_fd(display)}, deadline)) {
            wl_display_cancel_read(display);
            return condition();
        }
        if (wl_display_read_events(display) < 0) return false;
        if (wl_display_dispatch_pending(display) < 0) return false;
    }
}

}  // namespace skavlo
