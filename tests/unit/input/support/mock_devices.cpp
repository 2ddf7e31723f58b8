#include "tests/unit/input/support/mock_devices.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>

#include "tests/unit/input/support/mock_hooks.h"

namespace skavlo::test {

namespace {

// Of the recordings.
constexpr int kRecordedNumber = 1;
constexpr const char* kRecordedNode = "/dev/input/event1";

void setBit(std::vector<std::uint8_t>& bits, int bit) {
    const auto byte = static_cast<std::size_t>(bit) / 8;
    if (byte < bits.size()) bits[byte] = static_cast<std::uint8_t>(bits[byte] | (1 << (bit % 8)));
}

// The node's terminal for the device eventN. For mock_hooks.cpp, here and in programs that are
// started from here.
void passTerminalFor(const MockBed& bed, const std::string& node, int eventNumber) {
    constexpr unsigned kTerminalMajor = 136;
    constexpr unsigned kInputMajor = 13;
    unsigned terminal = 0;
    if (ioctl(umockdev_testbed_get_dev_fd(bed.get(), node.c_str()), TIOCGPTN, &terminal) != 0)
        std::abort();
    const dev_t device = makedev(kInputMajor, static_cast<unsigned>(64 + eventNumber));
    const std::string entry =
        std::to_string(makedev(kTerminalMajor, terminal)) + "=" + std::to_string(device) + ";";
    const char* before = getenv(kTerminalsVariable);
    setenv(kTerminalsVariable, (entry + (before ? before : "")).c_str(), 1);
}

void check(gboolean done, const GError* error) {
    if (done) return;
    std::fprintf(stderr, "%s\n", error->message);
    std::abort();
}

template <typename T>
void put(std::vector<std::uint8_t>& data, const T& value) {
    std::memcpy(data.data(), &value, std::min(data.size(), sizeof value));
}

// As the kernel does: strings and bit fields come with their length, structures with 0.
glong result(unsigned number, std::size_t size) {
    constexpr unsigned kFirstString = 0x06;
    constexpr unsigned kSlots = 0x0a;
    constexpr unsigned kAxes = 0x40;
    const bool counted = number >= kFirstString && number < kAxes && number != kSlots;
    return counted ? static_cast<glong>(size) : 0;
}

gboolean forward(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer device) {
    return static_cast<MockDevice*>(device)->answer(client);
}

}  // namespace

MockDescription touchscreen(int number, int slots) {
    return {.name = "mock touchscreen",
            .number = number,
            .properties = {"ID_INPUT=1", "ID_INPUT_TOUCHSCREEN=1"},
            .keys = {BTN_TOUCH},
            .inputProperties = {INPUT_PROP_DIRECT},
            .axes = {{ABS_X, {0, 999, 10}},
                     {ABS_Y, {0, 499, 10}},
                     {ABS_MT_SLOT, {0, slots - 1, 0}},
                     {ABS_MT_POSITION_X, {0, 999, 10}},
                     {ABS_MT_POSITION_Y, {0, 499, 10}},
                     {ABS_MT_TRACKING_ID, {0, 65535, 0}}}};
}

MockDescription pen(int number) {
    return {.name = "mock pen",
            .number = number,
            .properties = {"ID_INPUT=1", "ID_INPUT_TABLET=1"},
            .keys = {BTN_TOOL_PEN, BTN_TOUCH, BTN_STYLUS},
            .inputProperties = {INPUT_PROP_DIRECT},
            .axes = {{ABS_X, {0, 1999, 10}}, {ABS_Y, {0, 999, 10}}}};
}

MockDescription keyboard(int number) {
    return {.name = "mock keyboard",
            .number = number,
            .properties = {"ID_INPUT=1", "ID_INPUT_KEY=1", "ID_INPUT_KEYBOARD=1"},
            .keys = {KEY_A, KEY_B},
            .inputProperties = {},
            .axes = {}};
}

MockDevice::MockDevice(MockBed& bed, MockDescription description)
    : bed_(bed), description_(std::move(description)) {
    const std::string number = std::to_string(description_.number);
    node_ = "/dev/input/event" + number;
    const auto slots = description_.axes.find(ABS_MT_SLOT);
    if (slots != description_.axes.end())
        slots_.resize(static_cast<std::size_t>(slots->second.maximum) + 1);
    handler_ = umockdev_ioctl_base_new();
    g_signal_connect(handler_, "handle-ioctl", G_CALLBACK(&forward), this);
    if (!umockdev_testbed_attach_ioctl(bed_.get(), node_.c_str(), handler_, nullptr)) std::abort();
    path_ = "/sys/devices/virtual/input/input" + number + "/event" + number;
    std::string text =
        "P: /devices/virtual/input/input" + number + "/event" + number + "\nN: input/event" +
        number + "\nE: DEVNAME=" + node_ +
        "\nE: SUBSYSTEM=input\nE: MAJOR=13\nE: MINOR=" + std::to_string(64 + description_.number) +
        "\n";
    for (const std::string& property : description_.properties) text += "E: " + property + "\n";
    text += "A: dev=13:" + std::to_string(64 + description_.number) + "\n\n";
    text += "P: /devices/virtual/input/input" + number +
            "\nE: SUBSYSTEM=input\nE: PRODUCT=3/1/1/1\nE: NAME=\"" + description_.name + "\"\n\n";
    GError* error = nullptr;
    check(umockdev_testbed_add_from_string(bed_.get(), text.c_str(), &error), error);
    passTerminalFor(bed_, node_, description_.number);
    const int master = umockdev_testbed_get_dev_fd(bed_.get(), node_.c_str());
    terminal_ = ioctl(master, TIOCGPTPEER, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal_ < 0) std::abort();
}

MockDevice::~MockDevice() {
    umockdev_testbed_uevent(bed_.get(), path_.c_str(), "remove");
    umockdev_testbed_remove_device(bed_.get(), path_.c_str());
    umockdev_testbed_detach_ioctl(bed_.get(), node_.c_str(), nullptr);
    g_object_unref(handler_);
    close(terminal_);
}

bool MockDevice::wasOpened() {
    const std::lock_guard lock(mutex_);
    return opened_;
}

void MockDevice::event(int type, int code, int value) {
    input_event event{};
    event.type = static_cast<std::uint16_t>(type);
    event.code = static_cast<std::uint16_t>(code);
    event.value = value;
    frame_.push_back(event);
}

MachTime MockDevice::sync() {
    event(EV_SYN, SYN_REPORT, 0);
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const long microseconds = now.tv_nsec / 1000;
    for (input_event& event : frame_) {
        event.input_event_sec = now.tv_sec;
        event.input_event_usec = microseconds;
    }
    writeFrame();
    return static_cast<MachTime>(now.tv_sec) * kNanosecondsPerSecond +
           static_cast<MachTime>(microseconds) * 1000;
}

// The kernel hands out whole events only. The terminal that stands in for it passes bytes on piece
// by piece, so nobody reads before all have arrived.
void MockDevice::writeFrame() {
    const std::size_t size = frame_.size() * sizeof(input_event);
    const int unread = readable() + static_cast<int>(size);
    const int fd = umockdev_testbed_get_dev_fd(bed_.get(), node_.c_str());
    if (write(fd, frame_.data(), size) != static_cast<ssize_t>(size)) std::abort();
    while (readable() < unread) std::this_thread::yield();
    frame_.clear();
}

int MockDevice::readable() const {
    int bytes = 0;
    if (ioctl(terminal_, FIONREAD, &bytes) != 0) std::abort();
    return bytes;
}

void MockDevice::down(int slot, int x, int y) {
    event(EV_ABS, ABS_MT_SLOT, slot);
    event(EV_ABS, ABS_MT_TRACKING_ID, nextTrackingId_++);
    event(EV_ABS, ABS_MT_POSITION_X, x);
    event(EV_ABS, ABS_MT_POSITION_Y, y);
}

void MockDevice::move(int slot, int x, int y) {
    event(EV_ABS, ABS_MT_SLOT, slot);
    event(EV_ABS, ABS_MT_POSITION_X, x);
    event(EV_ABS, ABS_MT_POSITION_Y, y);
}

void MockDevice::up(int slot) {
    event(EV_ABS, ABS_MT_SLOT, slot);
    event(EV_ABS, ABS_MT_TRACKING_ID, -1);
}

void MockDevice::setSlotState(int slot, int trackingId, int x, int y) {
    const std::lock_guard lock(mutex_);
    slots_.at(static_cast<std::size_t>(slot)) = {trackingId, x, y};
}

gboolean MockDevice::answer(UMockdevIoctlClient* client) {
    const gulong request = umockdev_ioctl_client_get_request(client);
    if (_IOC_TYPE(request) != 'E') return FALSE;
    const std::lock_guard lock(mutex_);
    opened_ = true;
    if (_IOC_DIR(request) == _IOC_WRITE) {  // clock, grab: granted
        umockdev_ioctl_client_complete(client, 0, 0);
        return TRUE;
    }
    UMockdevIoctlData* argument = umockdev_ioctl_client_get_arg(client);
    UMockdevIoctlData* target =
        umockdev_ioctl_data_resolve(argument, 0, _IOC_SIZE(request), nullptr);
    std::vector<std::uint8_t> data(target->data, target->data + _IOC_SIZE(request));
    const bool known = fill(_IOC_NR(request), data);
    if (known) umockdev_ioctl_data_update(target, 0, data.data(), static_cast<gint>(data.size()));
    umockdev_ioctl_client_complete(client, known ? result(_IOC_NR(request), data.size()) : -1,
                                   known ? 0 : ENOENT);
    g_object_unref(target);
    return TRUE;
}

bool MockDevice::fill(unsigned number, std::vector<std::uint8_t>& data) {
    constexpr unsigned kVersion = 0x01;
    constexpr unsigned kId = 0x02;
    constexpr unsigned kName = 0x06;
    constexpr unsigned kProperties = 0x09;
    constexpr unsigned kSlots = 0x0a;
    constexpr unsigned kState = 0x18;  // keys, LEDs, sounds, switches: all off
    constexpr unsigned kBits = 0x20;
    constexpr unsigned kAxes = 0x40;
    if (number == kSlots) return fillSlots(data), true;
    std::fill(data.begin(), data.end(), std::uint8_t{0});
    if (number == kVersion) {
        put(data, EV_VERSION);
    } else if (number == kId) {
        put(data, input_id{BUS_USB, 0x1209, 1, 1});
    } else if (number == kName) {
        const std::size_t size = std::min(data.size(), description_.name.size() + 1);
        std::memcpy(data.data(), description_.name.c_str(), size);
        data.resize(size);
    } else if (number == kProperties) {
        for (const int property : description_.inputProperties) setBit(data, property);
    } else if (number >= kBits && number < kBits + EV_CNT) {
        fillBits(static_cast<int>(number - kBits), data);
    } else if (number >= kAxes && number < kAxes + ABS_CNT) {
        const auto axis = description_.axes.find(static_cast<int>(number - kAxes));
        if (axis == description_.axes.end()) return false;
        input_absinfo info{};
        info.minimum = axis->second.minimum;
        info.maximum = axis->second.maximum;
        info.resolution = axis->second.resolution;
        put(data, info);
    } else {
        return number >= kState && number < kBits;
    }
    return true;
}

void MockDevice::fillBits(int type, std::vector<std::uint8_t>& bits) const {
    if (type == 0) {
        setBit(bits, EV_SYN);
        if (!description_.keys.empty()) setBit(bits, EV_KEY);
        if (!description_.axes.empty()) setBit(bits, EV_ABS);
    } else if (type == EV_KEY) {
        for (const int key : description_.keys) setBit(bits, key);
    } else if (type == EV_ABS) {
        for (const auto& [axis, range] : description_.axes) setBit(bits, axis);
    }
}

// In: the axis. Out, behind it: one value per slot.
void MockDevice::fillSlots(std::vector<std::uint8_t>& data) const {
    std::uint32_t axis = 0;
    std::memcpy(&axis, data.data(), sizeof axis);
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const std::size_t offset = sizeof axis + i * sizeof(std::int32_t);
        if (offset + sizeof(std::int32_t) > data.size()) return;
        const Slot& slot = slots_[i];
        const std::int32_t value = axis == ABS_MT_TRACKING_ID  ? slot.trackingId
                                   : axis == ABS_MT_POSITION_X ? slot.x
                                   : axis == ABS_MT_POSITION_Y ? slot.y
                                                               : 0;
        std::memcpy(data.data() + offset, &value, sizeof value);
    }
}

RecordedDevice::RecordedDevice(MockBed& bed, std::string path) : bed_(bed), path_(std::move(path)) {
    GError* error = nullptr;
    check(umockdev_testbed_add_from_file(bed_.get(), (path_ + ".umockdev").c_str(), &error), error);
    check(umockdev_testbed_load_ioctl(bed_.get(), nullptr, (path_ + ".ioctl").c_str(), &error),
          error);
    passTerminalFor(bed_, kRecordedNode, kRecordedNumber);
}

void RecordedDevice::play() {
    GError* error = nullptr;
    check(umockdev_testbed_load_evemu_events(bed_.get(), nullptr, (path_ + ".events").c_str(),
                                             &error),
          error);
}

}  // namespace skavlo::test
