#include "tests/rigs/touchvm/uinput_touchscreen.h"

#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace skavlo::test {

namespace {

void require(bool done, const char* what) {
    if (done) return;
    std::perror(what);
    std::exit(EXIT_FAILURE);
}

}  // namespace

UinputTouchscreen::UinputTouchscreen() : descriptor_(open("/dev/uinput", O_RDWR | O_CLOEXEC)) {
    constexpr int kUnitsPerMillimetre = 10;
    require(descriptor_ >= 0, "/dev/uinput");
    ioctl(descriptor_, UI_SET_EVBIT, EV_KEY);
    ioctl(descriptor_, UI_SET_KEYBIT, BTN_TOUCH);
    ioctl(descriptor_, UI_SET_EVBIT, EV_ABS);
    ioctl(descriptor_, UI_SET_PROPBIT, INPUT_PROP_DIRECT);
    axis(ABS_X, kWidth - 1, kUnitsPerMillimetre);
    axis(ABS_Y, kHeight - 1, kUnitsPerMillimetre);
    axis(ABS_MT_SLOT, 9, 0);
    axis(ABS_MT_TRACKING_ID, 65535, 0);
    axis(ABS_MT_POSITION_X, kWidth - 1, kUnitsPerMillimetre);
    axis(ABS_MT_POSITION_Y, kHeight - 1, kUnitsPerMillimetre);
    uinput_setup setup{};
    setup.id = {BUS_USB, 0x1209, 1, 1};
    std::strncpy(setup.name, kName, sizeof setup.name - 1);
    require(ioctl(descriptor_, UI_DEV_SETUP, &setup) == 0, "UI_DEV_SETUP");
    require(ioctl(descriptor_, UI_DEV_CREATE) == 0, "UI_DEV_CREATE");
}

UinputTouchscreen::~UinputTouchscreen() {
    ioctl(descriptor_, UI_DEV_DESTROY);
    close(descriptor_);
}

std::string UinputTouchscreen::node() const {
    char input[64] = "";
    require(ioctl(descriptor_, UI_GET_SYSNAME(sizeof input), input) >= 0, "UI_GET_SYSNAME");
    const std::filesystem::path device = std::filesystem::path("/sys/class/input") / input;
    for (const auto& entry : std::filesystem::directory_iterator(device)) {
        const std::string name = entry.path().filename();
        if (name.starts_with("event")) return "/dev/input/" + name;
    }
    return {};
}

void UinputTouchscreen::axis(int code, int maximum, int resolution) {
    uinput_abs_setup setup{};
    setup.code = static_cast<__u16>(code);
    setup.absinfo.maximum = maximum;
    setup.absinfo.resolution = resolution;
    require(ioctl(descriptor_, UI_ABS_SETUP, &setup) == 0, "UI_ABS_SETUP");
}

void UinputTouchscreen::event(int type, int code, int value) {
    input_event event{};
    event.type = static_cast<__u16>(type);
    event.code = static_cast<__u16>(code);
    event.value = value;
    require(write(descriptor_, &event, sizeof event) == sizeof event, "uinput");
}

void UinputTouchscreen::down(int slot, int x, int y) {
    event(EV_ABS, ABS_MT_SLOT, slot);
    event(EV_ABS, ABS_MT_TRACKING_ID, nextTrackingId_++);
    event(EV_ABS, ABS_MT_POSITION_X, x);
    event(EV_ABS, ABS_MT_POSITION_Y, y);
    if (touching_++ == 0) event(EV_KEY, BTN_TOUCH, 1);
}

void UinputTouchscreen::move(int slot, int x, int y) {
    event(EV_ABS, ABS_MT_SLOT, slot);
    event(EV_ABS, ABS_MT_POSITION_X, x);
    event(EV_ABS, ABS_MT_POSITION_Y, y);
}

void UinputTouchscreen::up(int slot) {
    event(EV_ABS, ABS_MT_SLOT, slot);
    event(EV_ABS, ABS_MT_TRACKING_ID, -1);
    if (--touching_ == 0) event(EV_KEY, BTN_TOUCH, 0);
}

void UinputTouchscreen::sync() {
    event(EV_SYN, SYN_REPORT, 0);
}

}  // namespace skavlo::test
